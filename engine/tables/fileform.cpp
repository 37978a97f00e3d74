#include "engine/tables/fileform.h"

#include <fmt/format.h>

#include "engine/messages/failure.h"
#include "engine/tables/compression.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

using namespace std::string_view_literals;

constexpr char kDecompress[] = "Decompress it on the way: {} FILE | velscore COMMAND MODEL -";
constexpr char kUnpackOnce[] =
    "One compression is unpacked: leave out the {} inside, or unpack the outer one on the way.";
constexpr char kConvert[] =
    "Convert it on the way: iconv -f {} -t UTF-8 FILE | velscore COMMAND MODEL -";
constexpr char kExport[] = "Export it as CSV{}.";
constexpr char kParquetWays[] =
    " first, with DuckDB say: COPY (FROM read_parquet('FILE')) TO 'cases.csv'; or in Python: "
    "pandas.read_parquet('FILE').to_csv('cases.csv', index=False)";
constexpr char kArrowFileWays[] =
    " first, in Python say: pandas.read_feather('FILE').to_csv('cases.csv', index=False)";
constexpr char kArrowStreamWays[] =
    " first, in Python say: pyarrow.ipc.open_stream(open('FILE', 'rb')).read_pandas()"
    ".to_csv('cases.csv', index=False)";
constexpr char kOneALine[] =
    "Write its objects a line each{}: jq -c '.[]' FILE | velscore COMMAND MODEL -";
constexpr char kOtherArgument[] = "The table of cases comes behind the model{}.";

struct Form {
    std::string_view start;
    const char* what;
    const char* hint;
    const char* argument;  // what the hint's place takes
};

constexpr Form kForms[] = {
    // Of what is unpacked already.
    {kGzipStart, "compressed more than once, inside by gzip", kUnpackOnce, "gzip"},
    {kZstdStart, "compressed more than once, inside by zstd", kUnpackOnce, "zstd"},
    {"\xFD\x37zXZ\0"sv, "compressed by xz", kDecompress, "xz -dc"},
    {"BZh9"sv, "compressed by bzip2", kDecompress, "bzip2 -dc"},
    {"PK\x03\x04"sv, "a ZIP archive, as spreadsheets are", kExport, " (UTF-8)"},
    {"PAR1"sv, "a Parquet file", kExport, kParquetWays},
    {"ARROW1"sv, "an Arrow file", kExport, kArrowFileWays},
    {"\xFF\xFF\xFF\xFF"sv, "an Arrow stream", kExport, kArrowStreamWays},
    {"FEA1"sv, "a Feather file", kExport, kArrowFileWays},
    {"\xFF\xFE"sv, "in UTF-16", kConvert, "UTF-16"},
    {"\xFE\xFF"sv, "in UTF-16", kConvert, "UTF-16"},
    {"[{"sv, "a JSON array", kOneALine, ""},
    {"[\n"sv, "a JSON array", kOneALine, ""},
    {"<?xml"sv, "an XML document", kOtherArgument, ""},
    {"<PMML"sv, "a model document", kOtherArgument, ""},
    {"<zelt-ml"sv, "a model document", kOtherArgument, ""},
};

[[noreturn]] void Refuse(const Form& form, const std::string& name)
{
    throw Failure(FailureKind::Cases, kNoTextTable, {name, form.what},
                  fmt::format(fmt::runtime(form.hint), form.argument));
}

}  // namespace

void RefuseOtherForms(std::string_view start, const std::string& name)
{
    for (const Form& form : kForms) {
        if (!start.starts_with(form.start)) continue;
        const bool isModel = start.find("PMML") != std::string_view::npos ||
                             start.find("zelt-ml") != std::string_view::npos;
        if (form.hint != kOtherArgument || !isModel) Refuse(form, name);
        Refuse({form.start, "a model document", form.hint, form.argument}, name);
    }
    // UTF-16 without a mark: of two bytes of an ASCII character one is 0.
    if (start.size() < 2 || (start[0] == 0) == (start[1] == 0)) return;
    Refuse({{}, "in UTF-16", kConvert, start[0] == 0 ? "UTF-16BE" : "UTF-16LE"}, name);
}

bool NeedsMoreToTellForm(std::string_view start)
{
    if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
    if (start.size() < 2) return true;
    if (kByteOrderMark.starts_with(start)) return true;
    for (const Form& form : kForms) {
        if (start.size() < form.start.size() && form.start.starts_with(start)) return true;
    }
    return false;
}

}  // namespace MCVelscore_850
