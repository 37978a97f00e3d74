// Memory that runs out at one place after another of what an engine does with a document of each
// family: it ends with std::bad_alloc, keeps nothing, and what it works on can be used again.
//
// Places are ever fewer the later they come; with VELSCORE_TEST_FAULTS=all every one. The program
// malloc_tests runs this too, where malloc() itself fails, under whoever calls it.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <sstream>

#include <gtest/gtest.h>

#include "engine/documents/documentconverter.h"
#include "engine/documents/documentfix.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/loadedmodel.h"
#include "engine/scoring/scoringsession.h"
#include "engine/tables/rowwriter.h"
#include "tests/allocations.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

#ifndef VELSCORE_THREAD_SANITIZER  // which has an operator new of its own

/// A folder of tests/data/cases and what its family can do beside scoring.
struct Family {
    const char* name;
    const char* folder;
    bool hasCurves = false;
    bool isOlder = false;
    Compression compression = Compression::None;
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

const Family kFamilies[] = {
    {"Linear", "lm-swiss"},
    {"Multinomial", "mlr-birthwt-race", false, false, Compression::Gzip},
    {"Ordinal", "ordinal-logit-housing", false, false, Compression::Zstd},
    {"Cox", "cox-veteran-strata", true},
    {"OlderForm", "legacy-lm-stackloss", false, true},
};

class OutOfMemory : public testing::TestWithParam<Family> {
protected:
    static std::string File(const std::string& name)
    {
        return std::string("tests/data/cases/") + GetParam().folder + "/" + name;
    }
    static std::string Bytes(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        if (!file) throw std::bad_alloc();  // which opening keeps to itself
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string Score(const LoadedModel& model, ScoringOptions options) const
    {
        options.rejects = true;
        options.compression = GetParam().compression;
        ScoringSession session(model, {File("input.csv")}, options);
        RowWriter writer(rows_, options.compression);
        RowWriter rejects(rejects_);
        session.Run(writer, &rejects);
        writer.Close();
        rejects.Close();
        return Bytes(rows_) + Bytes(rejects_);
    }

    const ScratchFolder folder_;
    const std::string rows_ = folder_.Path("rows");
    const std::string rejects_ = folder_.Path("rejects");
    const std::shared_ptr<const Plugin> plugin_ = std::make_shared<Plugin>(VELSCORE_PLUGIN);
};

INSTANTIATE_TEST_SUITE_P(Families, OutOfMemory, testing::ValuesIn(kFamilies),
                         [](const auto& each) { return each.param.name; });

/// What is done, and the text that it answers.
using Round = std::function<std::string()>;

// True where memory ran out. Other failures aren't caught, and fail the test.
bool RunsOut(const Round& round, const std::string& whole, long after, MemoryRunsOut::For which)
{
    bool hasHappened = false;
    bool isCaught = false;
    std::string answer;
    try {
        const MemoryRunsOut end(after, which);
        try {
            answer = round();
        } catch (const std::bad_alloc&) {
            isCaught = true;
        }
        hasHappened = end.HasHappened();
    } catch (...) {
        ADD_FAILURE() << "another failure than std::bad_alloc";
        throw;
    }
    EXPECT_TRUE(hasHappened || !isCaught);
    EXPECT_TRUE(isCaught || answer == whole) << "a lack of memory went unnoticed";
    return hasHappened;
}

// The XML library's table of elements' lists takes several pieces, and loses the first where there
// is no second.
void ExpectSurvives(const Round& round)
{
    const char* const wanted = std::getenv("VELSCORE_TEST_FAULTS");
    const bool all = wanted != nullptr && std::string(wanted) == "all";
    const std::string whole = round();
    ASSERT_FALSE(whole.empty());
    ASSERT_EQ(round(), whole);
    for (const auto which : {MemoryRunsOut::For::One, MemoryRunsOut::For::All}) {
        long places = 0;
        bool hasHappened = true;
        for (long after = 0; hasHappened; after += all ? 1 : 1 + after / 20) {
            SCOPED_TRACE("after " + std::to_string(after) + " allocations, " +
                         (which == MemoryRunsOut::For::One ? "one" : "all"));
            // What the first makes for as long as the process lives isn't left behind.
            long live = 0;
            for (int time = 0; time < 2; ++time) {
                live = LiveAllocations();
                hasHappened = RunsOut(round, whole, after, which);
            }
            const bool isOfXerces = hasHappened && MemoryRunsOut::WasIn("DOMDeepNodeListPool");
            ASSERT_GE(LiveAllocations(), live);
            ASSERT_LE(LiveAllocations(), live + (isOfXerces ? 1 : 0));
            ASSERT_FALSE(testing::Test::HasFailure());
            ++places;
        }
        EXPECT_GT(places, 10);
    }
    EXPECT_EQ(round(), whole);
}

TEST_P(OutOfMemory, WhileADocumentIsLoadedKeepsNothing)
{
    ExpectSurvives([&] {
        const LoadedModel model(File("model.pmml"), plugin_);
        std::ostringstream shown;
        shown.exceptions(std::ios::badbit);  // else it keeps what happens to itself
        model.Display(shown);
        for (const std::string& line : model.Adaptations()) shown << line;
        for (const std::string& line : model.Notices()) shown << line;
        return shown.str();
    });
}

TEST_P(OutOfMemory, WhileADocumentIsMendedOrConvertedKeepsNothing)
{
    ExpectSurvives([&] {
        Document document = LoadDocument(File("model.pmml"), {}, {.comments = true});
        return GetParam().isOlder ? ConvertDocument(document, *plugin_).text
                                  : FixDocument(document).text;
    });
}

TEST_P(OutOfMemory, WhileATableIsScoredLeavesTheModelAsItWas)
{
    const LoadedModel model(File("model.pmml"), plugin_);
    ExpectSurvives([&] { return Score(model, {}); });
}

TEST_P(OutOfMemory, WhileATableIsExplainedLeavesTheModelAsItWas)
{
    const LoadedModel model(File("model.pmml"), plugin_);
    ScoringOptions options;
    options.explanations = ExplanationOptions();
    ExpectSurvives([&] { return Score(model, options); });
}

TEST_P(OutOfMemory, WhileCurvesAreDrawnLeavesTheModelAsItWas)
{
    if (!GetParam().hasCurves) return;
    const LoadedModel model(File("model.pmml"), plugin_);
    ScoringOptions options;
    options.curves = true;
    ExpectSurvives([&] { return Score(model, options); });
}

#endif

}  // namespace
}  // namespace MCVelscore_850
