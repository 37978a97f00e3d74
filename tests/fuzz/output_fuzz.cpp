// Documents with an Output section, mutated as in structure: a case's output fields have the same
// values whichever cases went before it, and a number is one.
#include <bit>
#include <cmath>
#include <cstdint>
#include <span>

#include "engine/messages/failure.h"
#include "tests/engine/outputcells.h"
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/slowinputs.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::fuzz;

namespace {

bool AreAlike(const OutputCell& one, const OutputCell& other)
{
    if (one.kind != other.kind) return false;
    switch (one.kind) {
        case OutputCell::Missing: return true;
        case OutputCell::Text: return one.text == other.text;
        case OutputCell::Number:
            return std::bit_cast<uint64_t>(one.number) == std::bit_cast<uint64_t>(other.number);
    }
    return false;
}

void CheckOutput(const LoadedModel& model, const CaseTable& table)
{
    const auto together = OutputCellsOf(model, table.header, table.views);
    const size_t columns = table.header.size();
    for (size_t row = 0; row < together.size(); ++row) {
        const auto texts = std::span(table.views).subspan(row * columns, columns);
        const auto alone = OutputCellsOf(model, table.header, texts).at(0);
        for (size_t field = 0; field < alone.size(); ++field) {
            const OutputCell& cell = together[row][field];
            const std::string& name = model.Output()->fields[field].name;
            Require(AreAlike(cell, alone[field]), name + " alike together and alone");
            Require(cell.kind != OutputCell::Number || !std::isnan(cell.number),
                    name + ", a number or nothing");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const SlowInputs::Watch watch(TextOf(bytes, size));
    const auto model = ModelOf(TextOf(bytes, size), {.output = OutputColumns::Document});
    if (model == nullptr || model->Output() == nullptr) return 0;
    const CaseTable cases = DrawnCases(*model);
    if (cases.header.empty()) return 0;
    try {
        CheckOutput(*model, cases);
    } catch (const Failure&) {
        // The header, as in the checks of documents.
    }
    return 0;
}
