#include "engine/tables/csvreader.h"

#include <cstring>
#include <new>

#include <csv.h>

#include "engine/messages/suggestions.h"
#include "engine/tables/fileform.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kChunk = size_t{1} << 16;
constexpr unsigned char kHighestLineEnd = '\r';

// Blanks belong to the field they stand in, so to the parser nothing is a blank.
extern "C" int NothingIsBlank(unsigned char) { return 0; }

}  // namespace

struct CsvReader::Parser {
    csv_parser parser{};

    explicit Parser(char delimiter)
    {
        csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL);
        csv_set_delim(&parser, static_cast<unsigned char>(delimiter));
        csv_set_space_func(&parser, NothingIsBlank);
        csv_set_blk_size(&parser, 4096);
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser() { csv_free(&parser); }

    static void OnField(void* bytes, size_t size, void* reader)
    {
        static_cast<CsvReader*>(reader)->TakeField(static_cast<const char*>(bytes), size);
    }
    static void OnLineEnd(int terminator, void* reader)
    {
        static_cast<CsvReader*>(reader)->TakeLineEnd(terminator);
    }
};

CsvReader::CsvReader(ByteSource& source, char delimiter)
    : source_(source),
      delimiter_(delimiter),
      parser_(std::make_unique<Parser>(delimiter)),
      chunk_(kChunk)
{
    text_.reserve(2 * kChunk);
    ReadHeader();
}

CsvReader::~CsvReader() = default;

bool CsvReader::Next(std::span<const std::string_view>& fields) { return NextRows(1, fields) == 1; }

size_t CsvReader::NextRows(size_t most, std::span<const std::string_view>& fields)
{
    const size_t columns = header_.size();
    size_t rows = 0;
    // A row that is at fault waits for a call of its own: those before it are delivered first.
    while (rows < most &&
           (rows == 0 || (nextLine_ < lines_.size() && IsSoundRow(lines_[nextLine_])))) {
        if (rowFields_.size() < (rows + 1) * columns) rowFields_.resize((rows + 1) * columns);
        if (!NextRow(rows * columns)) break;
        ++rows;
    }
    fields = std::span(rowFields_).first(rows * columns);
    return rows;
}

bool CsvReader::IsSoundRow(const Line& line) const
{
    return line.found == header_.size() || (line.found == 0 && header_.size() == 1);
}

bool CsvReader::NextRow(size_t place)
{
    Line line{};
    for (;;) {
        if (!NextLine(line)) return false;
        if (line.found == 0 && header_.size() > 1) {
            ++blankLines_;
            continue;
        }
        if (blankLines_ > 0) {
            // Only at the end may blank lines stand: here a further row follows them.
            Fail(kRowLength, {std::to_string(row_ + 1), "0", std::to_string(header_.size())});
        }
        ++row_;
        if (!IsSoundRow(line)) {
            Fail(kRowLength, {std::to_string(row_), std::to_string(line.found),
                              std::to_string(header_.size())});
        }
        std::string_view* view = &rowFields_[place];
        if (line.found == 0) *view = {};
        for (uint64_t i = 0; i < line.found; ++i) {
            const Field& field = fields_[line.firstField + i];
            view[i] = std::string_view(text_.data() + field.begin, field.end - field.begin);
        }
        return true;
    }
}

void CsvReader::ReadHeader()
{
    Line line{};
    if (!NextLine(line) || line.found == 0) Fail(kNoHeader, {});
    for (size_t i = 0; i < line.stored; ++i) {
        const Field& field = fields_[line.firstField + i];
        header_.emplace_back(text_, field.begin, field.end - field.begin);
    }
}

bool CsvReader::NextLine(Line& line)
{
    while (nextLine_ == lines_.size()) {
        if (failure_) throw Failure(*failure_);
        if (ended_) return false;
        FillBatch();
    }
    line = lines_[nextLine_++];
    return true;
}

void CsvReader::FillBatch()
{
    DropDelivered();
    size_t size = source_.Read(chunk_.data(), chunk_.size());
    const char* bytes = chunk_.data();
    if (!started_) {
        started_ = true;
        // A pipe may give the first bytes in pieces.
        while (size > 0 && NeedsMoreToTellForm({bytes, size})) {
            const size_t more = source_.Read(chunk_.data() + size, chunk_.size() - size);
            if (more == 0) break;
            size += more;
        }
        bytesRead_ += size;
        if (std::string_view(bytes, size).starts_with(kByteOrderMark)) {
            bytes += kByteOrderMark.size();
            size -= kByteOrderMark.size();
            if (size == 0) return;
        }
        RefuseOtherForms({bytes, size}, source_.Name());
    } else {
        bytesRead_ += size;
    }
    if (size == 0) {
        ended_ = true;
        FinishTable();
        return;
    }
    lastByte_ = bytes[size - 1];
    Parse(bytes, size);
}

void CsvReader::FinishTable()
{
    const std::string row = OpenRow();
    const auto wholeLines = static_cast<std::ptrdiff_t>(lines_.size());
    const bool lineIsOpen = lastByte_ != '\n' && lastByte_ != '\r';
    const bool quoteIsOpen =
        csv_fini(&parser_->parser, Parser::OnField, Parser::OnLineEnd, this) != 0;
    if ((lineIsOpen || quoteIsOpen) && source_.HasChangedSize()) {
        lines_.erase(lines_.begin() + wholeLines, lines_.end());
        FailLater(kTableCut, {row});
    } else if (quoteIsOpen) {
        FailLater(kUnclosedQuote, {row});
    }
}

void CsvReader::Parse(const char* bytes, size_t size)
{
    const void* nul = std::memchr(bytes, 0, size);
    const size_t clean =
        nul == nullptr ? size : static_cast<size_t>(static_cast<const char*>(nul) - bytes);
    // Whole lines without any quote need no parser: they are split where they stand. What is before
    // and after them, and every chunk with a quote in it, goes through the parser.
    std::string_view plain;
    std::string_view before(bytes, clean);
    std::string_view after;
    if (std::memchr(bytes, '"', clean) == nullptr && !IsQuoteOpen()) {
        const size_t first = before.find('\n') + 1;
        const size_t last = before.rfind('\n') + 1;
        plain = before.substr(first, last - first);
        after = before.substr(last);
        before = before.substr(0, first);
    }
    if (!ParseWithQuotes(before)) return;
    SplitPlainLines(plain);
    if (!ParseWithQuotes(after)) return;
    // A field that goes on isn't let grow; its last byte here may yet be the closing quote.
    if (nul != nullptr) {
        FailLater(kNulByte, {OpenRow()});
    } else if (parser_->parser.entry_pos > kMaxField + 1) {
        FailLater(kFieldTooLong, {OpenRow(), std::to_string(kMaxField)});
    }
}

// True while a quote may be open, or just closed, where the chunk before ended.
bool CsvReader::IsQuoteOpen() const { return parser_->parser.quoted != 0; }

bool CsvReader::ParseWithQuotes(std::string_view bytes)
{
    const size_t parsed = csv_parse(&parser_->parser, bytes.data(), bytes.size(), Parser::OnField,
                                    Parser::OnLineEnd, this);
    if (failure_) return false;  // a limit was passed on the way
    if (parsed == bytes.size()) return true;
    if (csv_error(&parser_->parser) != CSV_EPARSE) throw std::bad_alloc();
    // Quoted names between other delimiters look like text after a closing quote.
    const std::string_view header = bytes.substr(0, bytes.find_first_of("\r\n"));
    FailLater(kStrayQuote, {OpenRow()},
              linesParsed_ == 0 ? SuggestDelimiter(header, delimiter_) : std::string());
    return false;
}

// Lines that each end with LF, without any quote, from the beginning of a line.
void CsvReader::SplitPlainLines(std::string_view lines)
{
    if (lines.empty()) return;
    const auto shift = static_cast<uint32_t>(text_.size());
    text_.append(lines);
    const auto size = static_cast<uint32_t>(lines.size());
    uint32_t begin = 0;
    for (uint32_t i = 0; i < size; ++i) {
        const char c = lines[i];
        if (static_cast<unsigned char>(c) > kHighestLineEnd && c != delimiter_) continue;
        if (c == delimiter_) {
            TakeSplitField(shift + begin, shift + i);
        } else if (c == '\n' || c == '\r') {
            // A line without a delimiter or a byte is blank; TakeLineEnd() knows what that means.
            if (openFound_ > 0 || i > begin) TakeSplitField(shift + begin, shift + i);
            TakeLineEnd(c);
        } else {
            continue;
        }
        begin = i + 1;
    }
}

void CsvReader::TakeSplitField(uint32_t begin, uint32_t end)
{
    ++openFound_;
    if (!header_.empty() && openFound_ > header_.size()) return;
    fields_.push_back({begin, end});
}

// The open line moves to the front; what was delivered goes.
void CsvReader::DropDelivered()
{
    const auto shift = static_cast<uint32_t>(openText_);
    text_.erase(0, openText_);
    fields_.erase(fields_.begin(), fields_.begin() + static_cast<std::ptrdiff_t>(openFirstField_));
    for (Field& field : fields_) {
        field.begin -= shift;
        field.end -= shift;
    }
    openText_ = 0;
    openFirstField_ = 0;
    lines_.clear();
    nextLine_ = 0;
}

void CsvReader::TakeField(const char* bytes, size_t size)
{
    if (failure_) return;
    if (size > kMaxField) {
        FailLater(kFieldTooLong, {OpenRow(), std::to_string(kMaxField)});
        return;
    }
    ++openFound_;
    // A row of too many fields is refused when it is delivered; its surplus takes no memory.
    if (!header_.empty() && openFound_ > header_.size()) return;
    if (text_.size() - openText_ + size > kMaxRow) {
        FailLater(kRowTooLong, {OpenRow(), std::to_string(kMaxRow)});
        return;
    }
    if (openFound_ > kMaxColumns) {
        FailLater(kTooManyColumns, {std::to_string(kMaxColumns)});
        return;
    }
    const auto begin = static_cast<uint32_t>(text_.size());
    text_.append(bytes, size);
    fields_.push_back({begin, static_cast<uint32_t>(text_.size())});
}

void CsvReader::TakeLineEnd(int terminator)
{
    if (failure_) return;
    // The LF of CR LF comes as a blank line of its own.
    const bool completesCrLf = terminator == CSV_LF && lastTerminator_ == CSV_CR && openFound_ == 0;
    lastTerminator_ = completesCrLf ? 0 : terminator;
    if (completesCrLf) return;
    lines_.push_back({static_cast<uint32_t>(openFirstField_),
                      static_cast<uint32_t>(fields_.size() - openFirstField_), openFound_});
    openFirstField_ = fields_.size();
    openText_ = text_.size();
    openFound_ = 0;
    ++linesParsed_;
}

// The number of the row that is being parsed: the header is the first line parsed.
std::string CsvReader::OpenRow() const { return std::to_string(linesParsed_); }

void CsvReader::FailLater(int code, std::vector<std::string> details, std::string hint)
{
    details.insert(details.begin(), source_.Name());
    failure_.emplace(FailureKind::Cases, code, details, std::move(hint));
}

void CsvReader::Fail(int code, std::vector<std::string> details) const
{
    details.insert(details.begin(), source_.Name());
    throw Failure(FailureKind::Cases, code, details);
}

}  // namespace MCVelscore_850
