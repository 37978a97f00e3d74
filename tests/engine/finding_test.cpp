// What is told of a finding, how findings are counted, and how they are put right.

#include <gtest/gtest.h>

#include "engine/documents/audit/mending.h"
#include "engine/documents/documenttree.h"
#include "tests/engine/adapted.h"
#include "tests/engine/audited.h"

namespace MCVelscore_850 {
namespace {

TEST(Audited, TellsFindingsByPlace)
{
    Parts parts;
    parts.root = "PMML version='4.4.1'";
    parts.schema += "<MiningField name='a'/>";
    const Audited audited(parts.Text());
    EXPECT_EQ(audited.Rules(Answer::Adapted), "short-version repeated-mining-field");
    EXPECT_EQ(audited.Rules(Answer::Fault), "");
    EXPECT_TRUE(audited.Has("short-version"));
    EXPECT_EQ(audited.Of("short-version").place.line, 1u);
    EXPECT_EQ(audited.Of("repeated-mining-field").place.line, 2u);
    EXPECT_EQ(audited.Of("no-estimates").rule, nullptr);
}

constexpr Rule kFault{"odd-thing",
                      Answer::Fault,
                      true,
                      "odd things",
                      "{element} has {attribute} {found}{meant} ({expected})",
                      "Write {near} for {what}."};
constexpr Rule kNotice{"quiet-thing",  Answer::Notice,        false,
                       "quiet things", "{element} is unused", ""};

struct Tree {
    explicit Tree(const std::string& text) : document(LoadDocumentText(text, "m.pmml")) {}
    Element Root() const { return document.Root(); }
    std::string Text() const
    {
        std::string text;
        Write(Root(), text);
        return text;
    }
    Document document;
};

TEST(Findings, FillTheirTextAndRemedy)
{
    const Tree tree("<PMML>\n <Header/></PMML>");
    Findings findings;
    findings.Add(kFault, Answer::Fault,
                 {.element = tree.Root().Child("Header"),
                  .attribute = "copyright",
                  .found = "me\x1B",
                  .expected = "a name",
                  .nearWord = "thee",
                  .what = "it"});
    const Finding& finding = findings.Kept().front();
    EXPECT_EQ(
        finding.ToString(),
        "line 2, column 2: Header has copyright \"me\\u001B\"; did you mean \"thee\"? (a name) "
        "[odd-thing]");
    EXPECT_EQ(finding.remedy, "Write thee for it.");
    EXPECT_EQ(finding.place.path, "PMML/Header");
}

TEST(Findings, AreCountedPastThoseThatAreKept)
{
    const Tree tree("<PMML/>");
    Findings findings;
    for (size_t i = 0; i < Findings::kKeptOfRule + 7; ++i) {
        findings.Add(kNotice, Answer::Notice, {.element = tree.Root()});
    }
    findings.Add(kFault, Answer::Notice, {.element = tree.Root()});
    EXPECT_EQ(findings.Kept().size(), Findings::kKeptOfRule + 1);
    EXPECT_EQ(findings.CountOf(Answer::Notice), Findings::kKeptOfRule + 8);
    EXPECT_EQ(findings.CountOf(Answer::Fault), 0u);
    EXPECT_EQ(findings.StrictCount(), 1u);  // the fault that was allowed
    ASSERT_EQ(findings.NotKept().size(), 1u);
    EXPECT_EQ(findings.NotKept()[0].rule->name, "quiet-thing");
    EXPECT_EQ(findings.NotKept()[0].number, 7u);
}

TEST(Findings, CollectAllMendsWhileTheyAreAsked)
{
    const Tree tree("<PMML/>");
    Findings findings;
    std::vector<OpenMend> mends;
    const Detail mendable{.element = tree.Root(), .mend = {Mend::Action::EraseElement}};
    findings.Add(kFault, Answer::Fault, mendable);
    findings.CollectMends(&mends);
    for (size_t i = 0; i < 2 * Findings::kKeptOfRule; ++i) {
        findings.Add(kFault, Answer::Fault, mendable);
        findings.Add(kFault, Answer::Fault, {.element = tree.Root()});
    }
    EXPECT_EQ(mends.size(), 2 * Findings::kKeptOfRule);
}

std::vector<std::string> Told(const std::vector<Mended>& mended)
{
    std::vector<std::string> told;
    for (const Mended& each : mended) {
        told.push_back(std::to_string(each.place.line) + " " + each.what);
    }
    return told;
}

TEST(Mends, RenameSetAndErase)
{
    const Tree tree("<PMML><A b='1' c='2'/>\n<Bb/>\n<C><D/></C><C/></PMML>");
    const Element root = tree.Root();
    const Element a = root.Child("A");
    const Element c = root.Child("C");
    const std::vector<Mended> mended = ApplyMends({
        {&kFault, c, "", {Mend::Action::EraseElement}},
        {&kFault, c.Child("D"), "", {Mend::Action::EraseElement}},
        {&kFault, c.Child("D"), "", {Mend::Action::RenameElement, "E"}},
        {&kFault, c, "", {Mend::Action::EraseElement}},
        {&kFault, root.Child("Bb"), "", {Mend::Action::RenameElement, "B"}},
        {&kFault, a, "b", {Mend::Action::RenameAttribute, "beta"}},
        {&kFault, a, "c", {Mend::Action::SetAttribute, "3"}},
    });
    EXPECT_EQ(Told(mended),
              (std::vector<std::string>{"2 Bb is now B", "1 b is now beta",
                                        "1 c is now \"3\", not \"2\"", "3 C is taken out"}));
    EXPECT_EQ(tree.Text(), "<PMML><A beta='1' c='3'></><B></><C></></>");
}

TEST(Mends, HideNoAttributeThatIsThere)
{
    const Tree tree("<PMML><A bata='1' beta='2'/></PMML>");
    const Element a = tree.Root().Child("A");
    EXPECT_TRUE(ApplyMends({{&kFault, a, "bata", {Mend::Action::RenameAttribute, "beta"}},
                            {&kFault, a, "gone", {Mend::Action::RenameAttribute, "gamma"}}})
                    .empty());
    EXPECT_EQ(tree.Text(), "<PMML><A bata='1' beta='2'></></>");
}

}  // namespace
}  // namespace MCVelscore_850
