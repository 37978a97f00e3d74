#ifndef VELSCORE_ENGINE_TABLES_COMPRESSION_H
#define VELSCORE_ENGINE_TABLES_COMPRESSION_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// The ways of compressing a table that are read and written.
enum class Compression { None, Gzip, Zstd };

/// The first bytes of what is compressed.
inline constexpr std::string_view kGzipStart = "\x1F\x8B";
inline constexpr std::string_view kZstdStart = "\x28\xB5\x2F\xFD";

/// The word of a compression: gzip, zstd or none.
std::string_view CompressionWord(Compression compression);
/// All these words.
std::vector<std::string> CompressionWords();
/// The compression that a word stands for, nothing for another word.
std::optional<Compression> CompressionNamed(std::string_view word);
/// What the name of a file asks for by its suffix: .gz, .zst, or none.
Compression CompressionOf(std::string_view path);

class MemberWriter;  // hides the libraries' types

/// Turns texts into gzip members or zstd frames, each of which stands for itself: one after
/// another, in the order of the texts and whoever made them, they are one compressed file.
///
/// Bytes   depend on the text alone: no time, no name. A zstd frame carries a checksum, as every
///         gzip member does. An empty text makes an empty member or frame.
/// Level   6 for gzip, 3 for zstd, the defaults of both.
/// Errors  std::bad_alloc.
/// Threads one compressor serves one thread at a time; it keeps its memory from text to text.
class Compressor {
public:
    explicit Compressor(Compression compression);
    Compressor(Compressor&&) noexcept;
    Compressor& operator=(Compressor&&) noexcept;
    ~Compressor();

    /// Appends to `out` what `text` becomes; without a compression the text itself.
    void Compress(std::string_view text, std::string& out);

private:
    std::unique_ptr<MemberWriter> writer_;
};

}  // namespace MCVelscore_850

#endif
