// Memory that runs out, at each place in turn, and models that come and go by thousands.

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "tests/allocations.h"
#include "tests/capi/scored.h"
#include "tests/system/runcommand.h"

namespace velscore_tests {
namespace {

using MCVelscore_850::LiveAllocations;
using MCVelscore_850::MemoryRunsOut;

// One round of what a program does; answers the first code that isn't 0. What it makes, it ends.
using Round = std::function<int(velscore_error*)>;

struct Model {
    ~Model() { velscore_close(own); }
    velscore_model* own = nullptr;
};
struct Binding {
    ~Binding() { velscore_unbind(own); }
    velscore_binding* own = nullptr;
};

int Open(const std::string& text, Model& model, velscore_error* error)
{
    return velscore_open_text(text.data(), text.size(), nullptr, &model.own, error);
}

int ScoreColumns(const Model& model, velscore_error* error)
{
    const char* const names[] = {"x", "sex"};
    const double x[] = {1.0, 2.0, 3.0};
    const char* const sex[] = {"m", "f", "nobody"};
    velscore_column columns[2] = {};
    columns[0].numbers = x;
    columns[1].texts = sex;
    int32_t status[3] = {-1, -1, -1};
    velscore_results results = VELSCORE_RESULTS_INIT;
    results.status = status;
    Binding binding;
    int code = velscore_bind_names(model.own, nullptr, names, 2, &binding.own, error);
    if (code == 0) code = velscore_score_columns(binding.own, columns, 2, 3, &results, error);
    if (code == 0) {
        EXPECT_EQ(status[0], 0);
        EXPECT_NE(status[2], 0);
    }
    return code;
}

#ifndef VELSCORE_THREAD_SANITIZER  // which has an operator new of its own

constexpr int kOutOfMemory = 269410;

// Tables are the tests' own, made before memory runs out.
int ScoreBatch(const Model& model, const ArrowSchema& schema, ArrowArray& table,
               velscore_error* error)
{
    Binding binding;
    int code = velscore_bind(model.own, nullptr, &schema, &binding.own, error);
    ArrowArray out{};
    if (code == 0) code = velscore_score_batch(binding.own, &table, &out, error);
    if (out.release != nullptr) out.release(&out);
    return code;
}

// Round after round memory runs out at a later place, until a round needs less: every place of the
// first hundreds, then ever fewer of them. Each round answers the code of that or none, and leaves
// nothing behind.
void ExpectSurvives(const Round& round)
{
    ASSERT_EQ(round(nullptr), 0);
    for (const auto which : {MemoryRunsOut::For::One, MemoryRunsOut::For::All}) {
        bool hasHappened = true;
        long failures = 0;
        for (long after = 0; hasHappened; after += 1 + after / 50) {
            SCOPED_TRACE("after " + std::to_string(after) + " allocations");
            long live = 0;
            // Twice: what the first makes for as long as the process lives isn't left behind.
            for (int time = 0; time < 2; ++time) {
                velscore_error error = VELSCORE_ERROR_INIT;
                live = LiveAllocations();
                int code = 0;
                {
                    const MemoryRunsOut end(after, which);
                    code = round(&error);
                    hasHappened = end.HasHappened();
                }
                ASSERT_TRUE(code == kOutOfMemory || code == 0) << error.text;
                ASSERT_EQ(error.code, code);
                ASSERT_TRUE(code == 0 || error.fault == VELSCORE_FAULT_OTHER);
                ASSERT_TRUE(hasHappened || code == 0);
                failures += code == 0 ? 0 : 1;
                velscore_error_clear(&error);
            }
            ASSERT_EQ(LiveAllocations(), live);
        }
        EXPECT_GT(failures, 10);
    }
    EXPECT_EQ(round(nullptr), 0);
}

TEST(OutOfMemory, WhileADocumentIsOpenedIsACode)
{
    const std::string text = TestModel().Text();
    ExpectSurvives([&](velscore_error* error) {
        Model model;
        return Open(text, model, error);
    });
}

TEST(OutOfMemory, WhileAFileIsOpenedIsACode)
{
    const std::string path = MCVelscore_850::DataFile("cases/lm-swiss/model.pmml");
    ExpectSurvives([&](velscore_error* error) {
        Model model;
        return velscore_open(path.c_str(), nullptr, &model.own, error);
    });
}

TEST(OutOfMemory, WhileArraysAreBoundAndScoredIsACode)
{
    Model model;
    ASSERT_EQ(Open(TestModel().Text(), model, nullptr), 0);
    ExpectSurvives([&](velscore_error* error) { return ScoreColumns(model, error); });
}

// A column of numbers and one of texts, of one letter, another and six more.
struct LentColumns {
    const char* number = "x";
    const char* text = "sex";
    const char* texts = "mfnobody";
};

// A table that is lent: to export and release it takes no memory.
struct LentTable {
    explicit LentTable(const LentColumns& columns = {}) : texts(columns.texts)
    {
        children[0] = Array(3, numberBuffers, 2);
        children[1] = Array(3, textBuffers, 3);
        schemas[0] = Schema("g", columns.number);
        schemas[1] = Schema("u", columns.text);
        schema = Schema("+s", "");
        schema.n_children = 2;
        schema.children = schemaPointers;
        table = Array(3, none, 1);
        table.n_children = 2;
        table.children = pointers;
    }
    static ArrowArray Array(int64_t rows, const void** buffers, int64_t count)
    {
        ArrowArray array{};
        array.length = rows;
        array.n_buffers = count;
        array.buffers = buffers;
        array.release = [](ArrowArray* own) { own->release = nullptr; };
        return array;
    }
    static ArrowSchema Schema(const char* format, const char* name)
    {
        ArrowSchema schema{};
        schema.format = format;
        schema.name = name;
        schema.release = [](ArrowSchema* own) { own->release = nullptr; };
        return schema;
    }

    const double numbers[3] = {1.0, 2.0, 3.0};
    const int32_t offsets[4] = {0, 1, 2, 8};
    const char* const texts;
    const void* none[1] = {nullptr};
    const void* numberBuffers[2] = {nullptr, numbers};
    const void* textBuffers[3] = {nullptr, offsets, texts};
    ArrowArray children[2];
    ArrowArray* pointers[2] = {&children[0], &children[1]};
    ArrowSchema schemas[2];
    ArrowSchema* schemaPointers[2] = {&schemas[0], &schemas[1]};
    ArrowSchema schema;
    ArrowArray table;
};

TEST(OutOfMemory, WhileTablesAreBoundAndScoredIsACode)
{
    Model model;
    ASSERT_EQ(Open(TestModel().Text(), model, nullptr), 0);
    ExpectSurvives([&](velscore_error* error) {
        LentTable lent;
        const int code = ScoreBatch(model, lent.schema, lent.table, error);
        if (lent.table.release != nullptr) lent.table.release(&lent.table);
        return code;
    });
}

// A stream's function: scores, explanations, curves.
using StreamFunction = decltype(velscore_score)*;

// The stream of a table through one; what get_next of it fails for is told as a code. Counts the
// lines that come out.
int ReadThrough(StreamFunction function, const Model& model, const LentColumns& columns,
                int64_t& lines, velscore_error* error)
{
    struct Lent {
        LentTable table;
        bool given = false;
    } lent{LentTable(columns)};
    ArrowArrayStream in{};
    in.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
        *out = static_cast<Lent*>(self->private_data)->table.schema;
        return 0;
    };
    in.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
        auto& own = *static_cast<Lent*>(self->private_data);
        *out = own.given ? ArrowArray{} : own.table.table;
        own.given = true;
        return 0;
    };
    in.release = [](ArrowArrayStream* self) { self->release = nullptr; };
    in.private_data = &lent;
    ArrowArrayStream out{};
    const int code = function(model.own, nullptr, &in, &out, error);
    if (code != 0) return code;
    ArrowSchema schema{};
    int failed = out.get_schema(&out, &schema);
    if (schema.release != nullptr) schema.release(&schema);
    for (ArrowArray table{}; failed == 0;) {
        failed = out.get_next(&out, &table);
        if (failed != 0 || table.release == nullptr) break;
        lines += table.length;
        table.release(&table);
    }
    EXPECT_TRUE(failed == 0 || failed == ENOMEM) << failed;
    out.release(&out);
    if (failed == 0) return 0;
    if (error != nullptr) {
        error->code = kOutOfMemory;
        error->fault = VELSCORE_FAULT_OTHER;
    }
    return kOutOfMemory;
}

TEST(OutOfMemory, WhileAStreamIsReadIsAnErrorOfIt)
{
    Model model;
    ASSERT_EQ(Open(TestModel().Text(), model, nullptr), 0);
    int64_t lines = 0;
    for (const StreamFunction function : {velscore_score, velscore_explain}) {
        ExpectSurvives(
            [&](velscore_error* error) { return ReadThrough(function, model, {}, lines, error); });
    }
}

// Strata of two and of three steps; the third row is of neither, and has one line.
TEST(OutOfMemory, WhileCurvesAreReadIsAnErrorOfTheStream)
{
    const std::string path = MCVelscore_850::DataFile("published/cox-strata.pmml");
    Model model;
    ASSERT_EQ(velscore_open(path.c_str(), nullptr, &model.own, nullptr), 0);
    const LentColumns columns{"dose", "ward", "12nobody"};
    int64_t lines = 0;
    ASSERT_EQ(ReadThrough(velscore_curve, model, columns, lines, nullptr), 0);
    EXPECT_EQ(lines, 2 + 3 + 1);
    ExpectSurvives([&](velscore_error* error) {
        return ReadThrough(velscore_curve, model, columns, lines, error);
    });
}

// A text that a function gives; the caller frees it.
using TextFunction = std::function<int(char**, velscore_error*)>;

void ExpectTextSurvives(const TextFunction& function)
{
    char* expected = nullptr;
    ASSERT_EQ(function(&expected, nullptr), 0);
    ExpectSurvives([&](velscore_error* error) {
        char* text = nullptr;
        const int code = function(&text, error);
        EXPECT_EQ(text != nullptr, code == 0);
        if (text != nullptr) {
            EXPECT_STREQ(text, expected);
        }
        velscore_free(text);
        return code;
    });
    velscore_free(expected);
}

TEST(OutOfMemory, WhileAModelIsDescribedIsACode)
{
    for (const char* name : {"lm-swiss", "cox-veteran-strata"}) {
        const std::string path =
            MCVelscore_850::DataFile("cases/" + std::string(name) + "/model.pmml");
        Model model;
        ASSERT_EQ(velscore_open(path.c_str(), nullptr, &model.own, nullptr), 0);
        ExpectTextSurvives([&](char** text, velscore_error* error) {
            return velscore_describe(model.own, text, error);
        });
    }
}

TEST(OutOfMemory, WhileADocumentIsCheckedIsACode)
{
    const std::string sound = TestModel().Text();
    for (const std::string& document : {sound, FaultyText(), sound.substr(0, 200)}) {
        ExpectTextSurvives([&](char** text, velscore_error* error) {
            return velscore_check_text(document.data(), document.size(), nullptr, text, error);
        });
    }
}

TEST(OutOfMemory, WhileRecordsAreVerifiedIsACode)
{
    const std::string path = MCVelscore_850::DataFile("cases/glz-verification-birthwt/model.pmml");
    Model model;
    ASSERT_EQ(velscore_open(path.c_str(), nullptr, &model.own, nullptr), 0);
    ExpectTextSurvives([&](char** text, velscore_error* error) {
        return velscore_verify(model.own, text, error);
    });
}

#endif

// VELSCORE_TEST_OPENS models by eight threads, which open, score and close; nothing of them is
// left.
TEST(Threads, EightOpenScoreAndCloseModelsOfTheirOwn)
{
    const char* const wanted = std::getenv("VELSCORE_TEST_OPENS");
    const long opens = wanted == nullptr ? 200 : std::atol(wanted);
    const std::string text = TestModel().Text();
    const std::string faulty = FaultyText();
    std::atomic<long> next{0};
    std::atomic<long> wrong{0};
    const auto work = [&] {
        for (long i = next++; i < opens; i = next++) {
            Model model;
            const bool isFaulty = i % 10 == 9;
            if ((Open(isFaulty ? faulty : text, model, nullptr) != 0) != isFaulty) ++wrong;
            if (!isFaulty && ScoreColumns(model, nullptr) != 0) ++wrong;
        }
    };
    work();
    next = 0;
    const long live = LiveAllocations();
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) threads.emplace_back(work);
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(LiveAllocations(), live);
}

}  // namespace
}  // namespace velscore_tests
