#ifndef VELSCORE_TESTS_ENGINE_PACKED_H
#define VELSCORE_TESTS_ENGINE_PACKED_H

#include <stdexcept>
#include <string>

#include <zlib.h>
#include <zstd.h>

namespace MCVelscore_850 {

// Texts packed and unpacked by the libraries' own functions.

inline std::string PackedByGzip(const std::string& text, int level = 6)
{
    z_stream stream{};
    ::deflateInit2(&stream, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string packed(::deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int ended = ::deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    ::deflateEnd(&stream);
    if (ended != Z_STREAM_END) throw std::runtime_error("not packed");
    return packed;
}

inline std::string PackedByZstd(const std::string& text, int level = 3, bool checksum = true)
{
    std::string packed(::ZSTD_compressBound(text.size()), '\0');
    ZSTD_CCtx* context = ::ZSTD_createCCtx();
    ::ZSTD_CCtx_setParameter(context, ZSTD_c_compressionLevel, level);
    ::ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, checksum ? 1 : 0);
    const size_t size =
        ::ZSTD_compress2(context, packed.data(), packed.size(), text.data(), text.size());
    ::ZSTD_freeCCtx(context);
    if (::ZSTD_isError(size) != 0) throw std::runtime_error("not packed");
    packed.resize(size);
    return packed;
}

/// A skippable frame of zstd with this content; `kind` is the last digit of its first byte.
inline std::string SkippableFrame(const std::string& content, int kind = 0)
{
    std::string frame = "\x50\x2A\x4D\x18";
    frame[0] = static_cast<char>(0x50 + kind);
    frame += static_cast<char>(content.size());
    return frame + std::string(3, '\0') + content;
}

}  // namespace MCVelscore_850

#endif
