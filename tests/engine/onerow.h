#ifndef VELSCORE_TESTS_ENGINE_ONEROW_H
#define VELSCORE_TESTS_ENGINE_ONEROW_H

#include <span>
#include <string_view>

#include "engine/tables/columnblock.h"

namespace MCVelscore_850 {

/// A row of texts as a block, which borrows them.
class OneRow {
public:
    explicit OneRow(std::span<const std::string_view> fields)
        : rows_(fields.size()), block_(rows_.Block(fields))
    {}
    operator const ColumnBlock&() const { return block_; }

private:
    TextRows rows_;
    ColumnBlock block_;
};

}  // namespace MCVelscore_850

#endif
