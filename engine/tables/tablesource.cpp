#include "engine/tables/tablesource.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include <zlib.h>
#include <zstd.h>
#include <zstd_errors.h>

#include "host/messages/messages.h"

namespace MCVelscore_850 {

// Unpacks one form. It is at the begin of a member when it is new and after it answered the end of
// one.
class Unpacker {
public:
    enum class Outcome { GoesOn, MemberEnds, NoMember, Damaged, WindowTooLarge, NeedsDictionary };
    struct Step {
        Outcome outcome;
        const char* reason = "";  // what the library calls the damage
    };

    Unpacker() = default;
    Unpacker(const Unpacker&) = delete;
    Unpacker& operator=(const Unpacker&) = delete;
    virtual ~Unpacker() = default;
    /// Unpacks from the front of `input` to the front of `output` and takes off both what it used.
    /// What was unpacked before a fault is in the output.
    virtual Step Unpack(std::string_view& input, std::span<char>& output) = 0;
};

namespace {

constexpr size_t kBuffer = size_t{1} << 16;
constexpr int kZstdWindowLog = 27;  // 128 MiB
constexpr int kMebibyteLog = 20;

// How a table of each form starts. At the end of a file fewer bytes tell it too, where no text
// begins so.
struct Start {
    Compression form;
    std::string_view bytes;
    size_t fewest;
};
constexpr Start kStarts[] = {
    {Compression::Gzip, kGzipStart, 1},
    {Compression::Zstd, kZstdStart, 2},
};

// Skippable frames of zstd differ in the last four bits of their first byte.
constexpr std::string_view kSkippableRest = "\x2A\x4D\x18";
bool MayStartSkippable(char byte) { return (static_cast<unsigned char>(byte) & 0xF0U) == 0x50U; }
bool MayBeSkippable(std::string_view start)
{
    return MayStartSkippable(start.front()) &&
           kSkippableRest.starts_with(start.substr(1, kSkippableRest.size()));
}

// What a file that begins so is; nothing while further bytes tell. `isWhole` when there are none.
std::optional<Compression> FormOf(std::string_view begin, bool isWhole)
{
    for (const Start& start : kStarts) {
        if (begin.starts_with(start.bytes)) return start.form;
        if (!start.bytes.starts_with(begin)) continue;
        if (!isWhole) return std::nullopt;
        if (begin.size() >= start.fewest) return start.form;
    }
    if (!begin.empty() && MayBeSkippable(begin)) {
        if (begin.size() > kSkippableRest.size()) return Compression::Zstd;
        if (!isWhole) return std::nullopt;
    }
    return Compression::None;
}

bool MayStartMember(Compression form, char byte)
{
    return form == Compression::Gzip ? byte == kGzipStart.front()
                                     : byte == kZstdStart.front() || MayStartSkippable(byte);
}

class GzipUnpacker final : public Unpacker {
public:
    GzipUnpacker()
    {
        constexpr int kAnyWindowOfGzip = 15 + 16;
        if (::inflateInit2(&stream_, kAnyWindowOfGzip) != Z_OK) throw std::bad_alloc();
    }
    ~GzipUnpacker() override { ::inflateEnd(&stream_); }

    Step Unpack(std::string_view& input, std::span<char>& output) override
    {
        constexpr size_t kMost = std::numeric_limits<uInt>::max();
        const size_t given = std::min(input.size(), kMost);
        const size_t room = std::min(output.size(), kMost);
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
        stream_.avail_in = static_cast<uInt>(given);
        stream_.next_out = reinterpret_cast<Bytef*>(output.data());
        stream_.avail_out = static_cast<uInt>(room);
        const int ended = ::inflate(&stream_, Z_NO_FLUSH);
        input.remove_prefix(given - stream_.avail_in);
        output = output.subspan(room - stream_.avail_out);
        switch (ended) {
            case Z_OK:
            case Z_BUF_ERROR:  // nothing could be done without more input
                return {Outcome::GoesOn};
            case Z_STREAM_END: ::inflateReset(&stream_); return {Outcome::MemberEnds};
            case Z_MEM_ERROR: throw std::bad_alloc();
            default: break;
        }
        if (stream_.total_in <= kGzipStart.size()) return {Outcome::NoMember};
        return {Outcome::Damaged, stream_.msg == nullptr ? "" : stream_.msg};
    }

private:
    z_stream stream_{};
};

class ZstdUnpacker final : public Unpacker {
public:
    ZstdUnpacker()
    {
        if (context_ == nullptr) throw std::bad_alloc();
        ::ZSTD_DCtx_setParameter(context_, ZSTD_d_windowLogMax, kZstdWindowLog);
    }
    ~ZstdUnpacker() override { ::ZSTD_freeDCtx(context_); }

    Step Unpack(std::string_view& input, std::span<char>& output) override
    {
        // A block at a time: a call that fails doesn't tell what it unpacked before. The library
        // asks for a block with the header of the next one, which may be the damaged one.
        // What of a block there was no room for comes before anything of the next one is read.
        const size_t block = wanted_ > kBlockHeader ? wanted_ - kBlockHeader : wanted_;
        const size_t part = holdsOutput_ ? 0 : block;
        ZSTD_inBuffer in{input.data(), std::min(input.size(), part), 0};
        ZSTD_outBuffer out{output.data(), output.size(), 0};
        const size_t answer = ::ZSTD_decompressStream(context_, &out, &in);
        input.remove_prefix(in.pos);
        output = output.subspan(out.pos);
        if (::ZSTD_isError(answer) != 0) return Fault(answer);
        wanted_ = answer == 0 ? kStartOfFrame : answer;
        holdsOutput_ = answer != 0 && output.empty();
        return {answer == 0 ? Outcome::MemberEnds : Outcome::GoesOn};
    }

private:
    static constexpr size_t kBlockHeader = 3;
    static constexpr size_t kStartOfFrame = 5;

    static Step Fault(size_t answer)
    {
        switch (::ZSTD_getErrorCode(answer)) {
            case ZSTD_error_memory_allocation: throw std::bad_alloc();
            case ZSTD_error_prefix_unknown: return {Outcome::NoMember};
            case ZSTD_error_frameParameter_windowTooLarge: return {Outcome::WindowTooLarge};
            case ZSTD_error_dictionary_wrong: return {Outcome::NeedsDictionary};
            default: return {Outcome::Damaged, ::ZSTD_getErrorName(answer)};
        }
    }

    ZSTD_DCtx* context_ = ::ZSTD_createDCtx();
    size_t wanted_ = kStartOfFrame;
    bool holdsOutput_ = false;  // perhaps: the room was used up
};

}  // namespace

TableSource::TableSource(std::unique_ptr<ByteSource> packed, const StopFlag* stop)
    : packed_(std::move(packed)),
      stop_(stop),
      buffer_(std::make_unique_for_overwrite<char[]>(kBuffer)),
      input_(buffer_.get(), 0)
{}

TableSource::~TableSource() = default;

void TableSource::Skip(uint64_t count)
{
    while (!form_) ReadStart();
    if (*form_ != Compression::None) return ByteSource::Skip(count);
    const auto taken = static_cast<size_t>(std::min<uint64_t>(count, input_.size()));
    input_.remove_prefix(taken);
    if (count > taken) packed_->Skip(count - taken);
}

size_t TableSource::Read(char* buffer, size_t size)
{
    if (size == 0) return 0;
    while (!form_) ReadStart();
    if (*form_ == Compression::None) {
        if (input_.empty()) return packed_->Read(buffer, size);
        const size_t count = std::min(size, input_.size());
        std::memcpy(buffer, input_.data(), count);
        input_.remove_prefix(count);
        return count;
    }
    std::span<char> output(buffer, size);
    Unpack(output);
    while (output.size() == size && !failure_ && !inputEnded_) {
        Fill();
        Unpack(output);
    }
    if (output.size() == size && failure_) throw Failure(*failure_);
    return size - output.size();
}

// Reads once, behind what is left in the buffer.
void TableSource::Fill()
{
    std::memmove(buffer_.get(), input_.data(), input_.size());
    const size_t count = packed_->Read(buffer_.get() + input_.size(), kBuffer - input_.size());
    inputEnded_ = count == 0;
    input_ = {buffer_.get(), input_.size() + count};
}

void TableSource::ReadStart()
{
    Fill();
    form_ = FormOf(input_, inputEnded_);
    if (form_ == Compression::Gzip) unpacker_ = std::make_unique<GzipUnpacker>();
    if (form_ == Compression::Zstd) unpacker_ = std::make_unique<ZstdUnpacker>();
}

// Unpacks what was read, as far as there is room.
void TableSource::Unpack(std::span<char>& output)
{
    using Outcome = Unpacker::Outcome;
    while (!output.empty() && CanGoOn()) {
        const size_t room = output.size();
        const Unpacker::Step step = unpacker_->Unpack(input_, output);
        unpacked_ += room - output.size();
        insideMember_ = step.outcome != Outcome::MemberEnds;
        holdsOutput_ = insideMember_ && output.empty();
        switch (step.outcome) {
            case Outcome::GoesOn:
            case Outcome::MemberEnds: break;
            case Outcome::NoMember: FailLater(kPackedRest, HowFar()); break;
            case Outcome::Damaged: {
                std::vector<std::string> details = HowFar();
                details.emplace_back(step.reason);
                FailLater(kPackedDamaged, details);
                break;
            }
            case Outcome::WindowTooLarge:
                FailLater(kPackedWindow, {std::to_string(1 << (kZstdWindowLog - kMebibyteLog))});
                break;
            case Outcome::NeedsDictionary: FailLater(kPackedDictionary, {}); break;
        }
    }
    if (inputEnded_) EndInput();
}

// True while there is something to unpack without reading on.
bool TableSource::CanGoOn()
{
    if (failure_) return false;
    if (insideMember_) return holdsOutput_ || !input_.empty();
    if (*form_ == Compression::Gzip && input_.starts_with('\0')) padding_ = true;
    if (padding_) input_.remove_prefix(std::min(input_.find_first_not_of('\0'), input_.size()));
    if (input_.empty()) return false;
    // A single byte too many would wait for a second one and count as a cut member.
    if (padding_ || !MayStartMember(*form_, input_.front())) FailLater(kPackedRest, HowFar());
    return !failure_;
}

void TableSource::EndInput()
{
    const bool isStopped = stop_ != nullptr && stop_->load(std::memory_order_relaxed);
    if (insideMember_ && !CanGoOn() && !failure_ && !isStopped) FailLater(kPackedCut, HowFar());
}

// What messages tell of the compression and of what came before the fault.
std::vector<std::string> TableSource::HowFar() const
{
    return {std::string(CompressionWord(*form_)), std::to_string(unpacked_)};
}

void TableSource::FailLater(int code, std::vector<std::string> details)
{
    details.insert(details.begin(), Name());
    failure_.emplace(FailureKind::Cases, code, details,
                     HasChangedSize() ? "It changed its size while it was read: wait until it is "
                                        "written whole."
                                      : "");
}

std::unique_ptr<ByteSource> OpenTable(const std::string& path, const StopFlag* stop)
{
    return std::make_unique<TableSource>(std::make_unique<InputFile>(path, stop), stop);
}

}  // namespace MCVelscore_850
