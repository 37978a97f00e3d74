#ifndef VELSCORE_ENGINE_TABLES_BYTESOURCE_H
#define VELSCORE_ENGINE_TABLES_BYTESOURCE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/messages/failure.h"

namespace MCVelscore_850 {

/// Set from outside, by a signal handler say, to end a run at the next whole row.
using StopFlag = std::atomic<bool>;
static_assert(StopFlag::is_always_lock_free, "a signal handler may set it");

/// Bytes in order, from wherever they come.
class ByteSource {
public:
    virtual ~ByteSource();
    /// Reads up to `size` bytes; 0 at the end. Throws Failure when they can't be read.
    virtual size_t Read(char* buffer, size_t size) = 0;
    /// Passes over bytes; fewer at the end. Throws as Read() does.
    virtual void Skip(uint64_t count);
    /// How messages call it.
    virtual const std::string& Name() const = 0;
    /// True once another size than at first shows that someone else writes what is read here.
    virtual bool HasChangedSize() const { return false; }
    /// How many bytes of the file were read so far, as they lie on the disk: of a compressed one,
    /// compressed bytes. Any thread may ask.
    virtual uint64_t Consumed() const { return 0; }
    /// The size on the disk that a regular file had at first, 0 for anything else.
    virtual uint64_t Size() const { return 0; }
    /// The open file that the bytes come from, -1 without one.
    virtual int Descriptor() const { return -1; }
};

/// A file, or standard input, as a source of bytes.
///
/// Errors  for what can't be opened or read, a directory among it: kCannotRead of kind Document for
///         a document, kCasesNotRead of kind Cases for anything else.
/// Owner   closes what it opened; standard input stays open.
class InputFile final : public ByteSource {
public:
    /// `path` "-" is standard input. Once the stop flag is set, a read answers the end, at the
    /// latest after a tenth of a second where it waits for a pipe.
    explicit InputFile(const std::string& path, const StopFlag* stop = nullptr,
                       FailureKind content = FailureKind::Cases);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() override;

    size_t Read(char* buffer, size_t size) override;
    void Skip(uint64_t count) override;
    const std::string& Name() const override { return name_; }
    /// Of a regular file alone.
    bool HasChangedSize() const override;

    /// How messages call a path.
    static std::string NameOf(const std::string& path)
    {
        return path == "-" ? "standard input" : path;
    }
    uint64_t Consumed() const override { return consumed_.load(std::memory_order_relaxed); }
    uint64_t Size() const override { return size_; }
    int Descriptor() const override { return descriptor_; }

private:
    bool IsStopped() const;
    bool HasBytes(int milliseconds) const;
    [[noreturn]] void Refuse(const std::string& reason) const;

    std::string name_;
    const StopFlag* stop_;
    FailureKind content_;
    int descriptor_ = -1;
    bool regular_ = false;
    uint64_t size_ = 0;
    std::atomic<uint64_t> consumed_{0};
};

/// Throws kCasesNotRead (Failure of kind Cases) for a path that isn't there, may not be read or is
/// a directory. It opens nothing, since a pipe can be opened once only.
void RefuseUnreadable(const std::string& path);

/// True for a regular file, or standard input that is one for "-"; tells its size.
bool IsRegularFile(const std::string& path, uint64_t& size);

/// True when both, open descriptors or paths, are the same regular file.
bool IsSameFile(int descriptor, int other);
bool IsSameFile(int descriptor, const std::string& path);
bool IsSameFile(const std::string& path, const std::string& other);

}  // namespace MCVelscore_850

#endif
