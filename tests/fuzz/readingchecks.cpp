#include "tests/fuzz/readingchecks.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "engine/messages/failure.h"
#include "engine/tables/blocksplitter.h"
#include "engine/tables/plainnumber.h"
#include "engine/tables/recordcheck.h"
#include "engine/tables/tablesource.h"
#include "host/messages/messages.h"
#include "tests/engine/textsource.h"
#include "tests/fuzz/fuzztarget.h"

namespace MCVelscore_850::fuzz {

namespace {

// How a table comes and is cut.
struct Cutting {
    size_t piece;  ///< the most bytes that the source gives at once
    BlockReader::BlockSize block;
    size_t most;  ///< rows that are split at once
};

constexpr Cutting kWhole{
    size_t{1} << 20, {size_t{1} << 12, std::numeric_limits<int64_t>::max()}, 64};

constexpr Cutting kCuttings[] = {
    {1, {1, 1}, 1},     {1, {64, 1000}, 64}, {2, {7, 2}, 3},      {3, {31, 1000}, 2},
    {5000, {1, 1}, 64}, {40, {32, 1000}, 1}, {5000, {33, 3}, 64}, {5000, {64, 1000}, 64},
};

// A few bytes may unpack to many rows: so much of what is told of them is enough.
constexpr size_t kMostTold = size_t{1} << 14;

// Where a block ended - its reader may be left there, and another one go on - and how much was told
// by then.
struct BlockEnd {
    uint64_t offset;
    int64_t row;
    size_t told;
};

// Everything that a reading tells, in a form that is quickly made and compared.
class Told {
public:
    void Add(std::string_view text)
    {
        Add(text.size());
        text_.append(text);
    }
    void Add(uint64_t number)
    {
        text_.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    void Add(const RawRow& raw)
    {
        Add(static_cast<uint64_t>(raw.number));
        Add(raw.offset);
        Add(raw.text);
    }
    size_t Size() const { return text_.size(); }
    std::string_view From(size_t place) const { return std::string_view(text_).substr(place); }

private:
    std::string text_;
};

void CheckNumber(std::string_view field, char decimal)
{
    double inRoom = 0.0;
    double number = 0.0;
    const bool isRead = ReadPlainNumberInRoom(field, decimal, inRoom);
    Require(ReadPlainNumber(field, decimal, number) == isRead, "a number read in room and without");
    if (!isRead) return;
    std::string text(field);
    std::replace(text.begin(), text.end(), decimal, '.');
    double expected = 0.0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), expected);
    Require(fault == std::errc() && end == text.data() + text.size(), "a number that is one");
    const auto bits = [](double x) { return std::bit_cast<uint64_t>(x); };
    Require(bits(inRoom) == bits(expected) && bits(number) == bits(expected),
            "a number to its last bit");
}

// Of how many tables one is read on from the end of a block too.
constexpr uint32_t kInGoingOn = 4;

class Reading {
public:
    Reading(std::string_view table, const RecordForm& form, const Cutting& cutting)
        : source_(std::make_unique<TextSource>(std::string(table), cutting.piece)),
          form_(form),
          cutting_(cutting)
    {}

    /// From the header on, or from a place on, to the end. `careful`: fields are looked at too.
    void Run(const BlockEnd* from, bool careful)
    {
        try {
            const auto reader = MakeBlockReader(source_, form_, cutting_.block);
            for (const std::string& name : reader->Header()) told.Add(name);
            headerEnd = told.Size();
            if (from != nullptr) reader->GoTo(from->offset, from->row);
            if (ReadBlocks(*reader, careful)) told.Add(static_cast<uint64_t>(reader->Rows()));
            rowsEnd = told.Size();
        } catch (const Failure& failure) {
            rowsEnd = told.Size();
            code = failure.Code();
            told.Add(failure.what());
        }
    }

    Told told;
    size_t headerEnd = 0;
    size_t rowsEnd = 0;  ///< in what is told: the failure is behind it
    int code = 0;        ///< of the failure that ended the reading
    std::vector<BlockEnd> blockEnds;

private:
    // False where a torn row ends the table, or enough was told.
    bool ReadBlocks(BlockReader& reader, bool careful)
    {
        if (told.Size() > kMostTold) return false;  // a header of thousands of columns
        std::vector<ColumnUse> uses(reader.Header().size());
        for (size_t i = 0; i < uses.size(); ++i) uses[i] = {i % 4 != 3, i % 2 == 0};
        const auto splitter = MakeBlockSplitter(
            {reader.Form(), reader.Header(), form_.delimiter, form_.decimal, std::move(uses)});
        for (RecordBlock block; reader.Next(block);) {
            splitter->Begin(block);
            if (form_.passesTorn) splitter->CheckEncoding();
            if (!ReadRows(*splitter, reader, careful)) return false;
            blockEnds.push_back({block.offset + block.size, block.nextRow, told.Size()});
        }
        return true;
    }

    bool ReadRows(BlockSplitter& splitter, const BlockReader& reader, bool careful)
    {
        const size_t columns = reader.Header().size();
        for (;;) {
            std::span<const std::string_view> fields;
            const size_t rows = splitter.NextRows(cutting_.most, fields);
            for (size_t row = 0; row < rows; ++row) {
                const size_t first = row * columns;
                const auto own = fields.subspan(first, columns);
                told.Add(splitter.Raw(row));
                for (const std::string_view field : own) told.Add(field);
                if (const auto values = splitter.JsonValues(); !values.empty()) {
                    for (const std::string_view value : values.subspan(first, columns)) {
                        told.Add(value);
                    }
                }
                if (careful) CheckRow(splitter.Raw(row), own, reader.Form());
            }
            if (told.Size() > kMostTold) return false;
            if (rows > 0) continue;
            const TornRow* torn = splitter.Torn();
            if (torn == nullptr) return true;
            told.Add(static_cast<uint64_t>(torn->raw.number));
            told.Add(static_cast<uint64_t>(torn->fault.code));
            told.Add(torn->fault.found);
            told.Add(torn->fault.detail);
            // Nobody sees the text of a row that ends the table, and it may end with its block.
            if (!form_.passesTorn) return false;
            told.Add(torn->raw);
            splitter.PassTorn();
        }
    }

    void CheckRow(const RawRow& raw, std::span<const std::string_view> fields, TableForm form) const
    {
        for (const std::string_view field : fields) CheckNumber(field, form_.decimal);
        if (form != TableForm::Csv) return;
        Require(CheckRecord(raw.text, form_.delimiter, fields.size()).code == 0,
                "a sound record, to careful reading too");
        std::vector<std::string> careful = FieldsOf(raw.text, form_.delimiter);
        if (careful.empty()) careful.emplace_back();  // a blank line of a table of one column
        Require(std::equal(fields.begin(), fields.end(), careful.begin(), careful.end()),
                "the fields of careful reading");
    }

    TableSource source_;
    const RecordForm& form_;
    const Cutting& cutting_;
};

// What two readings told from some place on has to be equal; where it parts is told, as far as it
// is text. Of packed data that is damaged the library keeps back the last bytes that came with the
// fault: there one reading may have some rows more.
void RequireSame(const Reading& a, size_t fromA, const Reading& b, size_t fromB,
                 const std::string& what)
{
    std::string_view one = a.told.From(fromA);
    std::string_view other = b.told.From(fromB);
    const auto isPart = [](const Reading& reading) {
        return reading.code == kPackedDamaged || reading.told.Size() > kMostTold;
    };
    if (isPart(a) || isPart(b)) {
        const size_t rows = std::min(a.rowsEnd - fromA, b.rowsEnd - fromB);
        one = one.substr(0, rows);
        other = other.substr(0, rows);
    }
    if (one == other) return;
    const auto parting = std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first;
    const auto shown = [&](std::string_view told) {
        std::string text(told.substr(std::min(told.size(), size_t(parting - one.begin())), 300));
        std::replace_if(
            text.begin(), text.end(), [](char c) { return c < ' '; }, '.');
        return text;
    };
    Require(false, what + ", not\n" + shown(one) + "\nand\n" + shown(other));
}

}  // namespace

void CheckReading(std::string_view table, const RecordForm& form)
{
    Reading whole(table, form, kWhole);
    whole.Run(nullptr, true);
    const Cutting& cutting = kCuttings[HashOf(table) % std::size(kCuttings)];
    Reading cut(table, form, cutting);
    cut.Run(nullptr, false);
    RequireSame(cut, 0, whole, 0, "the same rows and failure, however a table comes and is cut");
    if (cut.blockEnds.empty() || !IsInShare(table, kInGoingOn, 2)) return;
    const BlockEnd& end = cut.blockEnds[HashOf(table, 1) % cut.blockEnds.size()];
    Reading rest(table, form, kWhole);
    rest.Run(&end, false);
    RequireSame(rest, rest.headerEnd, cut, end.told,
                "the same rows and failure from the end of a block on");
}

}  // namespace MCVelscore_850::fuzz
