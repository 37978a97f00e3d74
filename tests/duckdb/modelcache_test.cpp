#include "duckdb/modelcache.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "tests/system/testmodel.h"

namespace velscore::sql {
namespace {

// The same model by another document.
std::string Text(int number)
{
    return MCVelscore_850::TestModel().Text() + "<!-- " + std::to_string(number) + " -->";
}

TEST(ModelCache, TheSameDocumentIsReadOnce)
{
    ModelCache cache(4, size_t{1} << 20);
    const auto first = cache.Of("a", Text(1));
    EXPECT_EQ(cache.Of("a", Text(1)), first);
    EXPECT_EQ(cache.Size(), 1u);
}

TEST(ModelCache, AnotherDocumentOfTheSamePathIsAnotherModel)
{
    ModelCache cache(4, size_t{1} << 20);
    const auto first = cache.Of("a", Text(1));
    const auto second = cache.Of("a", Text(2));  // of the same size
    EXPECT_NE(second, first);
    EXPECT_EQ(second->bytes, Text(2));
    EXPECT_EQ(cache.Of("a", Text(1)), first);
}

TEST(ModelCache, MessagesNameThePathThatWasAsked)
{
    ModelCache cache(4, size_t{1} << 20);
    cache.Of("a", Text(1));
    EXPECT_NE(cache.Of("b", Text(1))->description.find("\"document\": \"b\""), std::string::npos);
}

TEST(ModelCache, TheOneUsedLongestAgoGoesFirst)
{
    ModelCache cache(2, size_t{1} << 20);
    const auto first = cache.Of("a", Text(1));
    const auto second = cache.Of("b", Text(2));
    cache.Of("a", Text(1));
    cache.Of("c", Text(3));
    EXPECT_EQ(cache.Size(), 2u);
    EXPECT_EQ(cache.Of("a", Text(1)), first);
    EXPECT_NE(cache.Of("b", Text(2)), second);
    EXPECT_EQ(second->bytes, Text(2));  // still whole for who uses it
}

TEST(ModelCache, DocumentsBeyondTheBytesGo)
{
    const size_t size = Text(1).size();
    ModelCache cache(8, 2 * size);
    for (int i = 1; i <= 6; ++i) cache.Of("a", Text(i));
    EXPECT_EQ(cache.Size(), 3u);  // the last one and those beside it
    ModelCache none(8, 0);
    none.Of("a", Text(1));
    EXPECT_EQ(none.Size(), 1u);
}

TEST(ModelCache, ADocumentThatIsRefusedIsNotKept)
{
    ModelCache cache(4, size_t{1} << 20);
    EXPECT_THROW(cache.Of("a", "no document"), velscore::Error);
    EXPECT_EQ(cache.Size(), 0u);
}

TEST(ModelCache, ServesThreadsAtOnce)
{
    ModelCache cache(3, size_t{1} << 20);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 20; ++i) {
                const std::string text = Text((thread + i) % 5);
                const auto model = cache.Of("a", text);
                if (model->bytes != text || model->reads.empty()) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(cache.Size(), 3u);
}

}  // namespace
}  // namespace velscore::sql
