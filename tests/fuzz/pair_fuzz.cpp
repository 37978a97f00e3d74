// A document and a table of its cases: the text up to the first line "--" is the document.
#include "engine/messages/failure.h"
#include "tests/engine/textsource.h"
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string_view input = TextOf(bytes, size);
    constexpr std::string_view kBetween = "\n--\n";
    const size_t between = input.find(kBetween);
    if (between == std::string_view::npos) return 0;
    const auto model = ModelOf(input.substr(0, between));
    if (model == nullptr) return 0;
    try {
        const CaseTable table(TextSource(std::string(input.substr(between + kBetween.size()))));
        CheckScores(*model, table, true);
    } catch (const Failure&) {
        // A table that can't be read, or lacks a column.
    }
    return 0;
}
