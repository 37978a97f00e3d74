#include "engine/documents/audit/fieldvalues.h"

#include <algorithm>
#include <limits>
#include <set>
#include <tuple>

#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/values/datetimetext.h"
#include "host/values/numbertext.h"
#include "host/variables/datatypes.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

constexpr double kNoBound = std::numeric_limits<double>::infinity();

struct ClosureRow {
    std::string_view name;
    bool low;
    bool high;
};
constexpr ClosureRow kClosures[] = {
    {"openOpen", false, false},
    {"openClosed", false, true},
    {"closedOpen", true, false},
    {"closedClosed", true, true},
};

// A number, or a date of the type as text, in the type's own count.
std::optional<double> ReadMargin(Element interval, std::string_view attribute,
                                 std::string_view dataType, double unbounded)
{
    const std::string text = interval.Text(attribute);
    if (TrimBlanks(text).empty()) return unbounded;
    double number = 0.0;
    const DataType* type = FindDataType(dataType);
    if (type != nullptr && type->dateTimeType != ScoreDictVar::NOT_DATETIME &&
        ReadDateTime(text, type->dateTimeType, number)) {
        return number + OriginShift(type->dateTimeType);
    }
    if (ReadNumber(text, number) != NumberText::Number) return std::nullopt;
    return number;
}

// The texts that a derived text can be, where its expression says it at once; nothing else is
// looked into.
std::optional<std::vector<std::string>> OutcomesOf(Element derived)
{
    std::vector<std::string> outcomes;
    Element expression = derived.Child("Discretize");
    if (expression) {
        for (const Element bin : expression.Children("DiscretizeBin")) {
            outcomes.push_back(bin.Text("binValue"));
        }
    } else if ((expression = derived.Child("MapValues"))) {
        const std::string column = expression.Text("outputColumn");
        for (const Element row : expression.Child("InlineTable").Children()) {
            const Element cell = row.Child(column);
            if (!cell) return std::nullopt;  // a prefix, or the reader's to refuse
            outcomes.push_back(cell.Content());
        }
    } else {
        return std::nullopt;
    }
    for (const std::string_view attribute : {"defaultValue", "mapMissingTo"}) {
        if (expression.Has(attribute)) outcomes.push_back(expression.Text(attribute));
    }
    return outcomes;
}

// The fields of the mining schema, those for derived fields among them.
std::vector<Element> SchemaFields(Element model)
{
    std::vector<Element> fields;
    const Element schema = model.Child(Tags::XML_ELE_MININGSCHEMA);
    for (const Element child : schema.Children()) {
        if (child.Is(Tags::XML_ELE_MININGFIELD)) fields.push_back(child);
        if (!child.Is(Tags::XML_ELE_EXTENSION)) continue;
        for (const Element nested : child.Children(Tags::XML_ELE_MININGFIELD)) {
            fields.push_back(nested);
        }
    }
    return fields;
}

// True for the types whose equal values are told by their texts.
bool HasKeys(const DocumentFacts::Field& field)
{
    const DataType* type = FindDataType(field.dataType);
    return type != nullptr && type->valueType != ScoreDictVar::DATETIME;
}

}  // namespace

std::string FieldInterval::Text() const
{
    std::string text = lowClosed ? "[" : "(";
    text += element.Text("leftMargin");
    text += ", ";
    text += element.Text("rightMargin");
    text += highClosed ? "]" : ")";
    return text;
}

std::optional<FieldInterval> ReadFieldInterval(Element interval, std::string_view dataType)
{
    const std::string closure = interval.Text("closure");
    const auto row = std::find_if(std::begin(kClosures), std::end(kClosures),
                                  [&](const ClosureRow& each) { return closure == each.name; });
    const auto low = ReadMargin(interval, "leftMargin", dataType, -kNoBound);
    const auto high = ReadMargin(interval, "rightMargin", dataType, kNoBound);
    if (row == std::end(kClosures) || !low || !high) return std::nullopt;
    return FieldInterval{interval, *low, *high, row->low, row->high};
}

std::vector<IntervalOverlap> FindOverlaps(std::vector<FieldInterval> intervals)
{
    std::erase_if(intervals, [](const FieldInterval& each) { return each.IsEmpty(); });
    std::stable_sort(intervals.begin(), intervals.end(),
                     [](const FieldInterval& one, const FieldInterval& other) {
                         return std::tuple(one.low, !one.lowClosed) <
                                std::tuple(other.low, !other.lowClosed);
                     });
    std::vector<IntervalOverlap> overlaps;
    const FieldInterval* furthest = nullptr;
    for (const FieldInterval& each : intervals) {
        if (furthest == nullptr) {
            furthest = &each;
            continue;
        }
        const bool touch = each.low == furthest->high && each.lowClosed && furthest->highClosed;
        if (touch || each.low < furthest->high) overlaps.push_back({*furthest, each, touch});
        if (std::tuple(each.high, each.highClosed) >
            std::tuple(furthest->high, furthest->highClosed)) {
            furthest = &each;
        }
    }
    return overlaps;
}

bool ClosedValues::Has(const std::string& text) const
{
    return keys.contains(ValueKey(*field, text));
}

std::string ValueKey(const DocumentFacts::Field& field, const std::string& text)
{
    if (field.dataType == "boolean") {
        if (const auto truth = TruthOf(text)) return *truth ? "true" : "false";
    }
    return CategoryKey(field.element, text);
}

ClosedFields::ClosedFields(const DocumentFacts& facts)
{
    for (const DocumentFacts::Field& field : facts.fields) {
        // Values and intervals add up.
        if (!HasKeys(field) || AcceptsUnlisted(field.element) || field.element.Child("Interval")) {
            continue;
        }
        ClosedValues values{&field, field.categories, {}};
        if (!field.IsClosed()) {
            const bool isText = field.derived && field.dataType == "string";
            auto outcomes = isText ? OutcomesOf(field.element) : std::nullopt;
            if (!outcomes) continue;
            values.listed = std::move(*outcomes);
        }
        for (const std::string& text : values.listed) values.keys.insert(ValueKey(field, text));
        fields_.emplace(field.name, std::move(values));
    }
    for (const Element schema : SchemaFields(facts.model)) {
        const auto found = fields_.find(schema.Text(Tags::XML_ATT_MININGFIELD_NAME));
        if (found == fields_.end()) continue;
        if (schema.Text("invalidValueTreatment") == "asIs") {
            fields_.erase(found);
            continue;
        }
        for (const std::string_view attribute :
             {"missingValueReplacement", "invalidValueReplacement"}) {
            if (!schema.Has(attribute)) continue;
            found->second.keys.insert(ValueKey(*found->second.field, schema.Text(attribute)));
        }
    }
}

const ClosedValues* ClosedFields::Find(const std::string& name) const
{
    const auto found = fields_.find(name);
    return found == fields_.end() ? nullptr : &found->second;
}

}  // namespace MCVelscore_850
