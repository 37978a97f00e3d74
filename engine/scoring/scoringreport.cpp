#include "engine/scoring/scoringreport.h"

namespace MCVelscore_850 {

namespace {

struct ReasonView {
    long code;
    std::string_view field;
};

}  // namespace

int64_t ScoringReport::NotScoredCount() const
{
    int64_t count = 0;
    for (const auto& [reason, cases] : notScored) count += cases.count;
    return count;
}

void ScoringReport::Note(long code, std::string_view field, const NotScored::Case& first)
{
    auto found = notScored.find(ReasonView{code, field});
    if (found == notScored.end()) {
        found = notScored.emplace(NotScoredReason{code, std::string(field)}, NotScored{}).first;
    }
    NotScored& cases = found->second;
    ++cases.count;
    if (cases.first.size() < NotScored::kShown) cases.first.push_back(first);
}

void ScoringReport::Add(const ScoringReport& next)
{
    scored += next.scored;
    for (const auto& [reason, cases] : next.notScored) {
        NotScored& all = notScored[reason];
        all.count += cases.count;
        for (const NotScored::Case& each : cases.first) {
            if (all.first.size() < NotScored::kShown) all.first.push_back(each);
        }
    }
}

}  // namespace MCVelscore_850
