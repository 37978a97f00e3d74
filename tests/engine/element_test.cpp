// The view of a document's tree: walking, reading and rewriting.

#include "engine/documents/element.h"

#include <gtest/gtest.h>

#include "engine/documents/documentloader.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// Every element stands in a line of its own.
const std::string kText =
    "<PMML version='4.4'>\n<a n='1' m=''>\n<b/>text\n<c/>\n<b n='2'/>\n</a>\n<p:a/>\n</PMML>";

class ElementView : public testing::Test {
protected:
    Texts Tags(Element parent) const
    {
        Texts tags;
        for (const Element child : parent.Children()) tags.push_back(child.Tag());
        return tags;
    }

    Document document_ = LoadDocumentText(kText, "m.pmml");
    Element root_ = document_.Root();
    Element a_ = root_.Child("a");
};

TEST_F(ElementView, OfANullOneEverythingIsEmptyOrAbsent)
{
    const Element none = root_.Child("nosuch").Child("b").NextSibling().Parent();
    EXPECT_FALSE(none);
    EXPECT_EQ(none.Tag(), "");
    EXPECT_EQ(none.Text("n"), "");
    EXPECT_EQ(none.Content(), "");
    EXPECT_FALSE(none.Has("n") || none.Is("") || none.HasPrefix() || none.Number("n"));
    EXPECT_TRUE(none.Children().Empty());
    EXPECT_TRUE(none.Children("b").List().empty());
    EXPECT_EQ(none.Children().First(), Element());
}

TEST_F(ElementView, ChildrenAreWalkedByTagOrAll)
{
    EXPECT_EQ(Tags(a_), (Texts{"b", "c", "b"}));
    const Elements all = a_.Children("b").List();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[1].Text("n"), "2");
    EXPECT_EQ(a_.Children("b").First(), all[0]);
    EXPECT_EQ(all[0].NextSibling().NextSibling(), all[1]);
    EXPECT_EQ(all[1].Parent(), a_);
}

// Up to 47 characters cost no memory of their own; longer ones are names all the same.
TEST_F(ElementView, NamesMayBeOfAnyLength)
{
    for (const size_t size : {1U, 46U, 47U, 48U, 49U, 60U, 500U}) {
        const std::string name(size, 'x');
        EXPECT_FALSE(a_.Has(name));
        a_.SetText(name, "v");
        EXPECT_EQ(a_.Text(name), "v") << size;
        EXPECT_TRUE(a_.Append(name).Is(name)) << size;
        EXPECT_TRUE(a_.Child(name)) << size;
    }
}

TEST_F(ElementView, APrefixIsPartOfTheTag)
{
    EXPECT_FALSE(a_.HasPrefix());
    const Element prefixed = a_.NextSibling();
    EXPECT_TRUE(prefixed.HasPrefix());
    EXPECT_FALSE(prefixed.Is("a"));
    prefixed.Rename("d");
    EXPECT_FALSE(root_.Children("d").First().HasPrefix());
    EXPECT_EQ(root_.Child("d").Place().line, 7u);
}

TEST_F(ElementView, AnElementIsPutBeforeAnotherOrLast)
{
    const Element c = a_.Child("c");
    a_.Insert(c, a_.Children().First());
    EXPECT_EQ(Tags(a_), (Texts{"c", "b", "b"}));
    a_.Insert(c, {});
    EXPECT_EQ(Tags(a_), (Texts{"b", "b", "c"}));
    root_.Insert(c, a_);
    EXPECT_EQ(Tags(root_), (Texts{"c", "a", "p:a"}));
    EXPECT_EQ(c.Place().line, 4u);
}

TEST_F(ElementView, AListStandsWhileItsElementsAreErased)
{
    for (Element b : a_.Children("b").List()) {
        b.Erase();
        EXPECT_FALSE(b);
    }
    EXPECT_EQ(Tags(a_), Texts{"c"});
}

TEST_F(ElementView, WhatIsAddedIsThereToRead)
{
    const Element added = a_.Append("d");
    added.SetText("n", "\xC3\xA4 < b");
    added.SetText("m", "1e2");
    added.SetContent("within");
    EXPECT_EQ(a_.Child("d").Text("n"), "\xC3\xA4 < b");
    EXPECT_EQ(a_.Child("d").Number("m"), 100.0);
    EXPECT_EQ(a_.Child("d").Number("n"), std::nullopt);
    EXPECT_EQ(a_.Child("d").Content(), "within");
    added.RemoveAttribute("m");
    EXPECT_FALSE(a_.Child("d").Has("m"));
    EXPECT_TRUE(a_.Has("m"));  // an empty one is there
}

TEST_F(ElementView, ARefusalSaysItsPlace)
{
    try {
        RefuseAt(a_.Child("c"), kAbsent, "n", "c");
    } catch (const VSException& refusal) {
        EXPECT_EQ(refusal.GetErrorCode(), kAbsent);
        EXPECT_EQ(refusal.GetPlace().path, "PMML/a/c");
        EXPECT_EQ(refusal.GetPlace().line, 4u);
        return;
    }
    FAIL() << "nothing was refused";
}

}  // namespace
}  // namespace MCVelscore_850
