#include "host/messages/vsexception.h"

#include <gtest/gtest.h>

#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

VSException Refused()
{
    VSException e(gErrorFormater);
    e.PutErrorMessage(260115, "beta", "PCell");
    return e;
}

TEST(VSException, CarriesCodeArgumentsAndText)
{
    const VSException e = Refused();
    EXPECT_EQ(e.GetErrorCode(), 260115);
    EXPECT_EQ(e.GetArguments(), (std::vector<std::string>{"beta", "PCell"}));
    EXPECT_NE(e.GetText().find("beta"), std::string::npos);
    EXPECT_NE(e.GetText().find("PCell"), std::string::npos);
    EXPECT_STREQ(e.what(), e.GetText().c_str());
    EXPECT_FALSE(e.GetPlace().IsKnown());
}

TEST(VSException, KeepsNothingOfTheTextsItWasFormattedFrom)
{
    VSException e(gErrorFormater);
    {
        std::string name = "a name that lies in memory of its own, to be released";
        e.PutErrorMessage(260204, name.c_str());
        name.assign(name.size(), '#');
    }
    EXPECT_NE(e.GetText().find("a name that lies"), std::string::npos);
    EXPECT_EQ(e.GetArguments()[0].substr(0, 6), "a name");
}

TEST(VSException, CopyIsWhole)
{
    VSException original = Refused();
    original.SetPlace({3, 7, "PMML/Header"});
    const VSException copy(original);
    original.PutErrorMessage(260133);
    EXPECT_EQ(copy.GetErrorCode(), 260115);
    EXPECT_EQ(copy.GetArguments().size(), 2u);
    EXPECT_NE(copy.GetText(), original.GetText());
    EXPECT_EQ(copy.GetPlace().line, 3u);
    EXPECT_EQ(copy.GetPlace().column, 7u);
    EXPECT_EQ(copy.GetPlace().path, "PMML/Header");
}

TEST(VSException, SecondMessageReplacesTheFirst)
{
    VSException e = Refused();
    e.PutErrorMessage(260204, "y");
    EXPECT_EQ(e.GetErrorCode(), 260204);
    EXPECT_EQ(e.GetArguments(), std::vector<std::string>{"y"});
    EXPECT_EQ(e.GetText().find("PCell"), std::string::npos);
}

TEST(VSException, WithoutAFormatterThereIsACodeAndNoText)
{
    VSException e(nullptr);
    e.PutErrorMessage(260133);
    EXPECT_EQ(e.GetErrorCode(), 260133);
    EXPECT_EQ(e.GetText(), "");
}

TEST(VSException, IsCaughtAsAStandardException)
{
    try {
        Refuse(260133);
    } catch (const std::exception& e) {
        EXPECT_EQ(e.what(), Messages::Format(260133, {}));
        return;
    }
    FAIL() << "nothing was thrown";
}

TEST(VSException, NullTextIsAnEmptyArgument)
{
    VSException e(gErrorFormater);
    e.PutErrorMessage(260115, static_cast<const char*>(nullptr), "PCell");
    EXPECT_EQ(e.GetArguments(), (std::vector<std::string>{"", "PCell"}));
}

}  // namespace
}  // namespace MCVelscore_850
