// Bytes as a table, compressed or not, in any dialect: read in several ways, and through whole runs
// over a fixed model, whose output, rejects and failure don't depend on threads and blocks.

#include <optional>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "engine/messages/failure.h"
#include "engine/scoring/scoringsession.h"
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/readingchecks.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850::fuzz {

namespace {

// A file in memory that has a path.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view bytes = {}) : descriptor_(::memfd_create("fuzz", 0))
    {
        Require(descriptor_ >= 0, "a file in memory");
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        Require(written == static_cast<ssize_t>(bytes.size()), "a file in memory with its bytes");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    /// To read from the begin on, however often.
    std::string Input() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    /// To write to, as the file stands.
    std::string Output() const { return "/dev/fd/" + std::to_string(descriptor_); }
    std::string Bytes() const
    {
        std::string bytes(static_cast<size_t>(::lseek(descriptor_, 0, SEEK_END)), '\0');
        const ssize_t count = ::pread(descriptor_, bytes.data(), bytes.size(), 0);
        bytes.resize(count < 0 ? 0 : static_cast<size_t>(count));
        return bytes;
    }

private:
    int descriptor_;
};

// All that a run leaves behind.
struct Outcome {
    std::string rows;
    std::string rejects;
    std::string failure;
    bool operator==(const Outcome&) const = default;
};

Outcome Run(const LoadedModel& model, const MemoryFile& table, ScoringOptions options)
{
    const MemoryFile rows;
    const MemoryFile rejects;
    Outcome outcome;
    try {
        ScoringSession session(model, {table.Input()}, options);
        RowWriter writer(rows.Output());
        std::optional<RowWriter> second;
        if (options.rejects) second.emplace(rejects.Output());
        try {
            session.Run(writer, second ? &*second : nullptr);
            writer.Close();
            if (second) second->Close();
        } catch (...) {
            writer.EndEarly(true);
            if (second) second->EndEarly(true);
            throw;
        }
    } catch (const Failure& failure) {
        outcome.failure = failure.what();
        // The table's path is another one in each process.
        const size_t path = outcome.failure.find(table.Input());
        if (path != std::string::npos) outcome.failure.replace(path, table.Input().size(), "T");
    }
    outcome.rows = rows.Bytes();
    outcome.rejects = rejects.Bytes();
    return outcome;
}

ScoringOptions DrawnOptions(Choices& choices)
{
    ScoringOptions options;
    const uint8_t bits = choices.Byte();
    options.dialect.delimiter = choices.OneOf(",;\t|");
    if (options.dialect.delimiter == '\0') options.dialect.delimiter = ' ';
    options.dialect.decimal = (bits & 1) != 0 && options.dialect.delimiter != ',' ? ',' : '.';
    options.dialect.hasHeader = (bits & 2) == 0;
    options.rejects = (bits & 4) != 0;
    options.output.keepAll = (bits & 8) != 0;
    if ((bits & 16) != 0) options.missingTexts = {"NA", "-"};
    return options;
}

// Whole runs take files, and threads that are started: a share of the inputs has them.
constexpr uint32_t kInRuns = 64;

void CheckRuns(std::string_view bytes, ScoringOptions options)
{
    static const auto model = ModelOf(TestModel().Text());
    Require(model != nullptr, "a model");
    const MemoryFile table(bytes);
    const Outcome expected = Run(*model, table, options);
    options.threads = 3;
    options.blockBytes = 64;
    Require(Run(*model, table, options) == expected,
            "one output, whatever the threads and the size of blocks");
}

}  // namespace

void CheckTable(std::string_view input)
{
    Choices choices(input);
    ScoringOptions options = DrawnOptions(choices);
    const std::string_view bytes = choices.Rest();
    CheckReading(bytes, {.delimiter = options.dialect.delimiter,
                         .decimal = options.dialect.decimal,
                         .hasHeader = options.dialect.hasHeader,
                         .passesTorn = options.rejects});
    if (IsInShare(input, kInRuns)) CheckRuns(bytes, std::move(options));
}

}  // namespace MCVelscore_850::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    MCVelscore_850::fuzz::CheckTable(MCVelscore_850::fuzz::TextOf(bytes, size));
    return 0;
}
