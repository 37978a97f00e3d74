#include "tests/fuzz/arrowdrawing.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string>

namespace MCVelscore_850::fuzz {

namespace {

using velscore_tests::Bytes;
using velscore_tests::BytesOf;

constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();
constexpr size_t kWidest = 32;  // bytes of a value

enum class Layout { None, Bits, Fixed, Texts, LargeTexts, Views };

struct Format {
    const char* text;
    Layout layout;
    size_t width = 0;
};

constexpr Format kNumbers[] = {
    {"g", Layout::Fixed, 8}, {"f", Layout::Fixed, 4}, {"c", Layout::Fixed, 1},
    {"C", Layout::Fixed, 1}, {"s", Layout::Fixed, 2}, {"S", Layout::Fixed, 2},
    {"i", Layout::Fixed, 4}, {"I", Layout::Fixed, 4}, {"l", Layout::Fixed, 8},
    {"L", Layout::Fixed, 8}, {"b", Layout::Bits},     {"d:9,2", Layout::Fixed, 16},
};
constexpr Format kTexts[] = {
    {"u", Layout::Texts}, {"U", Layout::LargeTexts}, {"vu", Layout::Views}};
constexpr Format kIndexes[] = {{"c", Layout::Fixed, 1}, {"C", Layout::Fixed, 1},
                               {"i", Layout::Fixed, 4}, {"l", Layout::Fixed, 8},
                               {"L", Layout::Fixed, 8}, {"S", Layout::Fixed, 2}};
constexpr Format kOthers[] = {
    {"n", Layout::None},
    {"tdD", Layout::Fixed, 4},
    {"tdm", Layout::Fixed, 8},
    {"tts", Layout::Fixed, 4},
    {"ttn", Layout::Fixed, 8},
    {"tss:", Layout::Fixed, 8},
    {"tsu:UTC", Layout::Fixed, 8},
    {"d:76,-3,256", Layout::Fixed, 32},
    {"d:38,38", Layout::Fixed, 16},
    {"e", Layout::Fixed, 2},
    {"z", Layout::Texts},
    {"vz", Layout::Views},
    {"w:8", Layout::Fixed, 8},
    {"w:-1", Layout::None},
    {"+l", Layout::Texts},
    {"+s", Layout::None},
    {"+us:0,1", Layout::Fixed, 1},
    {"+r", Layout::None},
    {"+w:2", Layout::None},
    {"tin", Layout::Fixed, 16},
    {"d:999999999999,2", Layout::Fixed, 16},
    {"", Layout::None},
    {"tsx", Layout::Fixed, 8},
};

// How values of the format lie; of a format that was drawn letter by letter they have room enough.
Format LayoutOf(const std::string& text)
{
    const auto isIt = [&](const Format& each) { return text == each.text; };
    for (const auto& table : {std::span<const Format>(kNumbers), std::span<const Format>(kTexts),
                              std::span<const Format>(kOthers)}) {
        const auto found = std::find_if(table.begin(), table.end(), isIt);
        if (found != table.end()) return *found;
    }
    return {"", Layout::Fixed, kWidest};
}

// What makes a table wrong is rare, since the first fault ends all; of a used up input it is right.
bool IsRare(Choices& choices) { return choices.Below(64) == 63; }

std::string DrawFormat(Choices& choices, std::span<const Format> usual)
{
    if (IsRare(choices)) {
        // Up to a null byte, as who reads it sees it.
        const std::string letters(choices.Text(choices.Below(6)));
        return letters.c_str();
    }
    switch (choices.Below(16)) {
        case 15: return choices.OneOf(kOthers).text;
        case 14: return choices.OneOf(kNumbers).text;
        default: return choices.OneIn(usual).text;
    }
}

MadeArray DrawColumnShape(Choices& choices, const std::string& name, std::span<const Format> usual,
                          int depth)
{
    MadeArray shape{.name = name, .format = DrawFormat(choices, usual)};
    const size_t form = choices.Below(8);
    if (form <= 1 && depth < 3) {
        shape.dictionary.push_back(DrawColumnShape(choices, "", usual, depth + 1));
        shape.format = DrawFormat(choices, kIndexes);
    }
    if (form == 2 && depth < 3 && (name == "other" || IsRare(choices))) {
        for (size_t i = choices.Below(3); i > 0; --i) {
            shape.children.push_back(DrawColumnShape(choices, "child", usual, depth + 1));
        }
    }
    if (IsRare(choices)) shape.flags = choices.Raw<int64_t>();
    return shape;
}

Bytes DrawBytes(Choices& choices, size_t count)
{
    Bytes bytes(count);
    for (std::byte& byte : bytes) byte = static_cast<std::byte>(choices.Byte());
    return bytes;
}

// Numbers of `width` bytes below 3, so that as indexes they mean something.
Bytes DrawSmall(Choices& choices, size_t count, size_t width)
{
    Bytes bytes(count * width);
    for (size_t at = 0; at < bytes.size(); at += width) {
        bytes[at] = static_cast<std::byte>(IsRare(choices) ? choices.Byte() : choices.Below(3));
    }
    return bytes;
}

Bytes DrawDoubles(Choices& choices, size_t count)
{
    static constexpr double kUsual[] = {0.0, 1.0, -2.5, 1e300, 0.1, 7.0};
    std::vector<double> numbers(count);
    for (double& number : numbers) {
        number = IsRare(choices) ? choices.Raw<double>() : choices.OneOf(kUsual);
    }
    return BytesOf(numbers);
}

// Offsets mostly rise; their texts are the categories of the model, and others.
template <class Offset>
void DrawTexts(Choices& choices, size_t count, MadeArray& made)
{
    static constexpr const char* kValues[] = {"f", "m", "", "q", "12", "\xff\xfe", "2024-02-30"};
    const bool isWild = IsRare(choices);
    std::string texts;
    std::vector<Offset> offsets{0};
    for (size_t i = 0; i < count; ++i) {
        texts += choices.OneOf(kValues);
        offsets.push_back(static_cast<Offset>(texts.size()));
    }
    for (Offset& offset : offsets) {
        if (isWild && choices.Below(4) == 0) {
            offset = static_cast<Offset>(static_cast<int64_t>(choices.Below(texts.size() + 4)) - 3);
        }
    }
    made.buffers.push_back(BytesOf(offsets));
    made.buffers.push_back(BytesOf(std::vector<char>(texts.begin(), texts.end())));
}

struct TextView {
    int32_t size;
    int32_t prefix;
    int32_t buffer;
    int32_t begin;
};

void DrawViews(Choices& choices, size_t count, MadeArray& made)
{
    constexpr size_t kRoom = 40;
    const bool isWild = IsRare(choices);
    std::vector<TextView> views;
    for (size_t i = 0; i < count; ++i) {
        TextView view{static_cast<int32_t>(choices.Below(20)), 0x6d, 0, 0};
        if (isWild) view = choices.Raw<TextView>();
        if (view.size > 12 && !isWild) {
            view.buffer = 0;
            view.begin = static_cast<int32_t>(choices.Below(kRoom - 20));
        }
        views.push_back(view);
    }
    const int64_t told =
        IsRare(choices) ? choices.OneOf<int64_t>({0, -1, kLeast}) : static_cast<int64_t>(kRoom);
    made.buffers.push_back(BytesOf(views));
    made.buffers.push_back(DrawBytes(choices, kRoom));
    made.buffers.push_back(BytesOf(std::vector<int64_t>{told}));
}

void DrawBuffers(Choices& choices, size_t count, MadeArray& made)
{
    const Format format = LayoutOf(made.format);
    if (format.layout == Layout::None) return;
    made.buffers.emplace_back();
    if (choices.Below(3) == 0) made.buffers.back() = DrawBytes(choices, (count + 7) / 8);
    switch (format.layout) {
        case Layout::None: return;
        case Layout::Bits: made.buffers.push_back(DrawBytes(choices, (count + 7) / 8)); return;
        case Layout::Fixed:
            made.buffers.push_back(made.format == "g" ? DrawDoubles(choices, count)
                                   : choices.IsTrue() && made.dictionary.empty()
                                       ? DrawBytes(choices, count * format.width)
                                       : DrawSmall(choices, count, format.width));
            return;
        case Layout::Texts: DrawTexts<int32_t>(choices, count, made); return;
        case Layout::LargeTexts: DrawTexts<int64_t>(choices, count, made); return;
        case Layout::Views: DrawViews(choices, count, made); return;
    }
}

int64_t CountNulls(const MadeArray& made)
{
    if (made.buffers.empty() || !made.buffers[0]) return 0;
    int64_t nulls = 0;
    for (int64_t at = made.offset; at < made.offset + made.length; ++at) {
        const auto byte =
            std::to_integer<unsigned>((*made.buffers[0])[static_cast<size_t>(at / 8)]);
        nulls += (byte >> (at % 8) & 1U) == 0 ? 1 : 0;
    }
    return nulls;
}

void FillColumn(Choices& choices, int64_t rows, MadeArray& column)
{
    column.length = rows + (choices.Below(6) == 0 ? static_cast<int64_t>(choices.Below(9)) : 0);
    if (IsRare(choices)) column.length = static_cast<int64_t>(choices.Below(4));
    if (choices.Below(6) == 0) column.offset = static_cast<int64_t>(choices.Below(11));
    DrawBuffers(choices, static_cast<size_t>(column.offset + column.length), column);
    column.nullCount = choices.Below(4) == 0 ? -1 : CountNulls(column);
    for (MadeArray& child : column.children) FillColumn(choices, rows, child);
    for (MadeArray& entries : column.dictionary) {
        FillColumn(choices, IsRare(choices) ? 1 : 3, entries);
    }
}

template <class Structure>
std::vector<Spoiling<Structure>> DrawSpoilings(Choices& choices)
{
    std::vector<Spoiling<Structure>> changes;
    if (choices.Below(4) != 3) return changes;
    for (size_t i = 1 + choices.Below(2); i > 0; --i) {
        changes.push_back(
            {choices.Below(8), choices.IsTrue(), choices.Below(16), choices.Below(8)});
    }
    return changes;
}

template <class Pointer>
void ClearOne(Pointer* pointers, size_t count, size_t which)
{
    if (pointers != nullptr && count > 0) pointers[which % count] = nullptr;
}

void Spoil(ArrowSchema& part, const MadeArray& made, bool isTable, const auto& change)
{
    static constexpr int64_t kCounts[] = {-1, kLeast, kMost, 0};
    static constexpr int32_t kMetadata[][2] = {{-1, 0}, {1, -1}, {0, 0}};
    switch (change.what) {
        case 0: part.release(&part); break;
        case 1: part.format = nullptr; break;
        case 2: part.name = nullptr; break;
        case 3: part.children = nullptr; break;
        case 4: part.n_children = kCounts[change.which % 4]; break;
        case 5: part.dictionary = nullptr; break;
        case 6: part.metadata = reinterpret_cast<const char*>(kMetadata[change.which % 3]); break;
        case 7: ClearOne(part.children, made.children.size(), change.which); break;
        case 8: part.flags = -1; break;
        case 9:
            if (isTable) part.format = "g";
            break;
        default: break;
    }
}

void Spoil(ArrowArray& part, const MadeArray& made, bool isTable, const auto& change)
{
    static constexpr int64_t kWild[] = {-1, kLeast, kMost, int64_t{1} << 57, 0, -2, 1, 2};
    const int64_t wild = kWild[change.which];
    const bool isInRoom = wild >= 1 && wild <= 2;
    switch (change.what) {
        case 0: part.release(&part); break;
        case 1: part.buffers = nullptr; break;
        case 2: part.children = nullptr; break;
        case 3: part.dictionary = nullptr; break;
        case 4: ClearOne(part.buffers, made.buffers.size(), change.which); break;
        case 5: ClearOne(part.children, made.children.size(), change.which); break;
        case 6:
            if (isTable || !isInRoom) part.length = wild;
            break;
        case 7:
            if (isTable || !isInRoom) part.offset = wild;
            break;
        case 8: part.null_count = wild; break;
        case 9:
            if (wild <= 0) part.n_buffers = wild;
            break;
        case 10:
            if (isTable || wild <= 0 || made.children.empty()) part.n_children = wild;
            break;
        default: break;
    }
}

template <class Structure>
void SpoilAll(Structure& whole, const MadeArray& made,
              const std::vector<Spoiling<Structure>>& changes)
{
    for (const auto& change : changes) {
        if (whole.release == nullptr) return;  // nothing of it may be touched any more
        if (change.column >= made.children.size()) {
            Spoil(whole, made, true, change);
            continue;
        }
        Structure* column = whole.children == nullptr ? nullptr : whole.children[change.column];
        if (column == nullptr || column->release == nullptr) continue;
        const MadeArray& of = made.children[change.column];
        if (!change.ofDictionary) {
            Spoil(*column, of, false, change);
        } else if (column->dictionary != nullptr && column->dictionary->release != nullptr) {
            Spoil(*column->dictionary, of.dictionary.front(), false, change);
        }
    }
}

}  // namespace

MadeArray DrawShape(Choices& choices)
{
    static constexpr const char* kMore[] = {"", "x", "sex", "note"};
    MadeArray table{.name = "", .format = "+s"};
    table.children.push_back(DrawColumnShape(choices, "x", kNumbers, 0));
    table.children.push_back(DrawColumnShape(choices, "sex", kTexts, 0));
    table.children.push_back(DrawColumnShape(choices, "other", kTexts, 0));
    if (choices.Below(8) == 7) {
        table.children.push_back(DrawColumnShape(choices, choices.OneOf(kMore), kTexts, 0));
    }
    return table;
}

MadeArray DrawTable(Choices& choices, const MadeArray& shape)
{
    MadeArray table = shape;
    table.length = static_cast<int64_t>(choices.Below(70));
    if (choices.Below(6) == 0) table.offset = static_cast<int64_t>(choices.Below(11));
    table.buffers = {std::nullopt};
    for (MadeArray& column : table.children) {
        FillColumn(choices, table.offset + table.length, column);
    }
    return table;
}

std::vector<Spoiling<ArrowSchema>> DrawSchemaSpoilings(Choices& choices)
{
    return DrawSpoilings<ArrowSchema>(choices);
}
std::vector<Spoiling<ArrowArray>> DrawArraySpoilings(Choices& choices)
{
    return DrawSpoilings<ArrowArray>(choices);
}

ArrowSchema ExportSpoilt(const MadeArray& made, const std::vector<Spoiling<ArrowSchema>>& changes)
{
    ArrowSchema schema = velscore_tests::ExportSchema(made);
    SpoilAll(schema, made, changes);
    return schema;
}
ArrowArray ExportSpoilt(const MadeArray& made, const std::vector<Spoiling<ArrowArray>>& changes)
{
    ArrowArray array = velscore_tests::ExportArray(made);
    SpoilAll(array, made, changes);
    return array;
}

}  // namespace MCVelscore_850::fuzz
