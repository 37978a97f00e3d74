#include "engine/tables/compression.h"

#include <algorithm>
#include <limits>
#include <new>

#include <zlib.h>
#include <zstd.h>

namespace MCVelscore_850 {

namespace {

constexpr int kGzipLevel = 6;
constexpr int kZstdLevel = 3;
constexpr int kGzipWindow = 15 + 16;  // 32 KiB, and 16 for the gzip form
constexpr int kGzipMemory = 8;        // zlib's default

struct Form {
    Compression compression;
    std::string_view word;
    std::string_view suffix;
};

constexpr Form kForms[] = {
    {Compression::Gzip, "gzip", ".gz"},
    {Compression::Zstd, "zstd", ".zst"},
    {Compression::None, "none", ""},
};

}  // namespace

std::string_view CompressionWord(Compression compression)
{
    return std::find_if(std::begin(kForms), std::end(kForms),
                        [&](const Form& form) { return form.compression == compression; })
        ->word;
}

std::vector<std::string> CompressionWords()
{
    std::vector<std::string> words;
    for (const Form& form : kForms) words.emplace_back(form.word);
    return words;
}

std::optional<Compression> CompressionNamed(std::string_view word)
{
    for (const Form& form : kForms) {
        if (form.word == word) return form.compression;
    }
    return std::nullopt;
}

Compression CompressionOf(std::string_view path)
{
    return std::find_if(std::begin(kForms), std::end(kForms),
                        [&](const Form& form) { return path.ends_with(form.suffix); })
        ->compression;
}

// One form's stream_. The libraries' only failure here is a lack of memory: there is always room
// for what they write.
class MemberWriter {
public:
    MemberWriter() = default;
    MemberWriter(const MemberWriter&) = delete;
    MemberWriter& operator=(const MemberWriter&) = delete;
    virtual ~MemberWriter() = default;
    virtual void Write(std::string_view text, std::string& out) = 0;
};

namespace {

class GzipWriter final : public MemberWriter {
public:
    GzipWriter()
    {
        if (::deflateInit2(&stream_, kGzipLevel, Z_DEFLATED, kGzipWindow, kGzipMemory,
                           Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~GzipWriter() override { ::deflateEnd(&stream_); }

    void Write(std::string_view text, std::string& out) override
    {
        constexpr size_t kMost = std::numeric_limits<uInt>::max();
        ::deflateReset(&stream_);
        size_t used = out.size();
        out.resize(used + ::deflateBound(&stream_, text.size()));
        int ended = Z_OK;
        while (ended == Z_OK) {
            const size_t taken = std::min(text.size(), kMost);
            const size_t room = std::min(out.size() - used, kMost);
            stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
            stream_.avail_in = static_cast<uInt>(taken);
            stream_.next_out = reinterpret_cast<Bytef*>(out.data() + used);
            stream_.avail_out = static_cast<uInt>(room);
            ended = ::deflate(&stream_, taken == text.size() ? Z_FINISH : Z_NO_FLUSH);
            text.remove_prefix(taken - stream_.avail_in);
            used += room - stream_.avail_out;
        }
        if (ended != Z_STREAM_END) throw std::bad_alloc();
        out.resize(used);
    }

private:
    z_stream stream_{};
};

class ZstdWriter final : public MemberWriter {
public:
    ZstdWriter()
    {
        if (context_ == nullptr) throw std::bad_alloc();
        ::ZSTD_CCtx_setParameter(context_, ZSTD_c_compressionLevel, kZstdLevel);
        ::ZSTD_CCtx_setParameter(context_, ZSTD_c_checksumFlag, 1);
    }
    ~ZstdWriter() override { ::ZSTD_freeCCtx(context_); }

    void Write(std::string_view text, std::string& out) override
    {
        const size_t used = out.size();
        out.resize(used + ::ZSTD_compressBound(text.size()));
        const size_t made = ::ZSTD_compress2(context_, out.data() + used, out.size() - used,
                                             text.data(), text.size());
        if (::ZSTD_isError(made) != 0) throw std::bad_alloc();
        out.resize(used + made);
    }

private:
    ZSTD_CCtx* context_ = ::ZSTD_createCCtx();
};

class PlainWriter final : public MemberWriter {
public:
    void Write(std::string_view text, std::string& out) override { out.append(text); }
};

std::unique_ptr<MemberWriter> MakeWriter(Compression compression)
{
    switch (compression) {
        case Compression::Gzip: return std::make_unique<GzipWriter>();
        case Compression::Zstd: return std::make_unique<ZstdWriter>();
        case Compression::None: break;
    }
    return std::make_unique<PlainWriter>();
}

}  // namespace

Compressor::Compressor(Compression compression) : writer_(MakeWriter(compression)) {}

Compressor::Compressor(Compressor&&) noexcept = default;
Compressor& Compressor::operator=(Compressor&&) noexcept = default;
Compressor::~Compressor() = default;

void Compressor::Compress(std::string_view text, std::string& out) { writer_->Write(text, out); }

}  // namespace MCVelscore_850
