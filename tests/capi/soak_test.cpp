// Models that come and go all day: VELSCORE_TEST_ROUNDS times every document of the test data.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "capi/include/velscore.h"
#include "tests/allocations.h"
#include "tests/residentbytes.h"
#include "tests/system/runcommand.h"

namespace velscore_tests {
namespace {

using MCVelscore_850::LiveAllocations;
using MCVelscore_850::ResidentBytes;

std::vector<std::string> CaseDocuments()
{
    std::vector<std::string> files;
    for (const auto& folder :
         std::filesystem::directory_iterator(MCVelscore_850::DataFile("cases"))) {
        const auto file = folder.path() / "model.pmml";
        if (std::filesystem::exists(file)) files.push_back(file);
    }
    return files;
}

TEST(Soak, DocumentsThatOpenAndCloseLeaveNothing)
{
    constexpr long kMostGrowth = long{8} << 20;
    const char* const wanted = std::getenv("VELSCORE_TEST_ROUNDS");
    const long rounds = std::max(3L, wanted == nullptr ? 3 : std::atol(wanted));
    const std::vector<std::string> documents = CaseDocuments();
    ASSERT_GT(documents.size(), 50u);
    const auto open = [&](long times) {
        for (long time = 0; time < times; ++time) {
            for (const std::string& document : documents) {
                velscore_model* model = nullptr;
                ASSERT_EQ(velscore_open(document.c_str(), nullptr, &model, nullptr), 0) << document;
                velscore_close(model);
            }
        }
    };
    const long first = std::max(1L, rounds / 10);
    open(first);
    const long live = LiveAllocations();
    const long resident = ResidentBytes();
    open(rounds - first);
    EXPECT_EQ(LiveAllocations(), live);
    if (!MCVelscore_850::kIsSanitized) {  // which keeps what was freed
        EXPECT_LE(ResidentBytes(), resident + kMostGrowth);
    }
    std::cout << rounds << " times " << documents.size() << " documents: " << (resident >> 10)
              << " KiB after the first " << first << ", " << (ResidentBytes() >> 10)
              << " KiB at the end\n";
}

}  // namespace
}  // namespace velscore_tests
