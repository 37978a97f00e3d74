#include "engine/tables/csvreader.h"

namespace MCVelscore_850 {

CsvReader::CsvReader(ByteSource& source, char delimiter)
    : reader_(source, {.delimiter = delimiter}), splitter_(Header().size(), delimiter)
{}

size_t CsvReader::NextRows(size_t most, std::span<const std::string_view>& fields)
{
    for (;;) {
        if (begun_) {
            const size_t rows = splitter_.NextRows(most, fields);
            row_ += static_cast<int64_t>(rows);
            if (rows > 0) return rows;
            if (const TornRow* torn = splitter_.Torn(); torn != nullptr) {
                throw FailureOf(torn->fault, reader_.Name(), torn->raw.number, Header().size());
            }
        }
        begun_ = reader_.Next(block_);
        if (!begun_) return 0;
        splitter_.Begin(block_);
    }
}

}  // namespace MCVelscore_850
