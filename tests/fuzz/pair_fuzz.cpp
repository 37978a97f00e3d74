// A document and a table of its cases: the text up to the first line "--" is the document. Of one
// pair the document is mutated, as in structure, or the table: its cells; some pairs are drawn
// anew.
#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "engine/messages/failure.h"
#include "tests/engine/textsource.h"
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/documentdrawing.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/slowinputs.h"
#include "tests/fuzz/structuremutator.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::fuzz;

namespace {

constexpr std::string_view kBetween = "\n--\n";

struct Pair {
    std::string_view document;
    std::string_view table;

    /// Without a table where the line between is missing.
    explicit Pair(std::string_view input)
    {
        const size_t between = input.find(kBetween);
        document = input.substr(0, between);
        if (between != std::string_view::npos) table = input.substr(between + kBetween.size());
    }
};

// The table with another cell, or a row twice, or a byte that ends cells elsewhere.
std::string MutateTable(std::string_view table, std::mt19937& draws)
{
    constexpr std::string_view kEnds = ",;\t\n";
    constexpr std::string_view kBytes = ",;\t\n\r\"' \xC3\xA9\xEF\xBB\xBF";
    const auto below = [&](size_t count) { return draws() % count; };
    std::string text(table);
    std::vector<std::pair<size_t, size_t>> cells;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find_first_of(kEnds, begin), text.size());
        cells.emplace_back(begin, end);
        begin = end + 1;
    }
    const auto [begin, end] = cells[below(cells.size())];
    const auto [other, otherEnd] = cells[below(cells.size())];
    switch (below(8)) {
        case 0: text.insert(begin, 1, kBytes[below(kBytes.size())]); break;
        case 1: text.erase(begin, end + 1 - begin); break;
        case 2: {
            const size_t row = text.rfind('\n', begin) + 1;
            text.insert(row, text.substr(row, text.find('\n', begin) + 1 - row));
            break;
        }
        case 3:
        case 4: text.replace(begin, end - begin, OddValue(static_cast<unsigned>(draws()))); break;
        default:
            text.replace(begin, end - begin, std::string(table.substr(other, otherEnd - other)));
    }
    return text;
}

// Zero for what is too long: cut it would be another pair.
size_t Give(std::string_view document, std::string_view table, uint8_t* out, size_t most)
{
    const std::string input = std::string(document) + std::string(kBetween) + std::string(table);
    if (input.size() > most) return 0;
    std::copy(input.begin(), input.end(), out);
    return input.size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const SlowInputs::Watch watch(TextOf(bytes, size));
    const Pair pair(TextOf(bytes, size));
    if (pair.table.empty()) return 0;
    const auto model = ModelOf(pair.document);
    if (model == nullptr) return 0;
    try {
        const CaseTable table(TextSource(std::string(pair.table)));
        CheckScores(*model, table, true);
    } catch (const Failure&) {
        // A table that can't be read, or lacks a column.
    }
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* bytes, size_t size, size_t most, unsigned seed)
{
    const std::string input(TextOf(bytes, size));
    const Pair pair(input);
    std::mt19937 draws(seed);
    constexpr unsigned kSeldom = 16;  // as in structurehooks.cpp
    const auto draw = static_cast<unsigned>(draws() % kSeldom);
    size_t given = 0;
    if (draw == 1 || (draw != 0 && SlowInputs::Has(input))) {
        given = Give(DrawDocument(static_cast<unsigned>(draws())),
                     DrawTable(static_cast<unsigned>(draws())), bytes, most);
    } else if (draws() % 2 == 0) {
        given = Give(MutateStructure(pair.document, static_cast<unsigned>(draws())), pair.table,
                     bytes, most);
    } else {
        given = Give(pair.document, MutateTable(pair.table, draws), bytes, most);
    }
    return given == 0 ? size : given;
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* bytes, size_t size,
                                            const uint8_t* others, size_t othersSize, uint8_t* out,
                                            size_t most, unsigned seed)
{
    const Pair pair(TextOf(bytes, size));
    const Pair other(TextOf(others, othersSize));
    return Give(CrossStructures(pair.document, other.document, seed), pair.table, out, most);
}
