#ifndef VELSCORE_ENGINE_TABLES_TABLESOURCE_H
#define VELSCORE_ENGINE_TABLES_TABLESOURCE_H

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/messages/failure.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/compression.h"

namespace MCVelscore_850 {

class Unpacker;  // hides the libraries' types

/// The bytes of a table, unpacked on the way where the first ones say that they are compressed.
///
/// Form    gzip or zstd, told by the first bytes, never by a name; anything else is handed on as it
///         is. No more bytes are waited for than tell it, which are four at most.
/// Members One after another, gzip members or zstd frames are one table. Skippable frames are
///         passed over, and so are zeros behind the last gzip member.
/// Memory  64 KiB and what the form needs: 40 KiB for gzip; for zstd the window that the frame asks
///         for, usually 2 to 8 MiB and 128 MiB at most.
/// Errors  Failure of kind Cases, after the bytes before the fault were delivered: kPackedCut,
///         kPackedDamaged, kPackedRest, kPackedWindow, kPackedDictionary; and what the source
///         throws. A fault stands: each further read throws it again.
/// Stop    A source that ends once the stop flag is set isn't taken for a cut one.
/// Threads one at a time, Consumed() apart.
class TableSource final : public ByteSource {
public:
    explicit TableSource(std::unique_ptr<ByteSource> packed, const StopFlag* stop = nullptr);
    ~TableSource() override;

    size_t Read(char* buffer, size_t size) override;
    void Skip(uint64_t count) override;
    const std::string& Name() const override { return packed_->Name(); }
    bool HasChangedSize() const override { return packed_->HasChangedSize(); }
    uint64_t Consumed() const override { return packed_->Consumed(); }
    uint64_t Size() const override { return packed_->Size(); }
    int Descriptor() const override { return packed_->Descriptor(); }

private:
    void ReadStart();
    void Fill();
    void Unpack(std::span<char>& output);
    bool CanGoOn();
    void EndInput();
    void FailLater(int code, std::vector<std::string> details);
    std::vector<std::string> HowFar() const;

    std::unique_ptr<ByteSource> packed_;
    const StopFlag* stop_;
    std::unique_ptr<char[]> buffer_;  // of kBuffer bytes
    std::string_view input_;          // what was read into the buffer and not yet taken
    bool inputEnded_ = false;

    std::optional<Compression> form_;  // empty until it is told
    std::unique_ptr<Unpacker> unpacker_;
    bool insideMember_ = false;
    bool padding_ = false;      // zeros behind a gzip member
    bool holdsOutput_ = false;  // the unpacker may have more of it than there was room for
    uint64_t unpacked_ = 0;
    std::optional<Failure> failure_;
};

/// Opens the table of cases in a file, "-" being standard input. It doesn't read yet.
///
/// Errors  as InputFile; reading as TableSource.
std::unique_ptr<ByteSource> OpenTable(const std::string& path, const StopFlag* stop = nullptr);

}  // namespace MCVelscore_850

#endif
