#include "engine/tables/tablesource.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <random>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include "engine/tables/rowreader.h"
#include "host/messages/messages.h"
#include "tests/engine/packed.h"
#include "tests/engine/textsource.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

TEST(ByteSource, ThatIsNoFileHasNoDescriptor)
{
    const TextSource text("x");
    const ByteSource& source = text;
    EXPECT_EQ(source.Descriptor(), -1);
}

constexpr size_t kWhole = size_t{1} << 16;

struct Reading {
    std::string bytes;
    int code = 0;  // of the failure behind the bytes
    std::string message;
    std::string remedy;
};

Reading ReadAll(ByteSource& source, size_t part = kWhole)
{
    Reading reading;
    std::string buffer(part, '\0');
    try {
        while (const size_t count = source.Read(buffer.data(), part)) {
            reading.bytes.append(buffer, 0, count);
        }
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Cases);
        reading.code = failure.Code();
        reading.message = failure.what();
        reading.remedy = failure.Remedy();
    }
    return reading;
}

std::unique_ptr<ByteSource> TableOf(const std::string& file, size_t piece = kWhole)
{
    return std::make_unique<TableSource>(std::make_unique<TextSource>(file, piece));
}

Reading ReadAll(const std::string& file, size_t piece = kWhole, size_t part = kWhole)
{
    return ReadAll(*TableOf(file, piece), part);
}

// A table of several windows of gzip and blocks of zstd.
std::string LongTable()
{
    std::mt19937 random(20261122);
    std::string text = "a,b\n";
    while (text.size() < 400000) {
        text += std::to_string(random() % 100000) + "," + std::to_string(random() % 7) + "\n";
    }
    return text;
}

const std::string kTable = "x,sex\n1.5,f\n2.25,m\n1.5,f\n1.5,f\n";

struct Sample {
    const char* name;
    std::string file;
    std::string table;
};

std::vector<Sample> Samples()
{
    const std::string zeros(600, '\0');
    const std::string text = LongTable();
    const std::string none = PackedByGzip("");
    return {
        {"gzip", PackedByGzip(text), text},
        {"gzip, stored", PackedByGzip(text, 0), text},
        {"zstd", PackedByZstd(text), text},
        {"zstd, level 19", PackedByZstd(text, 19), text},
        {"zstd without a checksum", PackedByZstd(text, 3, false), text},
        {"gzip of nothing", none, ""},
        {"zstd of nothing", PackedByZstd(""), ""},
        {"members", PackedByGzip("a,b\n") + none + PackedByGzip("1,2\n") + none, "a,b\n1,2\n"},
        {"frames", PackedByZstd("a,b\n") + PackedByZstd("") + PackedByZstd("1,2\n"), "a,b\n1,2\n"},
        {"zeros behind gzip", PackedByGzip(kTable) + zeros, kTable},
        {"skippable first", SkippableFrame("index") + PackedByZstd(kTable), kTable},
        {"skippable between",
         PackedByZstd("a\n") + SkippableFrame("", 15) + SkippableFrame(zeros.substr(0, 100), 7) +
             PackedByZstd("1\n") + SkippableFrame("end", 3),
         "a\n1\n"},
        {"skippable alone", SkippableFrame("index"), ""},
        {"plain", text, text},
        {"empty", "", ""},
        {"one letter", "a", "a"},
        {"like zstd", "(", "("},
        {"like a skippable frame", "P*M", "P*M"},
        {"not quite gzip", "\x1F,b\n", "\x1F,b\n"},
        {"not quite zstd", "\x28\xB5\x2F,b\n", "\x28\xB5\x2F,b\n"},
    };
}

TEST(TableSource, GivesTheTableInPiecesOfAnySize)
{
    for (const Sample& sample : Samples()) {
        for (const size_t piece : {size_t{1}, size_t{3}, size_t{1000}, kWhole}) {
            for (const size_t part : {size_t{1}, size_t{7}, kWhole}) {
                const Reading reading = ReadAll(sample.file, piece, part);
                EXPECT_EQ(reading.code, 0) << sample.name << ": " << reading.message;
                EXPECT_TRUE(reading.bytes == sample.table)
                    << sample.name << ", pieces of " << piece << ", parts of " << part;
            }
        }
    }
}

// Cut anywhere, a compressed table is refused behind the bytes before the cut. Where too little is
// left to tell a compression by, it is a text that no model can use.
TEST(TableSource, IsRefusedWhereverItIsCut)
{
    const std::pair<std::string, size_t> kFiles[] = {{PackedByGzip(kTable), 1},
                                                     {PackedByZstd(kTable), 2},
                                                     {PackedByZstd(kTable, 3, false), 2},
                                                     {SkippableFrame("abc"), 4}};
    for (const auto& [file, fewest] : kFiles) {
        for (size_t size = 0; size < file.size(); ++size) {
            for (const size_t piece : {size_t{1}, kWhole}) {
                const Reading reading = ReadAll(file.substr(0, size), piece);
                if (size < fewest) {
                    EXPECT_EQ(reading.code, 0);
                    EXPECT_EQ(reading.bytes, file.substr(0, size));
                    continue;
                }
                EXPECT_EQ(reading.code, kPackedCut) << size << ": " << reading.message;
                EXPECT_TRUE(kTable.starts_with(reading.bytes)) << size;
                EXPECT_NE(reading.message.find("cases.csv"), std::string::npos);
                EXPECT_NE(reading.message.find(" to " + std::to_string(reading.bytes.size()) + " "),
                          std::string::npos)
                    << reading.message;
            }
        }
    }
}

TEST(TableSource, CutBehindAMemberIsATableAndCutInsideIsNone)
{
    for (const auto& pack : {+[](const std::string& text) { return PackedByGzip(text); },
                             +[](const std::string& text) { return PackedByZstd(text); }}) {
        const std::string first = pack(kTable);
        const std::string file = first + pack(kTable);
        for (size_t size = first.size(); size <= file.size(); ++size) {
            const Reading reading = ReadAll(file.substr(0, size));
            const bool whole = size == first.size() || size == file.size();
            EXPECT_EQ(reading.code, whole ? 0 : kPackedCut) << size;
            EXPECT_TRUE(reading.bytes.starts_with(kTable)) << size;
        }
    }
}

// With one bit wrong anywhere the table is refused, or it is the same: bits of the headers that
// mean nothing here. With a wrong bit in its first bytes it isn't compressed.
TEST(TableSource, IsNeverAnotherTableWithOneBitWrong)
{
    const std::pair<std::string, size_t> kFiles[] = {{PackedByGzip(kTable), kGzipStart.size()},
                                                     {PackedByZstd(kTable), kZstdStart.size()}};
    for (const auto& [file, start] : kFiles) {
        size_t refused = 0;
        for (size_t bit = 0; bit < 8 * file.size(); ++bit) {
            std::string flipped = file;
            flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
            for (const size_t piece : {size_t{1}, kWhole}) {
                const Reading reading = ReadAll(flipped, piece);
                if (bit / 8 < start) {
                    EXPECT_EQ(reading.bytes, flipped);
                } else if (reading.code == 0) {
                    EXPECT_EQ(reading.bytes, kTable) << bit;
                }
                if (reading.code != 0) ++refused;
            }
        }
        // All but the first bytes, and in gzip the time and other bytes that tell of the origin.
        EXPECT_GE(refused, 2 * 8 * (file.size() - start - 8));
    }
}

TEST(TableSource, DeliversWhatIsBeforeTheFaultFirst)
{
    const std::string text = LongTable();
    const auto spoilt = [](std::string file, size_t fromEnd) {
        file[file.size() - fromEnd] = static_cast<char>(~file[file.size() - fromEnd]);
        return file;
    };
    for (const std::string& file : {spoilt(PackedByGzip(text), 8),     // RFC 1952: the check value
                                    spoilt(PackedByGzip(text), 1),     // the size
                                    spoilt(PackedByZstd(text), 1)}) {  // the checksum
        const auto table = TableOf(file);
        const Reading reading = ReadAll(*table);
        EXPECT_TRUE(reading.bytes == text);
        EXPECT_EQ(reading.code, kPackedDamaged);
        EXPECT_NE(reading.message.find(" to " + std::to_string(text.size()) + " bytes"),
                  std::string::npos)
            << reading.message;
        EXPECT_EQ(ReadAll(*table).code, kPackedDamaged);  // it stands
    }
    // RFC 8878: a frame with a window of 1 KiB, then raw blocks of 5 bytes, and one of the reserved
    // type.
    const std::string blocks = std::string("\x28\xB5\x2F\xFD\0\0", 6) +
                               std::string("\x28\0\0a,b\n1", 8) + std::string("\x28\0\0,2\n3,", 8) +
                               std::string("\x2E\0\0", 3);
    for (const size_t piece : {size_t{1}, kWhole}) {
        const Reading reading = ReadAll(blocks, piece);
        EXPECT_EQ(reading.bytes, "a,b\n1,2\n3,");
        EXPECT_EQ(reading.code, kPackedDamaged);
    }
}

TEST(TableSource, DeliversABlockThatNeedsSeveralReadsBeforeTheFault)
{
    // RFC 8878: a frame with a window of 128 KiB, a block of 100,000 times x, and one of the
    // reserved type.
    const std::string file = std::string("\x28\xB5\x2F\xFD\0\x38", 6) +
                             std::string("\x02\x35\x0Cx", 4) + std::string("\x06\0\0", 3);
    for (const size_t part : {size_t{1000}, kWhole}) {
        const Reading reading = ReadAll(file, kWhole, part);
        EXPECT_TRUE(reading.bytes == std::string(100000, 'x')) << reading.bytes.size();
        EXPECT_EQ(reading.code, kPackedDamaged);
    }
}

TEST(TableSource, RefusesWhatIsBehindTheCompressedTable)
{
    const std::string gzip = PackedByGzip(kTable);
    const std::string zstd = PackedByZstd(kTable);
    const std::string zeros(3, '\0');
    for (const std::string& file :
         {gzip + "a", gzip + "a longer text", gzip + "\x1F,", gzip + zeros + "a",
          gzip + zeros + gzip, gzip + zstd, zstd + gzip, zstd + zeros + zeros, zstd + "a",
          zstd + "a longer text", SkippableFrame("") + kTable, zstd + zstd + "text",
          gzip + gzip + "text"}) {
        for (const size_t piece : {size_t{1}, kWhole}) {
            const Reading reading = ReadAll(file, piece);
            EXPECT_EQ(reading.code, kPackedRest) << reading.message;
            EXPECT_EQ(reading.bytes.size() % kTable.size(), 0u);
            EXPECT_EQ(reading.bytes.empty(), file.front() == 'P');
        }
    }
}

// RFC 8878, 3.1.1.1: no flags, then the window: 2 to the power of 10 and the five upper bits. Then
// one last empty raw block.
TEST(TableSource, RefusesWindowsAbove128MiB)
{
    const std::string begin("\x28\xB5\x2F\xFD\0", 5);
    const std::string block("\x01\0\0", 3);
    const auto window = [](int log, int eighths) {
        return std::string(1, static_cast<char>((log - 10) * 8 + eighths));
    };
    EXPECT_EQ(ReadAll(begin + window(27, 0) + block).code, 0);
    for (const std::string& tooLarge : {window(27, 1), window(28, 0), window(31, 0)}) {
        const Reading reading = ReadAll(begin + tooLarge + block);
        EXPECT_EQ(reading.code, kPackedWindow) << reading.message;
        EXPECT_NE(reading.message.find("128 MiB"), std::string::npos) << reading.message;
        EXPECT_NE(reading.remedy.find("--long=31"), std::string::npos) << reading.remedy;
    }
}

TEST(TableSource, RefusesAFrameThatNeedsADictionary)
{
    // RFC 8878: the flag 1 says that a byte with the dictionary's number follows the window.
    const Reading reading = ReadAll(std::string("\x28\xB5\x2F\xFD\x01\0\x2A\x01\0\0", 10));
    EXPECT_EQ(reading.code, kPackedDictionary) << reading.message;
}

TEST(TableSource, CompressedTwiceIsRefusedByTheReader)
{
    const auto gzip = [](const std::string& text) { return PackedByGzip(text); };
    const auto zstd = [](const std::string& text) { return PackedByZstd(text); };
    const std::pair<std::string, const char*> kFiles[] = {{gzip(gzip(kTable)), "gzip"},
                                                          {gzip(zstd(kTable)), "zstd"},
                                                          {zstd(zstd(kTable)), "zstd"},
                                                          {zstd(gzip(kTable)), "gzip"}};
    for (const auto& [file, inside] : kFiles) {
        const auto table = TableOf(file, 1);
        try {
            RowReader reader(*table);
            FAIL() << "taken as a table";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kNoTextTable);
            EXPECT_NE(std::string(failure.what()).find("more than once"), std::string::npos);
            EXPECT_NE(failure.Remedy().find(inside), std::string::npos) << failure.Remedy();
        }
    }
}

TEST(TableSource, NothingCompressedHasNoHeader)
{
    for (const std::string& file : {PackedByGzip(""), PackedByZstd(""), std::string()}) {
        const auto table = TableOf(file);
        try {
            RowReader reader(*table);
            FAIL() << "taken as a table";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kNoHeader);
        }
    }
}

// What the process holds of malloc's memory, the libraries' share included. A sanitizer's malloc
// tells nothing.
size_t MemoryHeld()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(TableSource, OneGibibyteOfZerosTakesLittleMemory)
{
    constexpr size_t kGibibyte = size_t{1} << 30;
    constexpr size_t kMember = size_t{1} << 26;
    const std::string zeros(kMember, '\0');
    const std::pair<std::string, size_t> kBombs[] = {{PackedByGzip(zeros, 1), size_t{1} << 18},
                                                     {PackedByZstd(zeros), size_t{1} << 23}};
    for (const auto& [member, most] : kBombs) {
        std::string file;
        for (size_t i = 0; i < kGibibyte / kMember; ++i) file += member;
        const size_t before = MemoryHeld();
        auto source = std::make_unique<TextSource>(file);
        const size_t own = file.size();
        TableSource table(std::move(source));
        static char buffer[kWhole];
        size_t size = 0;
        size_t held = 0;
        while (const size_t count = table.Read(buffer, sizeof buffer)) {
            size += count;
            if ((size & (kMember - 1)) < kWhole) held = std::max(held, MemoryHeld());
        }
        EXPECT_EQ(size, kGibibyte);
        EXPECT_LT(held, before + own + most);
    }
}

// A pipe whose reading end is opened as a table.
class TableFromAPipe : public testing::Test {
protected:
    TableFromAPipe()
    {
        if (::pipe2(ends_, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        table_ = OpenTable("/proc/self/fd/" + std::to_string(ends_[0]), &stop_);
    }
    ~TableFromAPipe() override
    {
        ::close(ends_[0]);
        CloseInput();
    }
    void Write(const std::string& bytes) const
    {
        ASSERT_EQ(::write(ends_[1], bytes.data(), bytes.size()), std::ssize(bytes));
    }
    void CloseInput()
    {
        if (ends_[1] >= 0) ::close(std::exchange(ends_[1], -1));
    }
    // One read, in another thread: a read that waits where none should must not stop the tests.
    std::string Read()
    {
        auto reading = std::async(std::launch::async, [this] {
            std::string bytes(1000, '\0');
            bytes.resize(table_->Read(bytes.data(), bytes.size()));
            return bytes;
        });
        if (reading.wait_for(std::chrono::seconds(20)) == std::future_status::ready) {
            return reading.get();
        }
        CloseInput();
        return "waited; " + reading.get();
    }

    StopFlag stop_{false};
    int ends_[2] = {-1, -1};
    std::unique_ptr<ByteSource> table_;
};

TEST_F(TableFromAPipe, WaitsForNoMoreThanTellsTheForm)
{
    Write("a");
    EXPECT_EQ(Read(), "a");
    Write("\x1F");  // behind the start nothing is told by it
    EXPECT_EQ(Read(), "\x1F");
    CloseInput();
    EXPECT_EQ(Read(), "");
}

TEST_F(TableFromAPipe, WaitsWhileItMayBeCompressed)
{
    auto writing = std::async(std::launch::async, [this] {
        for (const char byte : std::string(kZstdStart.substr(0, 3)) + ",") {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            Write(std::string(1, byte));
        }
    });
    EXPECT_EQ(Read(), "\x28\xB5\x2F,");
}

TEST_F(TableFromAPipe, WaitsForWhatUnpacksToAByte)
{
    // A zstd frame with two raw blocks of one byte each.
    Write(std::string("\x28\xB5\x2F\xFD\0\0", 6));
    Write(std::string("\x08\0\0", 3));
    Write("a" + std::string("\x09\0\0", 3));
    EXPECT_EQ(Read(), "a");
    Write("\n");
    EXPECT_EQ(Read(), "\n");
    CloseInput();
    EXPECT_EQ(Read(), "");
    EXPECT_EQ(table_->Consumed(), 14u);
    EXPECT_EQ(table_->Size(), 0u);
}

TEST_F(TableFromAPipe, WhatIsUnpackedNeedsNoWaiting)
{
    const std::string text = LongTable().substr(0, 50000);
    Write(PackedByGzip(text).substr(0, 20000));
    std::string bytes;
    while (bytes.size() <= 20000) bytes += Read();
    EXPECT_TRUE(text.starts_with(bytes));
}

// A few bytes that unpack to far more than one read takes.
TEST_F(TableFromAPipe, GivesAllThatFewBytesUnpackTo)
{
    const std::string text(5000, 'a');
    const std::string gzip = PackedByGzip(text);
    Write(gzip.substr(0, gzip.size() - 8));  // without the check value and the size
    for (int i = 0; i < 5; ++i) EXPECT_EQ(Read(), std::string(1000, 'a'));
}

TEST_F(TableFromAPipe, GivesAllThatOneBlockOfZstdUnpacksTo)
{
    // RFC 8878: a window of 8 KiB, then a block of 5000 times the same byte, and not the last one:
    // 5000 * 8 + 2 is 0x9C42.
    Write(std::string("\x28\xB5\x2F\xFD\0\x18\x42\x9C\0a", 10));
    for (int i = 0; i < 5; ++i) EXPECT_EQ(Read(), std::string(1000, 'a'));
}

TEST_F(TableFromAPipe, StopInAnotherThreadEndsAReadThatWaits)
{
    const std::string packed = PackedByGzip(kTable);
    Write(packed.substr(0, packed.size() - 1));
    EXPECT_EQ(Read(), kTable);
    auto stopping = std::async(std::launch::async, [this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stop_ = true;
    });
    EXPECT_EQ(Read(), "");  // the end, and no cut table
}

TEST(TableSource, PassesOverBytesOfTheTableNotOfTheFile)
{
    const std::string text = LongTable();
    for (const std::string& file : {text, PackedByGzip(text), PackedByZstd(text)}) {
        for (const size_t count : {size_t{0}, size_t{5}, size_t{300000}, text.size() + 1}) {
            const auto table = TableOf(file);
            table->Skip(count);
            EXPECT_TRUE(ReadAll(*table).bytes == text.substr(std::min(count, text.size())))
                << file.size() << ", " << count;
        }
    }
}

TEST(OpenTable, TellsTheFileThatItReads)
{
    const ScratchFolder folder;
    const std::string file = PackedByGzip(LongTable());
    const std::string path = folder.Write("cases.csv", file);
    const auto table = OpenTable(path);
    EXPECT_EQ(table->Name(), path);
    EXPECT_EQ(table->Size(), file.size());
    EXPECT_EQ(table->Consumed(), 0u);
    EXPECT_TRUE(IsSameFile(table->Descriptor(), path));
    char byte = 0;
    EXPECT_EQ(table->Read(&byte, 1), 1u);
    EXPECT_GT(table->Consumed(), 0u);
    EXPECT_LT(table->Consumed(), file.size());
    EXPECT_TRUE(byte + ReadAll(*table).bytes == LongTable());
    EXPECT_EQ(table->Consumed(), file.size());
}

TEST(OpenTable, RefusesWhatCannotBeRead)
{
    EXPECT_THROW(OpenTable("/nowhere/at/all.csv"), Failure);
    const auto folder = OpenTable("/");
    EXPECT_EQ(ReadAll(*folder).code, kCasesNotRead);
}

TEST(OpenTable, CutFileThatChangesIsToldAsOneThatIsStillWritten)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("cases.csv.gz", PackedByGzip(LongTable()));
    const auto table = OpenTable(path);
    char byte = 0;
    ASSERT_EQ(table->Read(&byte, 1), 1u);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 10);
    const Reading reading = ReadAll(*table);
    EXPECT_EQ(reading.code, kPackedCut);
    EXPECT_NE(reading.remedy.find("changed its size"), std::string::npos) << reading.remedy;
}

}  // namespace
}  // namespace MCVelscore_850
