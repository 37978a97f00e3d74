#include "engine/tables/arrowschema.h"

#include <cstring>
#include <memory>

#include <fmt/format.h>

#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/tables/arrowvalues.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

constexpr int64_t kMostColumns = int64_t{1} << 20;

// What a schema that was made here points to; it is deleted with it.
struct Made {
    std::string format;
    std::string name;
    std::string metadata;
    std::vector<ArrowOwner<ArrowSchema>> children;
    std::vector<ArrowSchema*> pointers;
    ArrowOwner<ArrowSchema> dictionary;
};

void ReleaseMade(ArrowSchema* schema)
{
    delete static_cast<Made*>(schema->private_data);
    schema->release = nullptr;
}

ArrowOwner<ArrowSchema> Export(std::unique_ptr<Made> made, int64_t flags)
{
    for (ArrowOwner<ArrowSchema>& child : made->children) made->pointers.push_back(child.Get());
    ArrowSchema schema{};
    schema.format = made->format.c_str();
    schema.name = made->name.c_str();
    schema.metadata = made->metadata.empty() ? nullptr : made->metadata.data();
    schema.flags = flags;
    schema.n_children = static_cast<int64_t>(made->pointers.size());
    schema.children = made->pointers.empty() ? nullptr : made->pointers.data();
    schema.dictionary = made->dictionary.IsReleased() ? nullptr : made->dictionary.Get();
    schema.release = ReleaseMade;
    schema.private_data = made.release();
    return ArrowOwner(schema);
}

void CheckSchema(const ArrowSchema* schema, const std::string& what)
{
    if (schema == nullptr) RefuseArrow(what, "the pointer to its schema is null");
    if (schema->release == nullptr) RefuseArrow(what, "the schema was released");
    if (schema->format == nullptr) RefuseArrow(what, "the schema has no format");
    if (schema->n_children < 0 || schema->n_children > kMostColumns ||
        (schema->n_children > 0 && schema->children == nullptr)) {
        RefuseArrow(what, fmt::format("the schema tells {} children and has {}", schema->n_children,
                                      schema->children == nullptr ? "none" : "others"));
    }
}

bool IsIndex(const std::optional<ArrowType>& type) { return type && type->IsWhole(); }

ArrowField FieldOf(const ArrowSchema& column)
{
    ArrowField field;
    field.name = column.name == nullptr ? "" : column.name;
    field.typeName = ArrowTypeName(column.format);
    if (column.dictionary == nullptr) {
        field.type = ArrowTypeOf(column.format);
        return field;
    }
    const std::string what = ArrowColumnName(field.name);
    CheckSchema(column.dictionary, "the dictionary of " + what);
    field.index = ArrowTypeOf(column.format);
    if (!IsIndex(field.index)) {
        RefuseArrow(what, "the indexes into its dictionary are of the type " + field.typeName);
    }
    field.typeName = "dictionary of " + ArrowTypeName(column.dictionary->format);
    if (column.dictionary->dictionary == nullptr) {
        field.type = ArrowTypeOf(column.dictionary->format);
    }
    return field;
}

// Numbers of pairs, then each key and value behind its length: as many bytes as that.
std::string CopyMetadata(const char* metadata, const std::string& what)
{
    if (metadata == nullptr) return {};
    const auto wholeAt = [&](size_t place) {
        int32_t whole = 0;
        std::memcpy(&whole, metadata + place, sizeof whole);
        if (whole < 0) RefuseArrow(what, fmt::format("its metadata has a length of {}", whole));
        return static_cast<size_t>(whole);
    };
    size_t size = sizeof(int32_t);
    const size_t texts = 2 * wholeAt(0);
    for (size_t i = 0; i < texts; ++i) size += sizeof(int32_t) + wholeAt(size);
    return {metadata, size};
}

ArrowOwner<ArrowSchema> Copy(const ArrowSchema& from, const std::string& name,
                             const std::string& what, int depth)
{
    if (depth == kMostArrowDepth) {
        throw Failure(FailureKind::Cases, kArrowTooDeep, {name, std::to_string(depth)});
    }
    CheckSchema(&from, what);
    auto made = std::make_unique<Made>();
    made->format = from.format;
    made->name = name;
    made->metadata = CopyMetadata(from.metadata, what);
    for (int64_t i = 0; i < from.n_children; ++i) {
        const ArrowSchema* child = from.children[i];
        CheckSchema(child, what);
        made->children.push_back(
            Copy(*child, child->name == nullptr ? "" : child->name, what, depth + 1));
    }
    if (from.dictionary != nullptr) made->dictionary = Copy(*from.dictionary, "", what, depth + 1);
    return Export(std::move(made), from.flags);
}

}  // namespace

std::vector<ArrowField> ReadArrowSchema(const ArrowSchema& schema)
{
    const std::string table = "the table";
    CheckSchema(&schema, table);
    if (std::string_view(schema.format) != "+s") {
        RefuseArrow(table, "it is of the type " + ArrowTypeName(schema.format) +
                               ", and not of a table's, struct (+s)");
    }
    std::vector<ArrowField> fields;
    for (int64_t i = 0; i < schema.n_children; ++i) {
        CheckSchema(schema.children[i], fmt::format("column {}", i + 1));
        fields.push_back(FieldOf(*schema.children[i]));
    }
    return fields;
}

ArrowOwner<ArrowSchema> CopyArrowSchema(const ArrowSchema& schema, const std::string& name)
{
    return Copy(schema, name, ArrowColumnName(name), 0);
}

ArrowOwner<ArrowSchema> MakeArrowSchema(const std::string& format, const std::string& name,
                                        bool isNullable)
{
    auto made = std::make_unique<Made>();
    made->format = format;
    made->name = name;
    return Export(std::move(made), isNullable ? ARROW_FLAG_NULLABLE : 0);
}

ArrowOwner<ArrowSchema> MakeDictionarySchema(const std::string& name, bool isNullable)
{
    const std::string index(1, 'i');
    auto made = std::make_unique<Made>();
    made->format = index;
    made->name = name;
    made->dictionary = MakeArrowSchema("u", "", false);
    return Export(std::move(made), isNullable ? ARROW_FLAG_NULLABLE : 0);
}

ArrowOwner<ArrowSchema> MakeTableSchema(std::vector<ArrowOwner<ArrowSchema>> columns)
{
    auto made = std::make_unique<Made>();
    made->format = "+s";
    made->children = std::move(columns);
    return Export(std::move(made), 0);
}

}  // namespace MCVelscore_850
