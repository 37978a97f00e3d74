#ifndef VELSCORE_ENGINE_TABLES_RECORDREADER_H
#define VELSCORE_ENGINE_TABLES_RECORDREADER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/blockreader.h"
#include "engine/tables/bytescan.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/recordblock.h"

namespace MCVelscore_850 {

/// Cuts a table of comma-separated values into blocks, for a RecordSplitter.
///
/// Form    RFC 4180: quotes around a field, doubled inside it; line ends LF, CR LF or CR, also
///         inside quotes. A byte-order mark is dropped.
/// Blanks  A blank line is an empty field in a table of one column. In a wider one blank lines at
///         the end are passed over; one before a further record is a row too short.
/// Blocks  have at least one record.
/// Memory  a block, and the longest record: at most kMaxRecord bytes.
/// Errors  Failure of a header: kNoHeader, kTooManyColumns, those of CheckRecord(); kNoTextTable;
///         and what the source throws. Torn records are told in their block: of kTableCut is a last
///         one without a line end in a table that changed its size meanwhile.
class RecordReader final : public BlockReader {
public:
    /// The longest record as it is written; a longer one is torn.
    static constexpr size_t kMaxRecord = size_t{1} << 25;

    /// Reads the header. The source must outlive the reader. `start` was read from it before.
    RecordReader(ByteSource& source, const RecordForm& form, const BlockSize& blockSize,
                 std::string_view start = {});
    TableForm Form() const override { return TableForm::Csv; }
    const std::vector<std::string>& Header() const override { return header_; }
    const std::string& Name() const { return source_.Name(); }
    bool Next(RecordBlock& block) override;
    int64_t Rows() const override { return row_ - 1; }
    void GoTo(uint64_t offset, int64_t row) override;

private:
    void Start();
    void ReadHeader();
    bool Fill();
    bool FindRecords(bool justOne);
    void StripBlankLines();
    void FindPlainRecords(bool justOne);
    void FindQuotedRecords(bool justOne);
    bool PassQuotedField();
    bool FindLineEnd(size_t place, size_t& end) const;
    void Tear(size_t anchor);
    bool EndTorn();
    void TakeRecord(size_t end);
    void FinishTable();
    void DropOverlong();
    void MakeRoom(size_t size);
    void Consume(size_t count);
    void Forget();
    const char* At(size_t place) const { return buffer_.data() + place; }

    ByteSource& source_;
    RecordForm form_;
    BlockSize blockSize_;
    ByteScan<2> lineEnds_;
    ByteScan<3> quotesAndLineEnds_;
    std::vector<std::string> header_;
    bool ended_ = false;  ///< nothing is left to read

    std::vector<char> buffer_;
    size_t filled_ = 0;
    uint64_t offset_ = 0;  ///< of the buffer's first byte in the table
    int64_t row_ = 1;      ///< the number of the next record

    // What is known of the buffer: whole records end at cut_.
    size_t cut_ = 0;
    int64_t records_ = 0;  ///< up to there
    int64_t blankLines_ = 0;
    std::vector<RecordBlock::BlankRun> blankRuns_;
    std::vector<RecordBlock::Torn> torn_;
    bool hasQuotes_ = false;
    size_t searched_ = 0;  ///< for quotes

    // Where the search stands in a buffer with quotes.
    static constexpr size_t kNone = static_cast<size_t>(-1);
    size_t place_ = 0;
    size_t record_ = 0;      ///< where the open record begins
    int64_t blankRun_ = 0;   ///< blank lines since cut_
    size_t quote_ = kNone;   ///< the open one
    size_t doubled_ = 0;     ///< quotes in its field that are written twice
    size_t anchor_ = kNone;  ///< the open record is torn, and ends at the line end behind this
    bool dropping_ = false;  ///< the rest of a record too long
};

}  // namespace MCVelscore_850

#endif
