#include "engine/tables/rowreader.h"

namespace MCVelscore_850 {

RowReader::RowReader(ByteSource& source, char delimiter)
    : source_(source),
      reader_(MakeBlockReader(source, {.delimiter = delimiter}, {})),
      splitter_(
          MakeBlockSplitter({.form = reader_->Form(), .header = Header(), .delimiter = delimiter}))
{}

size_t RowReader::NextRows(size_t most, std::span<const std::string_view>& fields)
{
    for (;;) {
        if (begun_) {
            const size_t rows = splitter_->NextRows(most, fields);
            row_ += static_cast<int64_t>(rows);
            if (rows > 0) return rows;
            if (const TornRow* torn = splitter_->Torn(); torn != nullptr) {
                throw FailureOf(torn->fault, source_.Name(), torn->raw.number, Header().size());
            }
        }
        begun_ = reader_->Next(block_);
        if (!begun_) return 0;
        splitter_->Begin(block_);
    }
}

}  // namespace MCVelscore_850
