#ifndef VELSCORE_ENGINE_TABLES_RECORDSPLITTER_H
#define VELSCORE_ENGINE_TABLES_RECORDSPLITTER_H

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/blocksplitter.h"
#include "engine/tables/bytescan.h"
#include "engine/tables/recordblock.h"
#include "engine/tables/recordcheck.h"

namespace MCVelscore_850 {

/// Splits the records of a RecordReader's blocks.
///
/// Fields  view the block, or the splitter where quotes are written twice.
class RecordSplitter final : public BlockSplitter {
public:
    RecordSplitter(size_t columns, char delimiter);

    void Begin(const RecordBlock& block) override;
    void CheckEncoding() override;
    size_t NextRows(size_t most, std::span<const std::string_view>& fields) override;
    const TornRow* Torn() override;
    void PassTorn() override;
    RawRow Raw(size_t row) const override;

private:
    void SplitSound(size_t most, const char* end);
    const char* TakeQuotedField(const char* begin, const char* end);
    std::string& NextUnquoted();
    bool TakeOddRecord(const char* end);
    /// True where the record up to `end` may hold what no field may.
    bool IsSuspect(const char* end) const
    {
        const bool isLong = static_cast<size_t>(end - place_) > kMaxField;
        return isLong || ((hasNul_ || checksEncoding_) && HasForbiddenBytes(end));
    }
    bool HasForbiddenBytes(const char* end) const;
    const char* RecordEnd(const char* begin, const char* end) const;
    void Tear(const char* end, const RecordFault& fault);
    RawRow RawOf(const char* begin, const char* end, int64_t number) const;
    uint64_t OffsetOf(const char* place) const
    {
        return block_->offset + static_cast<uint64_t>(place - block_->bytes.data());
    }

    size_t columns_;
    char delimiter_;
    ByteScan<4> marks_;  ///< what may end a field, and a quote
    const RecordBlock* block_ = nullptr;
    bool hasNul_ = false;
    bool checksEncoding_ = false;
    const char* place_ = nullptr;  ///< where the next record begins
    size_t nextTorn_ = 0;          ///< of the block's
    size_t blankRun_ = 0;          ///< of the block's, the next
    int64_t blankLine_ = 0;        ///< of that run
    int64_t row_ = 0;              ///< the next one's number
    std::optional<TornRow> torn_;
    std::vector<std::string_view> fields_;
    std::vector<const char*> records_;  ///< where those delivered last begin
    int64_t firstRow_ = 0;              ///< the number of the first of them
    std::string_view quoted_;           ///< the quoted field that was taken last
    std::deque<std::string> unquoted_;  ///< fields with quotes that are written twice
    size_t unquotedCount_ = 0;
};

}  // namespace MCVelscore_850

#endif
