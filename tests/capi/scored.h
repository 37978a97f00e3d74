#ifndef VELSCORE_TESTS_CAPI_SCORED_H
#define VELSCORE_TESTS_CAPI_SCORED_H

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "capi/include/velscore.hpp"
#include "tests/capi/madetables.h"
#include "tests/system/testmodel.h"

namespace velscore_tests {

using MCVelscore_850::TestModel;

/// The scores of one table through a document, as a stream; `error` becomes the stream's own.
inline ReadTables ScoresOf(const std::string& document, const MadeArray& table,
                           const velscore::ScoreOptions& options = {}, std::string* error = nullptr)
{
    const auto model = velscore::Model::FromText(document);
    ArrowArrayStream in = StreamOf(table);
    ArrowArrayStream out = model.Score(in, options);
    return ReadAll(out, error);
}

/// The text with another in the place of the one that stands in it.
inline std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

/// The document of TestModel with a fault of the rule misspelt-attribute in line 14; where that is
/// allowed the model is the same.
inline std::string FaultyText()
{
    return Replaced(TestModel().Text(), "name=\"sex\" usageType", "name=\"sex\" usagetype");
}

}  // namespace velscore_tests

#endif
