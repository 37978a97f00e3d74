#include "capi/baseline.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "capi/calls.h"
#include "capi/streams.h"
#include "engine/scoring/arrowexplanations.h"
#include "engine/scoring/baselinebuilder.h"
#include "host/messages/messages.h"

namespace MCVelscore_850::capi {

namespace {

[[noreturn]] void RefuseRowOfBaseline(int64_t row, const std::string& expected)
{
    throw Failure(FailureKind::Usage, kOptionValue,
                  {"baseline_row", std::to_string(row), expected});
}

// False once no further case is wanted.
bool TakeTable(ArrowExplainedCases& cases, ArrowOwner<ArrowArray> table, BaselineBuilder& baseline)
{
    const int64_t count = cases.Begin(std::move(table));
    constexpr auto kMost = static_cast<int64_t>(TableScorer::kRows);
    bool goesOn = true;
    for (int64_t first = 0; goesOn && first < count; first += kMost) {
        goesOn = cases.Visit(
            first, static_cast<size_t>(std::min(kMost, count - first)),
            [&](int64_t row, const CaseStatus& status, const CaseExplanation& explanation) {
                return baseline.Take(row, status, explanation);
            });
    }
    cases.End();
    return goesOn;
}

}  // namespace

GivenBaseline::GivenBaseline(const velscore_score_options* options) noexcept
{
    constexpr size_t kSize = VELSCORE_SIZE_TO(velscore_score_options, baseline_row);
    if (options == nullptr || options->size < kSize || options->size > kMostStructSize) return;
    if (options->baseline == nullptr) return;
    isAsked_ = true;
    row_ = options->baseline_row;
    tables_ = ArrowOwner(*options->baseline);
}

std::shared_ptr<const ExplanationBaseline> GivenBaseline::Read(const velscore_model& model,
                                                               const Request& request)
{
    if (!isAsked_) return nullptr;
    if (row_ < 0)
        RefuseRowOfBaseline(row_, "the number of a row, from 1, or 0 for the mean of all");
    GivenStream given(*tables_.Get());
    const ArrowOwner<ArrowSchema> schema = given.Schema();
    auto cases = model.With(request.settings, [&](const LoadedModel& loaded) {
        return std::make_unique<ArrowExplainedCases>(loaded, *schema, request.scoring);
    });
    BaselineBuilder builder(row_);
    std::optional<ArrowOwner<ArrowArray>> table = given.Next();
    while (table && TakeTable(*cases, std::move(*table), builder)) table = given.Next();
    if (auto baseline = builder.Make()) return baseline;
    if (row_ == 0) RefuseRowOfBaseline(row_, "a table with a case that has a score");
    if (builder.Status() == 0) RefuseRowOfBaseline(row_, "a row of the baseline's table");
    RefuseRowOfBaseline(
        row_, fmt::format("a row that has a score; this one has the status {}", builder.Status()));
}

}  // namespace MCVelscore_850::capi
