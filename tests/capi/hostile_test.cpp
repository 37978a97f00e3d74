// Arrow structures that are wrong in one place each: every one ends in a code, none in a crash, and
// whatever was handed over is released.

#include <functional>

#include <gtest/gtest.h>

#include "tests/capi/arrowfaults.h"
#include "tests/capi/scored.h"

namespace velscore_tests {
namespace {

TEST(HostileTables, AreMoreThanSixty) { EXPECT_GT(AllFaults().size(), 60U); }

class HostileTable : public testing::TestWithParam<Fault> {
protected:
    void SetUp() override
    {
        const std::string text = TestModel().Text();
        ASSERT_EQ(velscore_open_text(text.data(), text.size(), nullptr, &model_, nullptr), 0);
    }
    void TearDown() override { velscore_close(model_); }

    void ExpectTold(int code, const velscore_error& error)
    {
        EXPECT_EQ(code, GetParam().code);
        EXPECT_EQ(error.code, GetParam().code);
        EXPECT_EQ(error.fault, VELSCORE_FAULT_TABLE);
        ASSERT_NE(error.text, nullptr);
        EXPECT_NE(std::string(error.text).find(GetParam().says), std::string::npos) << error.text;
        EXPECT_NE(error.remedy, nullptr);
    }

    velscore_model* model_ = nullptr;
};

TEST_P(HostileTable, EndsInACodeOfABinding)
{
    Structures structures = SpoiltBy(GetParam());
    const std::string kept = KeptFor(GetParam());
    const char* const names[] = {kept.c_str()};
    velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    options.keep = names;
    options.keep_count = kept.empty() ? 0 : 1;
    velscore_error error = VELSCORE_ERROR_INIT;
    velscore_binding* binding = nullptr;
    int code = velscore_bind(model_, &options, &structures.schema, &binding, &error);
    if (code == 0) {
        ArrowArray out{};
        code = velscore_score_batch(binding, &structures.array, &out, &error);
        EXPECT_EQ(structures.array.release, nullptr);
        EXPECT_EQ(out.release, nullptr);
        // The binding goes on with a sound table.
        ArrowArray sound = ExportArray(Sound());
        if (structures.schema.n_children == 3 && code == kStructure &&
            std::string(structures.Schema(0).format) == "g" &&
            std::string(structures.Schema(1).format) == "u") {
            EXPECT_EQ(velscore_score_batch(binding, &sound, &out, nullptr), 0);
            out.release(&out);
        } else {
            sound.release(&sound);
        }
    } else if (structures.array.release != nullptr) {
        Drop(structures.array);
    }
    ExpectTold(code, error);
    velscore_unbind(binding);
    velscore_error_clear(&error);
    if (structures.schema.release != nullptr) Drop(structures.schema);
    EXPECT_EQ(alive, 0);
}

INSTANTIATE_TEST_SUITE_P(Arrow, HostileTable, testing::ValuesIn(AllFaults()),
                         [](const auto& each) { return each.param.name; });

class HostileStream : public testing::Test {
protected:
    // A stream whose structure a test spoils.
    int Score(const std::function<void(ArrowArrayStream&)>& spoil, std::string* text)
    {
        const auto model = velscore::Model::FromText(TestModel().Text());
        ArrowArrayStream in = StreamOf(Sound());
        spoil(in);
        ArrowArrayStream out{};
        velscore_error error = VELSCORE_ERROR_INIT;
        const int code = velscore_score(model.Get(), nullptr, &in, &out, &error);
        EXPECT_EQ(in.release, nullptr);
        *text = error.text == nullptr ? "" : error.text;
        velscore_error_clear(&error);
        if (out.release != nullptr) out.release(&out);
        return code;
    }
};

TEST_F(HostileStream, EndsInACode)
{
    struct Row {
        const char* says;
        int code;
        std::function<void(ArrowArrayStream&)> spoil;
    };
    const Row rows[] = {
        {"it was released", kStructure, [](auto& s) { s.release(&s); }},
        {"lacks get_schema", kStructure, [](auto& s) { s.get_schema = nullptr; }},
        {"or get_next", kStructure, [](auto& s) { s.get_next = nullptr; }},
        {"out of order", 269352,
         [](auto& s) {
             s.get_schema = [](ArrowArrayStream*, ArrowSchema*) { return 5; };
             s.get_last_error = [](ArrowArrayStream*) -> const char* { return "out of order"; };
         }},
        {"error 5", 269352,
         [](auto& s) {
             s.get_schema = [](ArrowArrayStream*, ArrowSchema*) { return 5; };
             s.get_last_error = nullptr;
         }},
        {"schema was released", kStructure,
         [](auto& s) { s.get_schema = [](ArrowArrayStream*, ArrowSchema*) { return 0; }; }},
    };
    for (const Row& row : rows) {
        std::string text;
        EXPECT_EQ(Score(row.spoil, &text), row.code);
        EXPECT_NE(text.find(row.says), std::string::npos) << text;
        EXPECT_EQ(alive, 0);
    }
}

TEST_F(HostileStream, AFaultInItsMidstIsToldAndStands)
{
    MadeArray bad = Sound();
    bad.children[0].length = 1;
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream in = ExportStream({.schema = Sound(), .tables = {Sound(), bad, Sound()}});
    ArrowArrayStream out = model.Score(in);
    EXPECT_EQ(out.get_last_error(&out), nullptr);
    ArrowArray table{};
    ASSERT_EQ(out.get_next(&out, &table), 0);
    table.release(&table);
    for (int i = 0; i < 2; ++i) {
        EXPECT_NE(out.get_next(&out, &table), 0);
        EXPECT_NE(std::string(out.get_last_error(&out)).find("[269350]"), std::string::npos);
    }
    out.release(&out);
    EXPECT_EQ(alive, 0);
}

TEST_F(HostileStream, AnErrorOfTheProducerIsHandedOn)
{
    std::string error;
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream in =
        ExportStream({.schema = Sound(), .tables = {Sound()}, .error = "the disk is gone"});
    ArrowArrayStream out = model.Score(in);
    EXPECT_EQ(ReadAll(out, &error).rows, 3U);
    EXPECT_NE(error.find("the disk is gone [269352]"), std::string::npos) << error;
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace velscore_tests
