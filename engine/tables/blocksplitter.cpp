#include "engine/tables/blocksplitter.h"

#include "engine/tables/jsonlinessplitter.h"
#include "engine/tables/recordsplitter.h"

namespace MCVelscore_850 {

BlockSplitter::~BlockSplitter() = default;

std::unique_ptr<BlockSplitter> MakeBlockSplitter(const SplitterPlan& plan)
{
    if (plan.form == TableForm::JsonLines) return std::make_unique<JsonLinesSplitter>(plan);
    return std::make_unique<RecordSplitter>(plan.header.size(), plan.delimiter);
}

}  // namespace MCVelscore_850
