#include "tests/fuzz/documentdrawing.h"

#include "tests/fuzz/drawnparts.h"

namespace MCVelscore_850::fuzz {

std::string DrawDocument(unsigned seed)
{
    Draws draws(seed);
    const unsigned own = draws.Raw();
    switch (draws.Below(4)) {
        case 0: return DrawRegressionModel(own);
        case 1: return DrawOlderForm(own);
        default: return DrawGeneralModel(own);
    }
}

std::string DrawTable(unsigned seed)
{
    Draws draws(seed);
    std::vector<Field> fields = Fields();
    for (const auto name : {kTarget, kTime, kStratum, kOffset, kTrials}) {
        fields.push_back({std::string(name), "continuous", "double", {}, kNumberCells});
    }
    std::string table;
    for (const Field& field : fields) table += (table.empty() ? "" : ",") + field.name;
    constexpr size_t kRows = 6;
    for (size_t row = 0; row < kRows; ++row) {
        table += '\n';
        for (const Field& field : fields) {
            if (&field != &fields.front()) table += ',';
            table += draws.Seldom(8) ? OddValue(draws.Raw()) : draws.OneIn(field.Cells());
        }
    }
    return table + '\n';
}

}  // namespace MCVelscore_850::fuzz
