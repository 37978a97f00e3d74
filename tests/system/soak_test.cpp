// Many rows in a run: memory doesn't grow with them, however slowly somebody reads what is written.
// VELSCORE_TEST_ROWS are the rows.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <thread>

#include <gtest/gtest.h>

#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using namespace std::chrono_literals;

constexpr int64_t kBlockRows = 1000;

std::string BlockOfRows()
{
    std::string text;
    for (int64_t row = 0; row < kBlockRows; ++row) {
        text += std::to_string(row) + (row % 3 == 0 ? ".25,f\n" : ".5,m\n");
    }
    return text;
}

/// Compares what comes piece by piece with a begin and a text behind it again and again.
class Repeated {
public:
    Repeated(std::string_view begin, std::string_view text) : begin_(begin), text_(text) {}
    bool GoesOnWith(std::string_view piece)
    {
        while (!piece.empty()) {
            const std::string_view rest = Rest();
            const size_t common = std::min(rest.size(), piece.size());
            if (piece.substr(0, common) != rest.substr(0, common)) return false;
            piece.remove_prefix(common);
            size_ += common;
        }
        return true;
    }
    uint64_t Size() const { return size_; }

private:
    std::string_view Rest() const
    {
        if (size_ < begin_.size()) return begin_.substr(size_);
        return text_.substr((size_ - begin_.size()) % text_.size());
    }
    std::string_view begin_;
    std::string_view text_;
    uint64_t size_ = 0;
};

TEST(Soak, RowsForASlowReaderTakeNoMoreMemoryTheMoreTheyAre)
{
    constexpr size_t kPiece = size_t{1} << 20;
    constexpr auto kPause = 10ms;  // of the reader, behind each piece
    constexpr long kMostGrowth = long{16} << 10;
    const char* const wanted = std::getenv("VELSCORE_TEST_ROWS");
    const int64_t blocks =
        std::max(100L, (wanted == nullptr ? 200000 : std::atol(wanted)) / kBlockRows);

    const ScratchFolder folder;
    const std::string model = folder.Write("model.pmml", TestModel().Text());
    const std::string header = "x,sex\n";
    const std::string rows = BlockOfRows();
    const Finished one = RunVelscore({"score", model, "-"}, header + rows);
    ASSERT_EQ(one.exitCode, 0) << one.err;
    const size_t begin = one.out.find('\n') + 1;
    Repeated expected(std::string_view(one.out).substr(0, begin),
                      std::string_view(one.out).substr(begin));
    const uint64_t whole = begin + (one.out.size() - begin) * static_cast<uint64_t>(blocks);

    const auto started = std::chrono::steady_clock::now();
    RunningVelscore running({"score", model, "-", "--quiet"});
    std::jthread writer([&] {
        bool isTaken = running.Write(header);
        for (int64_t block = 0; isTaken && block < blocks; ++block) isTaken = running.Write(rows);
        running.CloseInput();
    });
    long early = -1;
    long peak = -1;
    for (std::string piece = running.ReadOutput(kPiece); !piece.empty();
         piece = running.ReadOutput(kPiece)) {
        ASSERT_TRUE(expected.GoesOnWith(piece)) << "behind byte " << expected.Size();
        peak = std::max(peak, running.PeakKilobytes());
        if (expected.Size() <= whole / 4) early = peak;
        std::this_thread::sleep_for(kPause);
    }
    writer.join();
    const Finished finished = running.Finish();
    EXPECT_EQ(finished.exitCode, 0) << finished.err;
    EXPECT_EQ(expected.Size(), whole);
    ASSERT_GT(early, 0);
    if (!kIsSanitized) {
        EXPECT_LE(peak, early + kMostGrowth);
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - started;
    std::cout << blocks * kBlockRows << " rows in " << time.count() << " s, " << early
              << " KiB after a quarter, " << peak << " KiB at the end\n";
}

}  // namespace
}  // namespace MCVelscore_850
