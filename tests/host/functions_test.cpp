// The built-in functions: for each the values of its definition, and what missing and invalid
// arguments do to it.

#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "derivation.h"
#include "host/expressions/functions.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

// Arguments in short: a number, a 'text', true, false, ? for a missing value, ! for one that isn't
// valid, and date:, time: and moment: before a date, a time of day or both.
std::string Argument(const std::string& text)
{
    if (text == "?") return Constant("", "missing='true'");
    if (text == "!") return Apply("ln", Constant("-1"));
    if (text.front() == '\'') {
        return Constant(text.substr(1, text.size() - 2), "dataType='string'");
    }
    if (text == "true" || text == "false") return Constant(text, "dataType='boolean'");
    const struct {
        const char* prefix;
        const char* dataType;
    } kMoments[] = {{"date:", "date"}, {"time:", "time"}, {"moment:", "dateTime"}};
    for (const auto& row : kMoments) {
        if (!text.starts_with(row.prefix)) continue;
        return Constant(text.substr(std::string_view(row.prefix).size()),
                        "dataType='" + std::string(row.dataType) + "'");
    }
    return Constant(text, "dataType='double'");
}

using Arguments = std::vector<std::string>;

std::string Called(const std::string& function, const Arguments& arguments,
                   const std::string& attributes = "")
{
    std::string elements;
    for (const std::string& argument : arguments) elements += Argument(argument);
    return Apply(function, elements, attributes);
}

std::string Joined(const std::string& function, const Arguments& arguments)
{
    std::string text = function + "(";
    for (const std::string& argument : arguments) text += argument + " ";
    return text + ")";
}

// The outcome as a text, "?" and "!" as in arguments.
std::string Outcome(const std::string& function, const Arguments& arguments,
                    const std::string& attributes = "")
{
    const Derivation d(DerivedField(
        "d",
        Apply("if", Apply("isMissing", Called(function, arguments, attributes)) +
                        Constant("?", "dataType='string'") +
                        Apply("if", Apply("isNotValid", Called(function, arguments, attributes)) +
                                        Constant("!", "dataType='string'") +
                                        Called(function, arguments, attributes))),
        "categorical", "string"));
    return d["d"].GetString();
}

struct NumberRow {
    const char* function;
    Arguments arguments;
    double expected;
};

// To the last digits: the C library promises no more of its elementary functions.
constexpr double kLastDigits = 4e-16;

void ExpectNumber(const NumberRow& row, double tolerance = kLastDigits)
{
    const Derivation d(DerivedField("d", Called(row.function, row.arguments)));
    const double found = d.Number("d");
    EXPECT_LE(std::fabs(found - row.expected), tolerance * std::fabs(row.expected))
        << Joined(row.function, row.arguments) << " is " << found << ", not " << row.expected;
}

TEST(ArithmeticFunctions, YieldTheValuesOfTheirDefinition)
{
    const NumberRow kRows[] = {
        {"+", {"2.5", "4"}, 6.5},
        {"-", {"2.5", "4"}, -1.5},
        {"*", {"2.5", "4"}, 10.0},
        {"/", {"2.5", "4"}, 0.625},
        {"min", {"2.5", "4", "1.5"}, 1.5},
        {"max", {"2.5", "4", "1.5"}, 4.0},
        {"sum", {"2.5", "4", "1.5"}, 8.0},
        {"avg", {"2.5", "4", "1"}, 2.5},
        {"median", {"2.5", "4", "1.5"}, 2.5},
        {"median", {"7", "1", "4", "2"}, 3.0},
        {"median", {"3", "3", "1", "3"}, 3.0},
        {"median", {"5"}, 5.0},
        {"product", {"2.5", "4", "-1.5"}, -15.0},
        // at 0.75, by 30-digit arithmetic
        {"log10", {"0.75"}, -0.12493873660829995},
        {"ln", {"0.75"}, -0.2876820724517809},
        {"ln1p", {"0.75"}, 0.5596157879354227},
        {"ln1p", {"1e-10"}, 9.999999999500001e-11},
        {"sqrt", {"0.75"}, 0.8660254037844386},
        {"abs", {"-0.75"}, 0.75},
        {"exp", {"0.75"}, 2.117000016612675},
        {"expm1", {"0.75"}, 1.1170000166126746},
        {"expm1", {"1e-10"}, 1.00000000005e-10},
        {"pow", {"2.5", "1.5"}, 3.952847075210474},
        {"pow", {"-2", "3"}, -8.0},
        {"pow", {"0", "0"}, 1.0},
        {"hypot", {"3", "-4"}, 5.0},
        {"threshold", {"2", "1"}, 1.0},
        {"threshold", {"1", "1"}, 0.0},
        {"threshold", {"0", "1"}, 0.0},
        {"floor", {"2.7"}, 2.0},
        {"floor", {"-2.1"}, -3.0},
        {"ceil", {"2.1"}, 3.0},
        {"ceil", {"-2.7"}, -2.0},
        {"round", {"2.4"}, 2.0},
        {"round", {"2.5"}, 3.0},
        {"round", {"-2.5"}, -2.0},
        {"round", {"-2.6"}, -3.0},
        {"round", {"0.49999999999999994"}, 0.0},  // plus a half it would be 1
        {"rint", {"2.5"}, 2.0},
        {"rint", {"3.5"}, 4.0},
        {"rint", {"-2.5"}, -2.0},
        {"modulo", {"11", "4"}, 3.0},
        {"modulo", {"-11", "4"}, 1.0},
        {"modulo", {"11", "-4"}, -1.0},
        {"modulo", {"-11", "-4"}, -3.0},
        {"modulo", {"12", "4"}, 0.0},
        {"sin", {"0.75"}, 0.6816387600233341},
        {"asin", {"0.75"}, 0.848062078981481},
        {"sinh", {"0.75"}, 0.82231673193583},
        {"cos", {"0.75"}, 0.7316888688738209},
        {"acos", {"0.75"}, 0.7227342478134157},
        {"cosh", {"0.75"}, 1.2946832846768448},
        {"tan", {"0.75"}, 0.9315964599440725},
        {"atan", {"0.75"}, 0.6435011087932844},
        {"tanh", {"0.75"}, 0.6351489523872873},
    };
    std::set<std::string> tested;
    for (const NumberRow& row : kRows) {
        ExpectNumber(row);
        tested.insert(row.function);
    }
    for (const Function& function : ArithmeticFunctions()) {
        EXPECT_TRUE(tested.contains(function.name)) << function.name;
    }
}

TEST(ArithmeticFunctions, WithoutAResultAreNotValid)
{
    const struct {
        const char* function;
        Arguments arguments;
    } kRows[] = {{"/", {"1", "0"}},      {"/", {"0", "0"}},      {"ln", {"0"}},
                 {"ln", {"-1"}},         {"log10", {"0"}},       {"ln1p", {"-1"}},
                 {"sqrt", {"-1"}},       {"exp", {"1000"}},      {"pow", {"0", "-1"}},
                 {"pow", {"-2", "0.5"}}, {"modulo", {"1", "0"}}, {"asin", {"1.5"}},
                 {"acos", {"-1.5"}},     {"cosh", {"1000"}},     {"product", {"1e200", "1e200"}}};
    for (const auto& row : kRows) {
        EXPECT_EQ(Outcome(row.function, row.arguments), "!") << Joined(row.function, row.arguments);
    }
}

TEST(ArithmeticFunctions, AggregatesLeaveMissingArgumentsOut)
{
    for (const NumberRow& row :
         {NumberRow{"min", {"?", "3", "2"}, 2.0}, NumberRow{"max", {"3", "?", "2"}, 3.0},
          NumberRow{"sum", {"3", "2", "?"}, 5.0}, NumberRow{"avg", {"3", "?", "2"}, 2.5},
          NumberRow{"median", {"?", "9", "?", "1", "2"}, 2.0},
          NumberRow{"product", {"3", "?", "2"}, 6.0}}) {
        ExpectNumber(row);
        EXPECT_EQ(Outcome(row.function, {"?", "?"}), "?") << row.function;
        EXPECT_EQ(Outcome(row.function, {"?", "!", "1"}), "!") << row.function;
        EXPECT_EQ(Outcome(row.function, {"1", "'one'"}), "!") << row.function;
    }
}

TEST(DistributionFunctions, YieldTheValuesOfTheirDefinition)
{
    // by 30-digit arithmetic
    const NumberRow kRows[] = {
        {"stdNormalCDF", {"1.25"}, 0.8943502263331448},
        {"stdNormalCDF", {"-8"}, 6.220960574271784e-16},
        {"normalCDF", {"5", "3", "2"}, 0.8413447460685429},
        {"stdNormalPDF", {"1.25"}, 0.18264908538902191},
        {"normalPDF", {"5", "3", "2"}, 0.12098536225957167},
        {"stdNormalIDF", {"0.975"}, 1.9599639845400538},
        {"stdNormalIDF", {"1e-10"}, -6.361340902404057},
        {"normalIDF", {"0.9", "3", "2"}, 5.563103131089202},
        {"erf", {"0.75"}, 0.7111556336535151},
        {"erf", {"-2"}, -0.9953222650189527},
    };
    std::set<std::string> tested;
    for (const NumberRow& row : kRows) {
        ExpectNumber(row, 1e-14);  // far in the tail some digits go
        tested.insert(row.function);
    }
    for (const Function& function : DistributionFunctions()) {
        EXPECT_TRUE(tested.contains(function.name)) << function.name;
    }
}

TEST(DistributionFunctions, OutsideTheirDomainAreNotValid)
{
    const struct {
        const char* function;
        Arguments arguments;
    } kRows[] = {{"normalCDF", {"1", "0", "-1"}}, {"normalCDF", {"1", "0", "0"}},
                 {"normalPDF", {"1", "0", "0"}},  {"normalIDF", {"0.5", "0", "-1"}},
                 {"stdNormalIDF", {"0"}},         {"stdNormalIDF", {"1"}},
                 {"stdNormalIDF", {"1.5"}},       {"stdNormalIDF", {"-0.5"}}};
    for (const auto& row : kRows) {
        EXPECT_EQ(Outcome(row.function, row.arguments), "!") << Joined(row.function, row.arguments);
    }
}

struct TextRow {
    const char* function;
    Arguments arguments;
    const char* expected;
};

template <size_t N>
void ExpectTexts(const TextRow (&rows)[N], std::span<const Function> topic)
{
    std::set<std::string> tested;
    for (const TextRow& row : rows) {
        EXPECT_EQ(Outcome(row.function, row.arguments), row.expected)
            << Joined(row.function, row.arguments);
        tested.insert(row.function);
    }
    for (const Function& function : topic) {
        EXPECT_TRUE(tested.contains(function.name)) << function.name;
    }
}

TEST(LogicFunctions, YieldTheValuesOfTheirDefinition)
{
    const TextRow kRows[] = {
        {"isMissing", {"?"}, "true"},
        {"isMissing", {"!"}, "false"},
        {"isMissing", {"1"}, "false"},
        {"isNotMissing", {"?"}, "false"},
        {"isNotMissing", {"!"}, "true"},
        {"isNotMissing", {"'a'"}, "true"},
        {"isValid", {"1"}, "true"},
        {"isValid", {"?"}, "false"},
        {"isValid", {"!"}, "false"},
        {"isNotValid", {"1"}, "false"},
        {"isNotValid", {"?"}, "true"},
        {"isNotValid", {"!"}, "true"},

        {"equal", {"1", "1"}, "true"},
        {"equal", {"1", "2"}, "false"},
        {"equal", {"'a'", "'a'"}, "true"},
        {"equal", {"'a'", "'A'"}, "false"},
        {"equal", {"'1.0'", "1"}, "true"},
        {"equal", {"'1.0'", "'1'"}, "false"},
        {"equal", {"'one'", "1"}, "false"},
        {"equal", {"true", "true"}, "true"},
        {"equal", {"true", "'T'"}, "true"},
        {"equal", {"true", "0"}, "false"},
        {"equal", {"date:2003-04-01", "'2003-04-01'"}, "true"},
        {"equal", {"date:2003-04-01", "moment:2003-04-01T00:00:00"}, "true"},
        {"equal", {"date:2003-04-01", "time:00:00:00"}, "false"},
        {"equal", {"date:1970-01-02", "1"}, "false"},
        {"notEqual", {"1", "1"}, "false"},
        {"notEqual", {"1", "2"}, "true"},
        {"notEqual", {"'one'", "1"}, "true"},
        {"lessThan", {"1", "2"}, "true"},
        {"lessThan", {"2", "2"}, "false"},
        {"lessThan", {"'10'", "'9'"}, "true"},  // texts, by their characters
        {"lessThan", {"'10'", "9"}, "false"},
        {"lessThan", {"'a'", "1"}, "!"},
        {"lessThan", {"date:2003-04-01", "moment:2003-04-01T00:00:01"}, "true"},
        {"lessThan", {"moment:2003-04-01T00:00:01", "date:2003-04-01"}, "false"},
        {"lessOrEqual", {"2", "2"}, "true"},
        {"lessOrEqual", {"3", "2"}, "false"},
        {"greaterThan", {"3", "2"}, "true"},
        {"greaterThan", {"2", "2"}, "false"},
        {"greaterOrEqual", {"2", "2"}, "true"},
        {"greaterOrEqual", {"1", "2"}, "false"},
        {"greaterOrEqual", {"time:12:30:00", "time:12:29:59.5"}, "true"},

        {"and", {"true", "true"}, "true"},
        {"and", {"true", "false", "true"}, "false"},
        {"and", {"true", "?"}, "?"},
        {"and", {"?", "false"}, "false"},
        {"and", {"?", "?"}, "?"},
        {"and", {"!", "false"}, "false"},
        {"and", {"!", "?"}, "!"},
        {"and", {"'word'", "true"}, "!"},
        {"or", {"false", "false"}, "false"},
        {"or", {"false", "true", "false"}, "true"},
        {"or", {"false", "?"}, "?"},
        {"or", {"?", "true"}, "true"},
        {"or", {"?", "?"}, "?"},
        {"or", {"!", "true"}, "true"},
        {"or", {"!", "false"}, "!"},
        {"or", {"0", "1"}, "true"},
        {"not", {"true"}, "false"},
        {"not", {"false"}, "true"},
        {"not", {"?"}, "?"},
        {"not", {"2"}, "!"},

        {"isIn", {"2", "1", "2", "3"}, "true"},
        {"isIn", {"4", "1", "2", "3"}, "false"},
        {"isIn", {"'b'", "'a'", "'b'"}, "true"},
        {"isIn", {"?", "1"}, "?"},
        {"isIn", {"1", "?", "1"}, "?"},
        {"isNotIn", {"2", "1", "2"}, "false"},
        {"isNotIn", {"'c'", "'a'", "'b'"}, "true"},

        {"if", {"true", "'then'", "'else'"}, "then"},
        {"if", {"false", "'then'", "'else'"}, "else"},
        {"if", {"true", "'then'"}, "then"},
        {"if", {"false", "'then'"}, "?"},
        {"if", {"?", "'then'", "'else'"}, "?"},
        {"if", {"true", "'then'", "?"}, "then"},
        {"if", {"true", "'then'", "!"}, "then"},
        {"if", {"false", "'then'", "!"}, "!"},
        {"if", {"'word'", "1", "2"}, "!"},
    };
    ExpectTexts(kRows, LogicFunctions());
}

TEST(TextFunctions, YieldTheValuesOfTheirDefinition)
{
    const TextRow kRows[] = {
        {"uppercase", {"'aBc9'"}, "ABC9"},
        {"uppercase", {"'\u00e4\u00f1\u03b1\u0436\u00df'"}, "\u00c4\u00d1\u0391\u0416\u00df"},
        {"lowercase", {"'aB9'"}, "ab9"},
        {"lowercase", {"'\u00c4\u00d1\u0391\u0416'"}, "\u00e4\u00f1\u03b1\u0436"},
        {"stringLength", {"'aBc9x'"}, "5"},
        {"stringLength", {"'\u00e4\u20ac\U0001f600'"}, "3"},
        {"stringLength", {"''"}, "0"},
        {"substring", {"'aBc9x'", "2", "3"}, "Bc9"},
        {"substring", {"'aBc9x'", "4", "9"}, "9x"},
        {"substring", {"'aBc9x'", "6", "1"}, ""},
        {"substring", {"'aBc9x'", "1", "0"}, ""},
        {"substring", {"'\u00e4\u20acb'", "2", "1"}, "\u20ac"},
        {"substring", {"'abc'", "0", "1"}, "!"},
        {"substring", {"'abc'", "1.5", "1"}, "!"},
        {"substring", {"'abc'", "1", "-1"}, "!"},
        {"substring", {"'abc'", "1", "1e300"}, "abc"},
        {"trimBlanks", {"' aB c  '"}, "aB c"},
        {"concat", {"'2'", "'-'", "'2000'"}, "2-2000"},
        {"concat", {"2", "'-'", "2000.5", "true"}, "2-2000.5true"},
        {"concat", {"date:2003-04-01", "' '", "time:05:23:30"}, "2003-04-01 05:23:30"},
        {"concat", {"'a'"}, "a"},
        {"concat", {"'a'", "?"}, "?"},
        {"concat", {"'a'", "!"}, "!"},
    };
    ExpectTexts(kRows, TextFunctions());
}

TEST(PatternFunctions, YieldTheValuesOfTheirDefinition)
{
    const TextRow kRows[] = {
        {"matches", {"'February'", "'ar?y'"}, "true"},
        {"matches", {"'August'", "'ar?y'"}, "false"},
        {"matches", {"'May'", "'^ay'"}, "false"},
        {"matches", {"'May'", "'ay$'"}, "true"},
        {"matches", {"'\u00e4'", "'^.$'"}, "true"},  // one character
        {"matches", {"12", "'^[0-9]+$'"}, "true"},
        {"matches", {"'\\C'", "'\\\\C'"}, "true"},  // a backslash, and no \C of a byte
        {"replace", {"'BBBB'", "'B+'", "'c'"}, "c"},
        {"replace", {"'abracadabra'", "'bra'", "'*'"}, "a*cada*"},
        {"replace", {"'abracadabra'", "'a(.)'", "'[$1]'"}, "[b]r[c][d][b]ra"},
        {"replace", {"'darted'", "'^(.*?)d(.*)$'", "'$1c$2'"}, "carted"},
        {"replace", {"'price'", "'price'", "'\\$5 \\\\'"}, "$5 \\"},
        {"replace", {"'ab'", "'b(c)?'", "'($1$7$0)'"}, "a(b)"},
        {"replace", {"'abc'", "'x*'", "'-'"}, "-a-b-c-"},
        {"replace", {"'\u00e4b'", "'x*'", "'-'"}, "-\u00e4-b-"},
        {"replace", {"''", "'a'", "'b'"}, ""},
        {"replace", {"'a'", "'a'", "?"}, "?"},
    };
    ExpectTexts(kRows, PatternFunctions());
}

TEST(FormatFunctions, YieldTheValuesOfTheirDefinition)
{
    const TextRow kRows[] = {
        {"formatNumber", {"2", "'%3d'"}, "  2"},
        {"formatNumber", {"2", "'%-3d|'"}, "2  |"},
        {"formatNumber", {"2", "'%03d'"}, "002"},
        {"formatNumber", {"-2", "'%+04d'"}, "-002"},
        {"formatNumber", {"2.5", "'%d'"}, "2"},
        {"formatNumber", {"3.14159", "'%.2f'"}, "3.14"},
        {"formatNumber", {"3.14159", "'%f'"}, "3.141590"},
        {"formatNumber", {"3.14159", "'%8.3f'"}, "   3.142"},
        {"formatNumber", {"12345.678", "'%.3e'"}, "1.235e+04"},
        {"formatNumber", {"0.0001", "'%g'"}, "0.0001"},
        {"formatNumber", {"50", "'{%d%%}'"}, "{50%}"},
        {"formatNumber", {"'7'", "'% d'"}, " 7"},
        {"formatNumber", {"1e30", "'%d'"}, "!"},
        {"formatNumber", {"'x'", "'%d'"}, "!"},
        {"formatDatetime", {"date:2004-08-20", "'%m/%d/%y'"}, "08/20/04"},
        {"formatDatetime",
         {"moment:2004-08-20T23:05:09.75", "'%Y-%j %H:%M:%S %p %A %b %%'"},
         "2004-233 23:05:09 PM Friday Aug %"},
        {"formatDatetime", {"time:05:23:30", "'%H.%M'"}, "05.23"},
        {"formatDatetime", {"'1969-12-31'", "'%d.%m.%Y'"}, "31.12.1969"},
        {"formatDatetime", {"'31.12.1969'", "'%d'"}, "!"},
        {"formatDatetime", {"12", "'%d'"}, "!"},
    };
    ExpectTexts(kRows, FormatFunctions());
}

TEST(DateFunctions, YieldTheValuesOfTheirDefinition)
{
    const TextRow kRows[] = {
        // 43 years of 365 days, 11 leap days, and 90 days of January to March
        {"dateDaysSinceYear", {"date:2003-04-01", "1960"}, "15796"},
        {"dateDaysSinceYear", {"date:1960-01-01", "1960"}, "0"},
        {"dateDaysSinceYear", {"date:1959-12-31", "1960"}, "-1"},
        {"dateDaysSinceYear", {"moment:1960-01-02T23:59:59", "1960"}, "1"},
        {"dateDaysSinceYear", {"moment:1959-12-31T23:59:59", "1960"}, "-1"},
        {"dateDaysSinceYear", {"'2003-04-01'", "1960"}, "15796"},
        {"dateDaysSinceYear", {"time:12:00:00", "1960"}, "!"},
        {"dateDaysSinceYear", {"date:2003-04-01", "1960.5"}, "!"},
        {"dateDaysSinceYear", {"15796", "1960"}, "!"},
        {"dateDaysSinceYear", {"?", "1960"}, "?"},
        // 2 days, 3 hours, 30 minutes and 3 seconds
        {"dateSecondsSinceYear", {"moment:1960-01-03T03:30:03", "1960"}, "185403"},
        {"dateSecondsSinceYear", {"date:1960-01-02", "1960"}, "86400"},
        {"dateSecondsSinceYear", {"moment:1959-12-31T23:59:59", "1960"}, "-1"},
        // 5 * 3600 + 23 * 60 + 30
        {"dateSecondsSinceMidnight", {"time:05:23:30"}, "19410"},
        {"dateSecondsSinceMidnight", {"moment:1959-12-31T05:23:30"}, "19410"},
        {"dateSecondsSinceMidnight", {"'05:23:30'"}, "19410"},
        {"dateSecondsSinceMidnight", {"date:2003-04-01"}, "0"},
        {"dateSecondsSinceMidnight", {"'noon'"}, "!"},
    };
    ExpectTexts(kRows, DateFunctions());
}

// Every function but those that look at missing values themselves.
TEST(Functions, MissingAndInvalidArgumentsFollowTheRule)
{
    for (const auto topic :
         {ArithmeticFunctions(), DistributionFunctions(), LogicFunctions(), TextFunctions(),
          PatternFunctions(), FormatFunctions(), DateFunctions()}) {
        for (const Function& function : topic) {
            Arguments ones(static_cast<size_t>(function.least), "'1'");
            if (function.patternArgument >= 0) ones[1] = "'%d'";
            for (size_t i = 0; i < ones.size(); ++i) {
                Arguments missing = ones;
                missing[i] = "?";
                Arguments invalid = ones;
                invalid[i] = "!";
                const std::string shown = Joined(function.name, missing);
                // mapMissingTo stands for the outcome of them all
                const bool truth = function.result == Function::Boolean;
                EXPECT_EQ(Outcome(function.name, missing,
                                  truth ? "mapMissingTo='false'" : "mapMissingTo='8'"),
                          truth ? "false" : "8")
                    << shown;
                if (function.missing == MissingRule::Own) continue;
                EXPECT_EQ(Outcome(function.name, invalid), "!") << shown;
                if (function.missing == MissingRule::Ignore) continue;
                EXPECT_EQ(Outcome(function.name, missing), "?") << shown;
                EXPECT_EQ(Outcome(function.name, missing,
                                  truth ? "defaultValue='true'" : "defaultValue='9'"),
                          truth ? "true" : "9")
                    << shown;
            }
        }
    }
}

TEST(Functions, OtherCountOfArgumentsIsRefused)
{
    const struct {
        const char* function;
        Arguments arguments;
        const char* expected;
    } kRows[] = {
        {"ln", {}, "1"},
        {"ln", {"1", "2"}, "1"},
        {"and", {"true"}, "2 or more"},
        {"if", {"true"}, "2 to 3"},
        {"if", {"1", "2", "3", "4"}, "2 to 3"},
        {"min", {}, "1 or more"},
        {"substring", {"'a'", "1"}, "3"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(
            RefusedFor(DerivedField("d", Called(row.function, row.arguments))),
            (Refusal{kWrongArgumentCount,
                     {row.function, std::to_string(row.arguments.size()), row.expected, "d"}}));
    }
}

TEST(Functions, NamesAreTakenAsWritten)
{
    EXPECT_EQ(RefusedFor(DerivedField("d", Called("Ln", {"1"}))),
              (Refusal{kFunctionNotSupported, {"Ln", "d"}}));
}

TEST(PatternFunctions, PatternThatIsNoneIsRefused)
{
    const auto refused = [](const std::string& function, const std::string& pattern) {
        Arguments arguments{"'a'", "'" + pattern + "'"};
        if (function == "replace") arguments.push_back("'b'");
        return RefusedFor(DerivedField("d", Called(function, arguments)));
    };
    for (const char* pattern : {"(a", "a**", "(?=a)b", "(a)\\1", "(a{1000}){1000}", "a\\\\\\C"}) {
        for (const char* function : {"matches", "replace"}) {
            const Refusal refusal = refused(function, pattern);
            EXPECT_EQ(refusal.code, kBadPattern) << pattern;
            ASSERT_EQ(refusal.arguments.size(), 4u) << pattern;
            EXPECT_EQ(refusal.arguments[0], pattern);
            EXPECT_EQ(refusal.arguments[1], function);
            EXPECT_FALSE(refusal.arguments[2].empty());
            EXPECT_EQ(refusal.arguments[3], "d");
        }
    }
    for (const char* pattern :
         {"", "none", "%s", "%d %d", "%", "%5", "%n", "%1000d", "%.3d", "%*d", "%ld", "%.1000f"}) {
        EXPECT_EQ(refused("formatNumber", pattern).code, kBadPattern) << pattern;
    }
    for (const char* pattern : {"%", "%Q", "%100Y", "%s"}) {
        EXPECT_EQ(refused("formatDatetime", pattern).code, kBadPattern) << pattern;
    }
}

// The pattern comes out of the case.
TEST(PatternFunctions, PatternOfACaseThatIsNoneIsNotValid)
{
    Derivation d(
        DerivedField("d", Apply("matches", Constant("banana") + FieldRef("t")), "categorical",
                     "boolean") +
        DerivedField("e", Apply("isNotValid", Apply("matches", Constant("banana") + FieldRef("t"))),
                     "categorical", "boolean"));
    EXPECT_EQ(d.With("t", "(an)+a$")["d"].GetString(), "true");
    EXPECT_EQ(d.With("t", "^an")["d"].GetString(), "false");
    EXPECT_TRUE(d.With("t", "(an")["e"].GetString() == "true" && d.Missing("d"));
    EXPECT_EQ(d.With("t", "n")["d"].GetString(), "true");
}

// A search that tries all ways would take 2^n steps.
TEST(PatternFunctions, TimeIsInProportionToTheText)
{
    const std::string text(1000000, 'a');
    Derivation d(DerivedField("d", Apply("matches", FieldRef("t") + Constant("(a+)+$")),
                              "categorical", "boolean") +
                 DerivedField("e", Apply("matches", FieldRef("t") + Constant("^(a|aa)+c$")),
                              "categorical", "boolean"));
    d.With("t", (text + "b").c_str());
    EXPECT_EQ(d["d"].GetString(), "false");
    EXPECT_EQ(d["e"].GetString(), "false");
}

TEST(PatternFunctions, NumberOfPatternsIsLimited)
{
    std::string fields;
    for (int i = 1; i <= 1001; ++i) {
        std::string name = "d";
        name.append(std::to_string(i));
        fields += DerivedField(name, Called("matches", {"'a'", "'b'"}), "categorical", "boolean");
    }
    EXPECT_EQ(RefusedFor(fields), (Refusal{kTooManyPatterns, {"1000", "d1001"}}));
}

// Each field twice the one before: the fifteenth would have 32,768 characters.
TEST(TextFunctions, TextsThatGrowTooLongAreNotValid)
{
    const auto name = [](int i) { return std::string("d").append(std::to_string(i)); };
    std::string fields;
    for (int i = 1; i <= 40; ++i) {
        const std::string from = FieldRef(i == 1 ? "t" : name(i - 1));
        fields += DerivedField(name(i), Apply("concat", from + from), "categorical", "string");
    }
    Derivation d(fields);
    d.With("t", "x");
    EXPECT_EQ(d["d14"].GetString().size(), kLongestText);
    EXPECT_TRUE(d.Missing("d15"));
    EXPECT_TRUE(d.Missing("d40"));
    const std::string growing =
        Apply("replace", FieldRef("t") + Constant("a") + Constant(std::string(1000, 'b')));
    Derivation e(DerivedField("e", growing, "categorical", "string"));
    EXPECT_EQ(e.With("t", std::string(16, 'a').c_str())["e"].GetString().size(), 16000u);
    EXPECT_TRUE(e.With("t", std::string(17, 'a').c_str()).Missing("e"));
}

}  // namespace
}  // namespace MCVelscore_850
