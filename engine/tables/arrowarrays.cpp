#include "engine/tables/arrowarrays.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include <fmt/format.h>

#include "engine/messages/failure.h"
#include "engine/tables/arrowschema.h"
#include "engine/tables/arrowvalues.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kAlignment = 64;

// What an array that was made here points to; it is deleted with it.
struct Made {
    std::array<const void*, 3> buffers{};
    ArrowColumnParts parts;
    ArrowOwner<ArrowArray> dictionary;
};

void ReleaseMade(ArrowArray* array)
{
    delete static_cast<Made*>(array->private_data);
    array->release = nullptr;
}

// What a table, or a view of somebody else's array, points to.
struct Holder {
    std::array<const void*, 1> noBuffer{};
    std::vector<ArrowOwner<ArrowArray>> children;
    std::vector<ArrowArray*> pointers;
    ArrowOwner<ArrowArray> dictionary;
    std::shared_ptr<const void> owner;

    void PointTo(ArrowArray& array)
    {
        pointers.reserve(children.size());
        for (ArrowOwner<ArrowArray>& child : children) pointers.push_back(child.Get());
        array.n_children = static_cast<int64_t>(pointers.size());
        array.children = pointers.empty() ? nullptr : pointers.data();
        array.dictionary = dictionary.IsReleased() ? nullptr : dictionary.Get();
    }
};

void ReleaseHolder(ArrowArray* array)
{
    delete static_cast<Holder*>(array->private_data);
    array->release = nullptr;
}

ArrowOwner<ArrowArray> Export(ArrowArray array, std::unique_ptr<Holder> holder)
{
    holder->PointTo(array);
    array.release = ReleaseHolder;
    array.private_data = holder.release();
    return ArrowOwner(array);
}

void CheckView(const ArrowArray* array, const std::string& what)
{
    if (array == nullptr) RefuseArrow(what, "a pointer to an array is null");
    if (array->release == nullptr) RefuseArrow(what, "an array was released");
    if (array->length < 0 || array->offset < 0 || array->n_buffers < 0 || array->null_count < -1 ||
        (array->n_buffers > 0 && array->buffers == nullptr)) {
        RefuseArrow(what,
                    fmt::format("an array tells {} rows, an offset of {}, {} nulls and {} "
                                "buffers",
                                array->length, array->offset, array->null_count, array->n_buffers));
    }
    if (array->n_children < 0 || (array->n_children > 0 && array->children == nullptr)) {
        RefuseArrow(what, fmt::format("an array tells {} children", array->n_children));
    }
}

// All of an array, its own arrays too.
ArrowOwner<ArrowArray> View(const ArrowArray* array, const std::string& name,
                            const std::shared_ptr<const void>& owner, int depth)
{
    if (depth == kMostArrowDepth) {
        throw Failure(FailureKind::Cases, kArrowTooDeep, {name, std::to_string(depth)});
    }
    CheckView(array, ArrowColumnName(name));
    auto holder = std::make_unique<Holder>();
    holder->owner = owner;
    for (int64_t i = 0; i < array->n_children; ++i) {
        holder->children.push_back(View(array->children[i], name, owner, depth + 1));
    }
    if (array->dictionary != nullptr) {
        holder->dictionary = View(array->dictionary, name, owner, depth + 1);
    }
    return Export(*array, std::move(holder));
}

struct alignas(kAlignment) Line {
    std::byte bytes[kAlignment];
};

size_t LinesOf(size_t size) { return std::max<size_t>(1, (size + kAlignment - 1) / kAlignment); }

ArrowBytes BytesOf(const std::shared_ptr<Line[]>& lines) { return {lines, lines[0].bytes}; }

}  // namespace

ArrowBytes MakeArrowBytes(size_t size)
{
    return BytesOf(std::make_shared_for_overwrite<Line[]>(LinesOf(size)));
}

ArrowBytes MakeArrowZeros(size_t size) { return BytesOf(std::make_shared<Line[]>(LinesOf(size))); }

ArrowTextBytes MakeArrowTexts(std::span<const std::string_view> texts)
{
    size_t size = 0;
    for (const std::string_view text : texts) size += text.size();
    if (size > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        throw Failure(FailureKind::Cases, kArrowStructure,
                      {"the results", "texts have more than 2 GiB; score fewer rows at once"});
    }
    ArrowTextBytes made{MakeArrowBytes((texts.size() + 1) * sizeof(int32_t)), MakeArrowBytes(size),
                        static_cast<int64_t>(texts.size())};
    auto* offset = reinterpret_cast<int32_t*>(made.offsets.get());
    std::byte* end = made.bytes.get();
    *offset = 0;
    for (const std::string_view text : texts) {
        if (!text.empty()) std::memcpy(end, text.data(), text.size());
        end += text.size();
        *++offset = static_cast<int32_t>(end - made.bytes.get());
    }
    return made;
}

ArrowOwner<ArrowArray> MakeArrowArray(int64_t rows, ArrowColumnParts parts)
{
    auto made = std::make_unique<Made>();
    made->parts = std::move(parts);
    const ArrowColumnParts& own = made->parts;
    made->buffers = {own.validity.get(), own.values.get(), own.texts.get()};
    if (own.dictionary.offsets != nullptr) {
        made->dictionary = MakeArrowArray(
            own.dictionary.count,
            {.validity = nullptr, .values = own.dictionary.offsets, .texts = own.dictionary.bytes});
    }
    ArrowArray array{};
    array.length = rows;
    array.null_count = own.nullCount;
    array.n_buffers = own.texts == nullptr ? 2 : 3;
    array.buffers = made->buffers.data();
    array.dictionary = made->dictionary.IsReleased() ? nullptr : made->dictionary.Get();
    array.release = ReleaseMade;
    array.private_data = made.release();
    return ArrowOwner(array);
}

ArrowOwner<ArrowArray> ViewArrowArray(const ArrowArray& array, const std::string& name,
                                      const std::shared_ptr<const void>& owner, int64_t first,
                                      int64_t rows)
{
    ArrowOwner<ArrowArray> view = View(&array, name, owner, 0);
    ArrowArray& own = *view.Get();
    if (own.length < first || own.length - first < rows ||
        first > std::numeric_limits<int64_t>::max() - own.offset) {
        RefuseArrow(ArrowColumnName(name), fmt::format("the array has {} rows, and the table {}",
                                                       own.length, first + rows));
    }
    const bool isWhole = own.length == rows;
    own.offset += first;
    own.length = rows;
    if (!isWhole && own.null_count > 0) own.null_count = -1;
    return view;
}

ArrowOwner<ArrowArray> MakeArrowTable(int64_t rows, std::vector<ArrowOwner<ArrowArray>> columns)
{
    auto holder = std::make_unique<Holder>();
    holder->children = std::move(columns);
    ArrowArray array{};
    array.length = rows;
    array.n_buffers = 1;
    array.buffers = holder->noBuffer.data();
    return Export(array, std::move(holder));
}

}  // namespace MCVelscore_850
