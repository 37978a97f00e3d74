// Tables in Arrow's form through the library for C: a code or scores, every structure released
// once, and the same scores table by table as of a stream.

#include <bit>
#include <string>
#include <vector>

#include "capi/include/velscore.h"
#include "tests/fuzz/arrowdrawing.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850::fuzz {

namespace {

const velscore_model* Model()
{
    static velscore_model* model = [] {
        velscore_model* opened = nullptr;
        const std::string text = TestModel().Text();
        Require(velscore_open_text(text.data(), text.size(), nullptr, &opened, nullptr) == 0,
                "the model opens");
        return opened;
    }();
    return model;
}

struct Tables {
    MadeArray shape;
    std::vector<Spoiling<ArrowSchema>> schemaChanges;
    struct Table {
        MadeArray made;
        std::vector<Spoiling<ArrowArray>> changes;
    };
    std::vector<Table> tables;
};

Tables Draw(Choices& choices)
{
    Tables drawn{DrawShape(choices), DrawSchemaSpoilings(choices), {}};
    for (size_t i = choices.Below(3); i < 3; ++i) {
        MadeArray made = DrawTable(choices, drawn.shape);
        drawn.tables.push_back({std::move(made), DrawArraySpoilings(choices)});
    }
    return drawn;
}

struct Options {
    velscore_score_options score = VELSCORE_SCORE_OPTIONS_INIT;

    explicit Options(Choices& choices)
    {
        static constexpr const char* kNames[] = {"other", "x"};
        static constexpr const char* kMissing[] = {"q", "1"};
        score.keep = kNames;
        score.keep_count = choices.Below(3);
        score.keep_all = choices.Below(8) == 0 ? 1 : 0;
        if (score.keep_all != 0) score.keep_count = 0;
        score.strict = choices.Below(8) == 0 ? 1 : 0;
        if (choices.Below(8) == 0) score.nan = "invalid";
        score.missing = kMissing;
        score.missing_count = choices.Below(3);
    }
};

// An array that came back is there with all that it holds.
void RequireWhole(const ArrowArray* array)
{
    Require(array != nullptr && array->release != nullptr, "no released array comes back");
    for (int64_t i = 0; i < array->n_children; ++i) RequireWhole(array->children[i]);
    if (array->dictionary != nullptr) RequireWhole(array->dictionary);
}

// What came back of the results: kept columns are the giver's, who may have told anything of them.
struct Answers {
    std::vector<velscore_tests::Value> values;  ///< row by row
    int64_t rows = 0;
    bool failed = false;

    void Add(const ArrowSchema& schema, const ArrowArray& table)
    {
        Require(table.n_children == schema.n_children, "a column for each of the schema");
        const int64_t results = ResultCount();
        Require(schema.n_children >= results, "all results");
        RequireWhole(&table);
        for (int64_t i = 0; i < table.n_children; ++i) {
            Require(table.children[i]->length == table.length, "columns as long as their table");
        }
        for (int64_t row = 0; row < table.length; ++row) {
            for (int64_t i = schema.n_children - results; i < schema.n_children; ++i) {
                values.push_back(
                    velscore_tests::ValueOf(*schema.children[i], *table.children[i], row));
            }
        }
        rows += table.length;
    }

private:
    static int64_t ResultCount()
    {
        static const int64_t count = [] {
            ArrowSchema schema{};
            Require(velscore_result_schema(Model(), nullptr, &schema, nullptr) == 0, "results");
            const int64_t children = schema.n_children;
            schema.release(&schema);
            return children;
        }();
        return count;
    }
};

// Of a failure all is told that can be.
bool Succeeded(int code, velscore_error& error)
{
    Require(code == error.code, "the error's code is what was answered");
    Require((code == 0) == (error.text == nullptr), "a failure has a text");
    Require(error.fault != VELSCORE_FAULT_OTHER, "no defect");
    velscore_error_clear(&error);
    return code == 0;
}

Answers ByBinding(const Tables& drawn, const Options& options)
{
    Answers answers;
    velscore_error error = VELSCORE_ERROR_INIT;
    velscore_binding* binding = nullptr;
    ArrowSchema given = ExportSpoilt(drawn.shape, drawn.schemaChanges);
    const int bound = velscore_bind(Model(), &options.score, &given, &binding, &error);
    if (given.release != nullptr) given.release(&given);
    if (!Succeeded(bound, error)) {
        answers.failed = true;
        return answers;
    }
    ArrowSchema schema{};
    Require(velscore_binding_schema(binding, &schema, nullptr) == 0, "a schema of what comes");
    for (const auto& table : drawn.tables) {
        ArrowArray in = ExportSpoilt(table.made, table.changes);
        if (in.release == nullptr) break;  // in a stream that is its end
        ArrowArray out{};
        const int code = velscore_score_batch(binding, &in, &out, &error);
        Require(in.release == nullptr, "the table was taken over");
        if (!Succeeded(code, error)) {
            Require(out.release == nullptr, "nothing comes of a failure");
            answers.failed = true;
            break;
        }
        answers.Add(schema, out);
        out.release(&out);
    }
    schema.release(&schema);
    velscore_unbind(binding);
    return answers;
}

struct GivenStream {
    const Tables& drawn;
    size_t next = 0;
};

ArrowArrayStream StreamOf(const Tables& drawn)
{
    ArrowArrayStream stream{};
    stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
        const auto& own = *static_cast<GivenStream*>(self->private_data);
        *out = ExportSpoilt(own.drawn.shape, own.drawn.schemaChanges);
        return 0;
    };
    stream.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
        auto& own = *static_cast<GivenStream*>(self->private_data);
        *out = {};
        if (own.next == own.drawn.tables.size()) return 0;
        const auto& table = own.drawn.tables[own.next++];
        *out = ExportSpoilt(table.made, table.changes);
        return 0;
    };
    stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
    stream.release = [](ArrowArrayStream* self) {
        delete static_cast<GivenStream*>(self->private_data);
        self->release = nullptr;
        --velscore_tests::alive;
    };
    stream.private_data = new GivenStream{drawn};
    ++velscore_tests::alive;
    return stream;
}

Answers ByStream(const Tables& drawn, const Options& options, decltype(velscore_score)* function,
                 bool readsValues)
{
    Answers answers;
    velscore_error error = VELSCORE_ERROR_INIT;
    ArrowArrayStream in = StreamOf(drawn);
    ArrowArrayStream out{};
    const int code = function(Model(), &options.score, &in, &out, &error);
    Require(in.release == nullptr, "the stream was taken over");
    answers.failed = !Succeeded(code, error);
    if (answers.failed) return answers;
    ArrowSchema schema{};
    Require(out.get_schema(&out, &schema) == 0, "a schema of what comes");
    for (;;) {
        ArrowArray table{};
        answers.failed = out.get_next(&out, &table) != 0;
        if (answers.failed) Require(out.get_last_error(&out) != nullptr, "a failure has a text");
        if (answers.failed || table.release == nullptr) break;
        if (readsValues) answers.Add(schema, table);
        table.release(&table);
    }
    schema.release(&schema);
    out.release(&out);
    return answers;
}

bool AreSame(const velscore_tests::Value& a, const velscore_tests::Value& b)
{
    if (a.text != b.text || a.number.has_value() != b.number.has_value()) return false;
    return !a.number || std::bit_cast<uint64_t>(*a.number) == std::bit_cast<uint64_t>(*b.number);
}

void RequireSame(const Answers& tables, const Answers& stream)
{
    Require(tables.failed == stream.failed, "tables and stream end alike");
    Require(tables.rows == stream.rows, "rows " + std::to_string(tables.rows) + " by tables, " +
                                            std::to_string(stream.rows) + " by stream");
    for (size_t i = 0; i < tables.values.size(); ++i) {
        Require(AreSame(tables.values[i], stream.values[i]),
                "the same value " + std::to_string(i) + " by tables and by stream");
    }
}

}  // namespace

void CheckArrow(Choices choices)
{
    const Options options(choices);
    const Tables drawn = Draw(choices);
    const Answers tables = ByBinding(drawn, options);
    RequireSame(tables, ByStream(drawn, options, velscore_score, true));
    Options plain = options;
    plain.score.keep_count = 0;
    plain.score.keep_all = 0;
    ByStream(drawn, plain, velscore_explain, false);
    Require(velscore_tests::alive == 0, "every structure is released");
}

}  // namespace MCVelscore_850::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    CheckArrow(Choices(TextOf(bytes, size)));
    return 0;
}
