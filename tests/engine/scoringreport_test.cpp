#include "engine/scoring/scoringreport.h"

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

// Reasons as "code field count: table/row ...".
std::string TextOf(const ScoringReport& report)
{
    std::string text;
    for (const auto& [reason, cases] : report.notScored) {
        text += std::to_string(reason.code) + " " + reason.field + " " +
                std::to_string(cases.count) + ":";
        for (const NotScored::Case& each : cases.first) {
            text += " " + std::to_string(each.table) + "/" + std::to_string(each.row);
        }
        text += "\n";
    }
    return text;
}

TEST(ScoringReport, CountsByCodeAndFieldAndShowsTheFirstFive)
{
    ScoringReport report;
    for (int64_t row = 1; row <= 7; ++row) report.Note(90029, "x", {0, row});
    report.Note(90029, "sex", {0, 8});
    report.Note(269053, "", {1, 1});
    report.Note(90015, "x", {1, 2});
    EXPECT_EQ(TextOf(report),
              "90015 x 1: 1/2\n"
              "90029 sex 1: 0/8\n"
              "90029 x 7: 0/1 0/2 0/3 0/4 0/5\n"
              "269053  1: 1/1\n");
    EXPECT_EQ(report.NotScoredCount(), 10);
}

TEST(ScoringReport, AddsTheRowsBehindItsOwn)
{
    ScoringReport all;
    all.scored = 3;
    for (int64_t row : {2, 4, 5}) all.Note(90029, "x", {0, row});
    ScoringReport next;
    next.scored = 4;
    for (int64_t row : {7, 8, 9}) next.Note(90029, "x", {0, row});
    next.Note(90029, "sex", {0, 10});
    all.Add(next);
    all.Add(ScoringReport());
    EXPECT_EQ(all.scored, 7);
    EXPECT_EQ(TextOf(all), "90029 sex 1: 0/10\n90029 x 6: 0/2 0/4 0/5 0/7 0/8\n");
}

TEST(ScoringReport, KeepsTheTextThatStoodThere)
{
    ScoringReport report;
    report.Note(90029, "x", {0, 1, std::string("abc")});
    report.Note(90029, "x", {0, 2});
    const NotScored& cases = report.notScored.begin()->second;
    EXPECT_EQ(cases.first.at(0).text, "abc");
    EXPECT_EQ(cases.first.at(1).text, std::nullopt);
}

}  // namespace
}  // namespace MCVelscore_850
