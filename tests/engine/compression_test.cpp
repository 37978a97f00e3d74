#include "engine/tables/compression.h"

#include <array>
#include <cstdio>
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "tests/engine/packed.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

std::string Compressed(Compression compression, const std::string& text)
{
    std::string out;
    Compressor(compression).Compress(text, out);
    return out;
}

// What a command writes to its standard output.
std::string OutputOf(const std::string& command)
{
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
        out.append(buffer.data(), count);
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return out;
}

std::vector<std::string> Texts()
{
    std::mt19937 random(20261122);
    std::string noise;
    for (int i = 0; i < 300000; ++i) noise += static_cast<char>(random());
    std::string table = "prediction,status\n";
    for (int i = 0; i < 50000; ++i) table += std::to_string(i) + ".25,0\n";
    return {"", "a", table, noise, std::string("\0\0", 2)};
}

TEST(Compression, WordsAndSuffixesStandForTheForms)
{
    struct Row {
        Compression compression;
        const char* word;
        const char* path;
    };
    const Row kRows[] = {{Compression::Gzip, "gzip", "a/scores.csv.gz"},
                         {Compression::Zstd, "zstd", "scores.zst"},
                         {Compression::None, "none", "scores.csv"}};
    std::vector<std::string> words;
    for (const Row& row : kRows) {
        EXPECT_EQ(CompressionNamed(row.word), row.compression) << row.word;
        EXPECT_EQ(CompressionWord(row.compression), row.word);
        EXPECT_EQ(CompressionOf(row.path), row.compression) << row.path;
        words.emplace_back(row.word);
    }
    EXPECT_EQ(CompressionWords(), words);
    for (const char* word : {"", "GZIP", "gz", "xz"}) EXPECT_FALSE(CompressionNamed(word)) << word;
    for (const char* path : {"", "-", "gz", "a.gz.csv", "a.gzip", "b.zst/c", "a.GZ"}) {
        EXPECT_EQ(CompressionOf(path), Compression::None) << path;
    }
}

TEST(Compressor, BytesAreTheLibrariesAtTheirLevels)
{
    for (const std::string& text : Texts()) {
        EXPECT_EQ(Compressed(Compression::Gzip, text), PackedByGzip(text, 6)) << text.size();
        EXPECT_EQ(Compressed(Compression::Zstd, text), PackedByZstd(text, 3)) << text.size();
        EXPECT_EQ(Compressed(Compression::None, text), text) << text.size();
    }
    const std::string table = Texts()[2];  // where levels differ
    EXPECT_NE(PackedByGzip(table, 6), PackedByGzip(table, 5));
    EXPECT_NE(PackedByGzip(table, 6), PackedByGzip(table, 7));
    EXPECT_NE(PackedByZstd(table, 3), PackedByZstd(table, 2));
    EXPECT_NE(PackedByZstd(table, 3), PackedByZstd(table, 4));
}

TEST(Compressor, BytesDependOnTheTextAlone)
{
    for (const Compression compression : {Compression::Gzip, Compression::Zstd}) {
        Compressor used(compression);
        for (const std::string& text : Texts()) {
            std::string out = "before";
            used.Compress(text, out);
            EXPECT_EQ(out, "before" + Compressed(compression, text)) << text.size();
        }
        Compressor moved = std::move(used);
        std::string out;
        moved.Compress("a,b\n", out);
        EXPECT_EQ(out, Compressed(compression, "a,b\n"));
    }
    // RFC 1952: the time stands in bytes 4 to 7, the flag of a name in byte 3.
    EXPECT_EQ(Compressed(Compression::Gzip, "a").substr(3, 5), std::string(5, '\0'));
}

TEST(Compressor, MembersOneAfterAnotherAreOneFileToTheCommands)
{
    const ScratchFolder folder;
    for (const Compression compression : {Compression::Gzip, Compression::Zstd}) {
        Compressor compressor(compression);
        std::string packed;
        std::string whole;
        for (const std::string& text : Texts()) {
            compressor.Compress(text, packed);
            whole += text;
        }
        const std::string word(CompressionWord(compression));
        const std::string file = folder.Write("packed", packed);
        EXPECT_EQ(OutputOf(word + " -dc <" + file), whole) << word;
        const std::string empty = folder.Write("empty", Compressed(compression, ""));
        EXPECT_EQ(OutputOf(word + " -dc <" + empty), "") << word;
        EXPECT_FALSE(Compressed(compression, "").empty());
    }
}

}  // namespace
}  // namespace MCVelscore_850
