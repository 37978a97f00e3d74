#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/mutants/mutants.h"

// Writes a line a test into the file VELSCORE_MUTANTS_RECORD: its name, its milliseconds and the
// numbers of the mutants that it reached. Linked into the mutated test programs.

namespace {

constexpr int kMostMutants = 1 << 20;

class Recorder : public testing::EmptyTestEventListener {
public:
    explicit Recorder(const char* path) : file_(std::fopen(path, "w"))
    {
        if (file_ == nullptr) std::abort();
        velmutants::gReached = reached_;
    }

    void OnTestEnd(const testing::TestInfo& test) override
    {
        std::fprintf(file_, "%s.%s %lld", test.test_suite_name(), test.name(),
                     static_cast<long long>(test.result()->elapsed_time()));
        for (int id = 1; id < kMostMutants; ++id)
            if (reached_[id] != 0) std::fprintf(file_, " %d", id);
        std::fputc('\n', file_);
        std::memset(reached_, 0, sizeof reached_);
    }

    void OnTestProgramEnd(const testing::UnitTest&) override { std::fclose(file_); }

private:
    std::FILE* file_;
    unsigned char reached_[kMostMutants] = {};
};

[[maybe_unused]] const bool gRecords = [] {
    const char* path = std::getenv("VELSCORE_MUTANTS_RECORD");
    if (path != nullptr) testing::UnitTest::GetInstance()->listeners().Append(new Recorder(path));
    return path != nullptr;
}();

}  // namespace
