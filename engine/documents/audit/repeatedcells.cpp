#include "engine/documents/audit/repeatedcells.h"

#include <algorithm>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "engine/documents/audit/documentfacts.h"
#include "engine/documents/treefields.h"

namespace MCVelscore_850 {

namespace {

constexpr uint32_t kNone = NameIndex::kNone;

// What a cell stands for: two names of parameters, predictors or categories, or two pairs of them.
struct Place {
    uint64_t row;
    uint64_t column;
    uint32_t cell;
    bool mirrored;
};

uint64_t Pair(uint32_t one, uint32_t other) { return uint64_t{one} << 32 | other; }

bool IsSamePlace(const Place& one, const Place& other)
{
    return one.row == other.row && one.column == other.column;
}

// Sorting brings cells of one place together, and takes less than a table of half a million.
template <class Agree>
std::vector<RepeatedCell> RepeatedAmong(std::vector<Place> places, Agree agree)
{
    const auto before = [](const Place& one, const Place& other) {
        if (one.row != other.row) return one.row < other.row;
        if (one.column != other.column) return one.column < other.column;
        return one.cell < other.cell;
    };
    if (!std::is_sorted(places.begin(), places.end(), before)) {
        std::sort(places.begin(), places.end(), before);
    }
    std::vector<RepeatedCell> repeated;
    const Place* first = nullptr;
    for (const Place& place : places) {
        if (first == nullptr || !IsSamePlace(*first, place)) {
            first = &place;
            continue;
        }
        repeated.push_back({first->cell, place.cell, agree(first->cell, place.cell),
                            first->mirrored != place.mirrored});
    }
    std::sort(
        repeated.begin(), repeated.end(),
        [](const RepeatedCell& one, const RepeatedCell& other) { return one.again < other.again; });
    return repeated;
}

// True where each place lies behind the one before, as in a triangle that is written row by row:
// none comes again, and there is nothing to sort.
template <class PlaceOf>
bool AreInOrder(size_t count, PlaceOf placeOf)
{
    std::optional<Place> before;
    for (size_t i = 0; i < count; ++i) {
        const std::optional<Place> place = placeOf(i);
        if (!place) continue;
        if (before &&
            std::tie(before->row, before->column) >= std::tie(place->row, place->column)) {
            return false;
        }
        before = place;
    }
    return true;
}

// What is no number is told elsewhere.
bool Agree(const std::optional<double>& one, const std::optional<double>& other)
{
    return !one || !other || *one == *other;  // both are texts of the same document, so exact
}

}  // namespace

std::vector<RepeatedCell> RepeatedDesigns(const DocumentFacts& facts)
{
    const auto& cells = facts.designs;
    std::vector<Place> places;
    for (size_t i = 0; i < cells.size(); ++i) {
        const DocumentFacts::Design& cell = cells[i];
        if (cell.parameter == kNone || cell.predictor == kNone || !cell.targetCategory.empty()) {
            continue;
        }
        places.push_back({cell.parameter, cell.predictor, static_cast<uint32_t>(i), false});
    }
    return RepeatedAmong(std::move(places), [&](uint32_t one, uint32_t other) {
        const DocumentFacts::Predictor& predictor = facts.predictors[cells[one].predictor];
        const DocumentFacts::Field* field = facts.FieldOf(predictor);
        const std::string type = !predictor.isFactor ? "double" : field ? field->dataType : "";
        return CategoryKey(type, cells[one].value) == CategoryKey(type, cells[other].value);
    });
}

std::vector<RepeatedCell> RepeatedEstimates(const DocumentFacts& facts)
{
    if (!facts.family) return {};  // nobody knows which betas go together
    const auto& cells = facts.estimates;
    const std::string type = facts.target == nullptr ? std::string() : facts.target->dataType;
    std::unordered_map<std::string, uint32_t> categories;
    const auto categoryOf = [&](const DocumentFacts::Estimate& cell) -> uint32_t {
        // Thresholds are by category, the slopes of an ordinal model aren't.
        const bool hasOwn =
            facts.IsOrdinal() ? !facts.HasDesign(cell.parameter) : facts.HasEquations();
        if (!hasOwn || cell.targetCategory.empty()) return kNone;
        return categories
            .emplace(CategoryKey(type, cell.targetCategory),
                     static_cast<uint32_t>(categories.size()))
            .first->second;
    };
    std::vector<Place> places;
    for (size_t i = 0; i < cells.size(); ++i) {
        if (cells[i].parameter == kNone) continue;
        places.push_back(
            {cells[i].parameter, categoryOf(cells[i]), static_cast<uint32_t>(i), false});
    }
    return RepeatedAmong(std::move(places), [&](uint32_t one, uint32_t other) {
        return Agree(cells[one].beta, cells[other].beta);
    });
}

std::vector<RepeatedCell> RepeatedCovariances(const DocumentFacts& facts)
{
    const auto& cells = facts.covariances;
    const bool byCategory = facts.IsMultinomial() || facts.IsOrdinal();
    const auto placeOf = [&](size_t number) -> std::optional<Place> {
        const DocumentFacts::Covariance& cell = cells[number];
        if (cell.row == kNone || cell.column == kNone) return std::nullopt;
        const uint64_t row = Pair(cell.row, byCategory ? cell.rowCategory : kNone);
        const uint64_t column = Pair(cell.column, byCategory ? cell.columnCategory : kNone);
        return Place{std::max(row, column), std::min(row, column), static_cast<uint32_t>(number),
                     row < column};
    };
    if (AreInOrder(cells.size(), placeOf)) return {};
    std::vector<Place> places;
    places.reserve(cells.size());
    for (size_t i = 0; i < cells.size(); ++i) {
        if (const auto place = placeOf(i)) places.push_back(*place);
    }
    return RepeatedAmong(std::move(places), [&](uint32_t one, uint32_t other) {
        return Agree(cells[one].value, cells[other].value);
    });
}

}  // namespace MCVelscore_850
