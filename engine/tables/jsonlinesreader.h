#ifndef VELSCORE_ENGINE_TABLES_JSONLINESREADER_H
#define VELSCORE_ENGINE_TABLES_JSONLINESREADER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/blockreader.h"
#include "engine/tables/recordblock.h"

namespace MCVelscore_850 {

/// Cuts a table of JSON Lines into blocks, for a JsonLinesSplitter.
///
/// Form    an object a line; a line ends with LF, and blanks may stand around the object. A
///         byte-order mark is dropped.
/// Header  the keys of the first object, which is a row all the same.
/// Blanks  A blank line is no row.
/// Blocks  may have no row: blank lines alone.
/// Memory  a block, and the longest line: at most kMaxRow bytes and one.
/// Errors  Failure for a first row that gives no header: kNoHeader, kTooManyColumns, kRowTooLong,
///         those of JsonObjectReader, kKeyTwice; and what the source throws. Torn rows are told in
///         their block: a line too long, and of kTableCut a last one without a line end in a table
///         that changed its size meanwhile.
class JsonLinesReader final : public BlockReader {
public:
    /// Reads the header. The source must outlive the reader. `start` was read from it before.
    JsonLinesReader(ByteSource& source, const RecordForm& form, const BlockSize& blockSize,
                    std::string_view start = {});

    TableForm Form() const override { return TableForm::JsonLines; }
    const std::vector<std::string>& Header() const override { return header_; }
    bool Next(RecordBlock& block) override;
    void GoTo(uint64_t offset, int64_t row) override;
    int64_t Rows() const override { return row_ - 1; }

private:
    void ReadHeader();
    bool FindFirstLine(size_t& size);
    bool FindLines();
    bool Fill();
    void DropOverlong();
    void TakeLine(size_t end);
    void TakeTorn(int code);
    void TakeRest();
    void MakeRoom(size_t size);
    void Consume(size_t count);

    ByteSource& source_;
    RecordForm form_;
    BlockSize blockSize_;
    std::vector<std::string> header_;
    bool ended_ = false;     ///< nothing is left to read
    bool dropping_ = false;  ///< the rest of a line too long

    std::vector<char> buffer_;
    size_t filled_ = 0;
    uint64_t offset_ = 0;  ///< of the buffer's first byte in the table
    int64_t row_ = 1;      ///< the number of the next row

    // What is known of the buffer: whole lines end at cut_.
    size_t cut_ = 0;
    int64_t records_ = 0;  ///< up to there
    size_t searched_ = 0;  ///< without a line end behind cut_
    std::vector<RecordBlock::Torn> torn_;
};

}  // namespace MCVelscore_850

#endif
