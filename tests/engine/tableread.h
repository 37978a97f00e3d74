#ifndef VELSCORE_TESTS_ENGINE_TABLEREAD_H
#define VELSCORE_TESTS_ENGINE_TABLEREAD_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "engine/messages/failure.h"
#include "engine/tables/rowreader.h"
#include "tests/engine/textsource.h"

namespace MCVelscore_850 {

using Row = std::vector<std::string>;

/// What a RowReader makes of a text.
struct TableRead {
    Row header;
    std::vector<Row> rows;
    int code = 0;         ///< of the failure that ended the reading
    std::string message;  ///< its text
};

/// Reads a text that comes in pieces of at most so many bytes.
inline TableRead Read(const std::string& text, size_t piece = 1 << 16, char delimiter = ',')
{
    TableRead table;
    TextSource source(text, piece);
    try {
        RowReader reader(source, delimiter);
        table.header = reader.Header();
        std::span<const std::string_view> fields;
        while (reader.Next(fields)) table.rows.emplace_back(fields.begin(), fields.end());
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Cases);
        table.code = failure.Code();
        table.message = failure.what();
    }
    return table;
}

}  // namespace MCVelscore_850

#endif
