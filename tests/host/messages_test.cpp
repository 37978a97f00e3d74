#include "host/messages/messages.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "host/messages/vsexception.h"

namespace MCVelscore_850 {
namespace {

// The codes that plug-ins raise, and how many arguments each gives with them. All are texts: tags,
// names out of the document, numbers written out.
const std::map<int, size_t> kPluginCodes = {
    {90015, 0},  {90017, 0},  {90028, 0},  {90029, 0},  {260115, 2}, {260117, 2}, {260118, 2},
    {260120, 2}, {260121, 3}, {260124, 2}, {260125, 3}, {260126, 1}, {260127, 2}, {260130, 2},
    {260131, 2}, {260133, 0}, {260153, 3}, {260155, 1}, {260161, 1}, {260162, 2}, {260178, 3},
    {260179, 4}, {260180, 3}, {260181, 2}, {260184, 3}, {260188, 3}, {260191, 2}, {260192, 3},
    {260202, 2}, {260204, 1}, {260214, 6}, {260223, 2}, {260225, 2}, {260227, 2}, {260246, 5},
    {260249, 4}, {260251, 6}, {260258, 5}, {260281, 2}, {260283, 1}, {260292, 2}, {260302, 2},
    {260304, 0},
};

constexpr int kFirstOwnCode = 269000;

// The constants of messages.h: code to the number of arguments that the line's comment names.
std::map<int, size_t> DeclaredCodes()
{
    std::map<int, size_t> codes;
    std::ifstream header("host/messages/messages.h");
    std::string line;
    while (std::getline(header, line)) {
        const size_t equals = line.find(" = ");
        const size_t comment = line.find("//");
        if (!line.starts_with("inline constexpr int k") || equals == std::string::npos) continue;
        const std::string arguments = comment == std::string::npos ? "" : line.substr(comment);
        const auto commas = std::count(arguments.begin(), arguments.end(), ',');
        codes[std::stoi(line.substr(equals + 3))] = static_cast<size_t>(commas) + 1;
    }
    return codes;
}

std::string Place(size_t argument)
{
    std::string place = "{";
    return place.append(std::to_string(argument)).append("}");
}

size_t ArgumentCount(const Message& message) { return std::string_view(message.arguments).size(); }

TEST(Messages, CodesAscend)
{
    const auto all = Messages::All();
    for (size_t i = 1; i < all.size(); ++i) EXPECT_LT(all[i - 1].code, all[i].code);
}

TEST(Messages, EveryRowHasATextAndARemedy)
{
    for (const Message& message : Messages::All()) {
        EXPECT_FALSE(std::string(message.text).empty()) << message.code;
        EXPECT_FALSE(std::string(message.remedy).empty()) << message.code;
        EXPECT_EQ(Messages::Find(message.code), &message);
    }
}

TEST(Messages, EveryArgumentHasItsPlaceAndEveryPlaceAnArgument)
{
    for (const Message& message : Messages::All()) {
        const std::string text = message.text;
        for (size_t i = 0; i < ArgumentCount(message); ++i) {
            EXPECT_NE(text.find(Place(i)), std::string::npos)
                << message.code << " doesn't show argument " << i;
        }
        for (size_t i = ArgumentCount(message); i < 10; ++i) {
            EXPECT_EQ(text.find(Place(i)), std::string::npos) << message.code;
        }
        EXPECT_EQ(std::string(message.arguments).find_first_not_of("sdg"), std::string::npos);
    }
}

TEST(Messages, EveryCodeOfAPluginHasARowWithItsArguments)
{
    for (const auto& [code, count] : kPluginCodes) {
        const Message* message = Messages::Find(code);
        ASSERT_NE(message, nullptr) << code;
        EXPECT_EQ(std::string(message->arguments), std::string(count, 's')) << code;
    }
}

TEST(Messages, EveryOwnCodeHasARowWithTheArgumentsThatItsConstantNames)
{
    const std::map<int, size_t> declared = DeclaredCodes();
    ASSERT_GT(declared.size(), 40u) << "host/messages/messages.h wasn't read";
    for (const auto& [code, count] : declared) {
        const Message* message = Messages::Find(code);
        ASSERT_NE(message, nullptr) << code;
        EXPECT_EQ(ArgumentCount(*message), count) << code;
        // The host's own, or one that it shares with a plug-in.
        EXPECT_TRUE(code >= kFirstOwnCode || kPluginCodes.contains(code)) << code;
    }
}

TEST(Messages, EveryRowBelongsToAPluginCodeOrAConstant)
{
    const std::map<int, size_t> declared = DeclaredCodes();
    for (const Message& message : Messages::All()) {
        EXPECT_TRUE(kPluginCodes.contains(message.code) || declared.contains(message.code))
            << message.code;
    }
}

TEST(Messages, UnknownCodeHasNoRowAndATextThatSaysSo)
{
    for (const int code : {0, -1, 90016, 260116, 999999}) {
        EXPECT_EQ(Messages::Find(code), nullptr) << code;
        EXPECT_NE(Messages::Format(code, {}).find(std::to_string(code)), std::string::npos);
    }
}

TEST(Messages, FormatPutsEachArgumentInItsPlace)
{
    EXPECT_EQ(Messages::Format(260204, {"y"}), "y is a second target");
    EXPECT_EQ(Messages::Format(kArrayLength, {"3", "4"}), "an array has 3 numbers, 4 are expected");
}

TEST(Messages, ANameThatCantBeSeenIsShownAsAWord)
{
    EXPECT_EQ(Messages::Format(260204, {""}), "(empty) is a second target");
    EXPECT_EQ(Messages::Format(260204, {" \t"}), "(blanks) is a second target");
    EXPECT_EQ(Messages::Format(kNotANumber, {"", "beta"}), "the beta (empty) is not a number");
    EXPECT_EQ(Messages::Format(kNotANumber, {"two", "beta"}), "the beta 'two' is not a number");
}

TEST(Messages, ACategoryThatAModelMadeUpIsNotShown)
{
    for (const char* name : {"LRdummy", "GLRdummy", "GZLRdummy", "CoxRegDummy"}) {
        EXPECT_EQ(Messages::Format(260258, {name, "targetCategory", "p", "parameterName", "PCell"}),
                  "the model has no place for (none) (targetCategory) and p (parameterName) of a "
                  "PCell");
    }
}

TEST(Messages, BracesInAnArgumentAreText)
{
    EXPECT_EQ(Messages::Format(260204, {"{1} {x} {"}), "{1} {x} { is a second target");
}

TEST(Messages, TooFewArgumentsLeaveEmptyPlaces)
{
    EXPECT_EQ(Messages::Format(260204, {}), " is a second target");
}

TEST(Messages, ArgumentsAreReadByTheirKinds)
{
    VSException e(gErrorFormater);
    e.PutErrorMessage(kRowLength, "cases.csv", 7, -2, 2147483647);
    EXPECT_EQ(e.GetArguments(), (std::vector<std::string>{"cases.csv", "7", "-2", "2147483647"}));
    EXPECT_EQ(e.GetText(), "cases.csv: row 7 has -2 fields, the header 2147483647");
}

TEST(Messages, ArgumentsOfAnUnknownCodeAreNotRead)
{
    VSException e(gErrorFormater);
    e.PutErrorMessage(1);
    EXPECT_TRUE(e.GetArguments().empty());
}

}  // namespace
}  // namespace MCVelscore_850
