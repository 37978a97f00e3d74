// Fields of the dictionary and of the mining schema.

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/audit/fieldvalues.h"
#include "engine/documents/names.h"
#include "engine/documents/vocabulary.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"
#include "host/values/numbertext.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Old = ZELTModelTags;
using Field = DocumentFacts::Field;

const std::string kLow = "lowValue";
const std::string kHigh = "highValue";
const std::string kInvalidTreatment = "invalidValueTreatment";
const std::string kInvalidReplacement = "invalidValueReplacement";
const std::string kMissingTreatment = "missingValueTreatment";

std::string PropertyOf(Element value)
{
    const std::string property = value.Text("property");
    return property.empty() ? "valid" : property;
}

// The elements of a field's categories, in their order.
std::vector<Element> ValidElements(const DocumentFacts& facts, const Field& field)
{
    std::vector<Element> elements;
    if (facts.older) {
        const Element categories = field.element.Child(Old::XML_ELE_CATEGORIES);
        for (const Element value : categories.Children(Old::XML_ELE_CATEGORY)) {
            elements.push_back(value);
        }
        return elements;
    }
    for (const Element value : field.element.Children(Tags::XML_ELE_VALUE)) {
        if (PropertyOf(value) == "valid") elements.push_back(value);
    }
    return elements;
}

void CheckRepeatedValues(const DocumentFacts& facts, RuleReport& report)
{
    for (const Field& field : facts.fields) {
        std::unordered_set<std::string_view> seen;
        std::vector<Element> elements;  // once one is wanted
        for (size_t i = 0; i < field.categories.size(); ++i) {
            if (seen.insert(field.categoryKeys[i]).second) continue;
            if (elements.empty()) elements = ValidElements(facts, field);
            report({elements[i], Tags::XML_ATT_VALUE, field.categories[i], {}, {}, field.name});
        }
    }
}

bool HasOtherProperties(const Field& field)
{
    for (const Element value : field.element.Children(Tags::XML_ELE_VALUE)) {
        if (PropertyOf(value) != "valid") return true;
    }
    return false;
}

void CheckProperties(const DocumentFacts& facts, RuleReport& report)
{
    for (const Field& field : facts.fields) {
        if (!HasOtherProperties(field)) continue;
        std::unordered_map<std::string, std::string> properties;  // by key
        for (const Element value : field.element.Children(Tags::XML_ELE_VALUE)) {
            const std::string text = value.Text(Tags::XML_ATT_VALUE);
            const std::string property = PropertyOf(value);
            const auto [first, isNew] = properties.emplace(ValueKey(field, text), property);
            if (isNew || first->second == property) continue;
            report({.element = value,
                    .attribute = Tags::XML_ATT_VALUE,
                    .found = text,
                    .what = field.name,
                    .note = property + " and, before, " + first->second});
        }
    }
}

void CheckTruths(const DocumentFacts& facts, RuleReport& report)
{
    for (const Field& field : facts.fields) {
        if (field.dataType != "boolean") continue;
        for (const Element value : field.element.Children(Tags::XML_ELE_VALUE)) {
            const std::string text = value.Text(Tags::XML_ATT_VALUE);
            if (PropertyOf(value) != "valid" || TruthOf(text)) continue;
            report({value, Tags::XML_ATT_VALUE, text, {}, {}, field.name});
        }
    }
}

std::vector<FieldInterval> IntervalsOf(const Field& field)
{
    std::vector<FieldInterval> intervals;
    for (const Element element : field.element.Children("Interval")) {
        if (auto interval = ReadFieldInterval(element, field.dataType)) {
            intervals.push_back(*interval);
        }
    }
    return intervals;
}

void CheckEmptyIntervals(const DocumentFacts& facts, RuleReport& report)
{
    for (const Field& field : facts.fields) {
        for (const FieldInterval& each : IntervalsOf(field)) {
            if (!each.IsEmpty()) continue;
            report({each.element, "leftMargin", each.Text(), {}, {}, field.name});
        }
    }
}

void CheckOverlaps(const DocumentFacts& facts, RuleReport& report)
{
    for (const Field& field : facts.fields) {
        for (const IntervalOverlap& overlap : FindOverlaps(IntervalsOf(field))) {
            if (overlap.touch) continue;  // intervals add up, so that nothing is in doubt
            report({overlap.other.element,
                    "leftMargin",
                    overlap.other.Text(),
                    Listed({overlap.one.Text()}),
                    {},
                    field.name});
        }
    }
}

ElementRange MiningFields(const DocumentFacts& facts)
{
    return facts.model.Child(Tags::XML_ELE_MININGSCHEMA).Children(Tags::XML_ELE_MININGFIELD);
}

std::string NameOf(Element field) { return field.Text(Tags::XML_ATT_MININGFIELD_NAME); }

// Limits say something where outliers are treated.
bool TreatsOutliers(Element field)
{
    const std::string outliers = field.Text(Tags::XML_ATT_MININGFIELD_OUTLIERS);
    return outliers == Tags::XML_VAL_MININGFIELD_OUTLIERS_ASMISS ||
           outliers == Tags::XML_VAL_MININGFIELD_OUTLIERS_ASEXTREME;
}

void TellTurnedLimits(const DocumentFacts& facts, bool areUsed, RuleReport& report)
{
    for (const Element field : MiningFields(facts)) {
        const auto low = field.Number(kLow);
        const auto high = field.Number(kHigh);
        if (TreatsOutliers(field) != areUsed || !low || !high || *low <= *high) continue;
        report({field, kLow, field.Text(kLow), field.Text(kHigh), {}, NameOf(field)});
    }
}

void CheckTurnedLimits(const DocumentFacts& facts, RuleReport& report)
{
    TellTurnedLimits(facts, true, report);
}

void CheckUnusedLimits(const DocumentFacts& facts, RuleReport& report)
{
    TellTurnedLimits(facts, false, report);
}

void CheckMissingLimits(const DocumentFacts& facts, RuleReport& report)
{
    for (const Element field : MiningFields(facts)) {
        if (!TreatsOutliers(field) || !field.Text(kLow).empty() || !field.Text(kHigh).empty()) {
            continue;
        }
        const std::string& outliers = Tags::XML_ATT_MININGFIELD_OUTLIERS;
        report({field, outliers, field.Text(outliers), {}, {}, NameOf(field)});
    }
}

void CheckReplacements(const DocumentFacts& facts, RuleReport& report)
{
    for (const Element field : MiningFields(facts)) {
        if (field.Text(kInvalidTreatment) != "asValue") continue;
        if (!field.Text(kInvalidReplacement).empty()) continue;
        report({field, kInvalidReplacement, {}, {}, {}, NameOf(field)});
    }
}

void CheckUnusedReplacements(const DocumentFacts& facts, RuleReport& report)
{
    for (const Element field : MiningFields(facts)) {
        const std::string replacement = field.Text(kInvalidReplacement);
        if (replacement.empty() || field.Text(kInvalidTreatment) == "asValue") continue;
        report({field, kInvalidReplacement, replacement, {}, {}, NameOf(field)});
    }
}

// The treatments that say how a replacement was found.
void CheckMissingTreatments(const DocumentFacts& facts, RuleReport& report)
{
    for (const Element field : MiningFields(facts)) {
        const std::string treatment = field.Text(kMissingTreatment);
        if (treatment != "asValue" && treatment != "asMean" && treatment != "asMedian" &&
            treatment != "asMode") {
            continue;
        }
        if (!field.Text(Tags::XML_ATT_MININGFIELD_MISSREPLACE).empty()) continue;
        report({field, kMissingTreatment, treatment, {}, {}, NameOf(field)});
    }
}

void CheckUsage(const DocumentFacts& facts, RuleReport& report)
{
    for (const Element field : MiningFields(facts)) {
        const std::string usage = field.Text(Tags::XML_ATT_MININGFIELD_USAGETYPE);
        if (usage.empty() || usage == Tags::XML_ATT_MF_FUT_ACTIVE) continue;
        // Another word than the standard's is told as such.
        if (!IsOneOf(usage, WordsOf(field.Tag(), Tags::XML_ATT_MININGFIELD_USAGETYPE))) continue;
        if (facts.predictorNames.Find(field.Raw(Tags::XML_ATT_MININGFIELD_NAME)) ==
            NameIndex::kNone) {
            continue;
        }
        report({field,
                Tags::XML_ATT_MININGFIELD_USAGETYPE,
                usage,
                Tags::XML_ATT_MF_FUT_ACTIVE,
                {},
                NameOf(field)});
    }
}

void CheckRepeatedFields(const DocumentFacts& facts, RuleReport& report)
{
    NameIndex names;
    uint32_t count = 0;
    for (const Element field : MiningFields(facts)) {
        if (names.Add(field.Raw(Tags::XML_ATT_MININGFIELD_NAME)) < count) {
            report({field, Tags::XML_ATT_MININGFIELD_NAME, NameOf(field)});
        } else {
            ++count;
        }
    }
}

constexpr bool kStrict = true;

constexpr AuditRule kRules[] = {
    {{"repeated-value", Answer::Fault, kStrict, "a Value that stands twice in its field",
      "{element} {found} of the field \"{what}\" stands twice",
      "Remove one of the two, or correct it to the value that was meant."},
     CheckRepeatedValues},
    {{"value-of-two-properties", Answer::Fault, kStrict, "a Value that is valid and is not",
      "Value {found} of the field \"{what}\" is {note}",
      "Keep the Value whose property is meant, and remove the other."},
     CheckProperties},
    {{"boolean-value", Answer::Fault, kStrict,
      "a Value of a boolean field that is neither true nor false",
      "Value {found} of the boolean field \"{what}\" is neither true nor false",
      "Write true or false (also T or F, 1 or 0), or give the field the dataType string."},
     CheckTruths},
    {{"empty-interval", Answer::Fault, kStrict, "an Interval that holds no value",
      "Interval {found} of the field \"{what}\" holds no value",
      "Swap leftMargin and rightMargin, or correct them."},
     CheckEmptyIntervals},
    {{"overlapping-intervals", Answer::Fault, kStrict, "Intervals that overlap",
      "Interval {found} of the field \"{what}\" overlaps with {expected}",
      "Correct the margins, or make one Interval of the two."},
     CheckOverlaps},
    {{"repeated-field", Answer::Fault, kStrict, "a MiningField that stands twice and differs",
      "MiningField {found} stands twice, with different attributes",
      "Keep the MiningField that is meant, and remove the other."},
     CheckRepeatedFields},
    {{"inactive-predictor", Answer::Fault, kStrict,
      "a predictor whose usageType says that it is none",
      "{attribute} {found} of the field \"{what}\" says that it is no predictor, and the model "
      "has it as one",
      "Write usageType=\"{expected}\", or take the predictor out of the model."},
     CheckUsage},
    {{"turned-limits", Answer::Fault, kStrict, "a lowValue above the highValue",
      "lowValue {found} of the field \"{what}\" lies above its highValue \"{expected}\"",
      "Swap the two limits, or correct them."},
     CheckTurnedLimits},
    {{"unused-turned-limits", Answer::Notice, kStrict,
      "a lowValue above the highValue where no outliers are treated",
      "lowValue {found} of the field \"{what}\" lies above its highValue \"{expected}\"; neither "
      "counts, since no outliers are treated",
      "Swap the two limits or remove them."},
     CheckUnusedLimits},
    {{"outliers-without-limits", Answer::Notice, kStrict,
      "outliers are treated, and no limit says what is one",
      "outliers {found} of the field \"{what}\" has neither lowValue nor highValue: no value is an "
      "outlier",
      "Give the field its limits, or remove the attribute."},
     CheckMissingLimits},
    {{"no-invalid-replacement", Answer::Fault, kStrict, "asValue without its value",
      "invalidValueTreatment \"asValue\" of the field \"{what}\" has no invalidValueReplacement",
      "Give the field an invalidValueReplacement, or another invalidValueTreatment."},
     CheckReplacements},
    {{"unused-replacement", Answer::Notice, kStrict,
      "a value for invalid ones where asValue isn't there",
      "invalidValueReplacement {found} of the field \"{what}\" is of no use: its "
      "invalidValueTreatment isn't \"asValue\"",
      "Write invalidValueTreatment=\"asValue\", or remove the replacement."},
     CheckUnusedReplacements},
    {{"no-missing-replacement", Answer::Notice, !kStrict,
      "a treatment of missing values without a replacement",
      "missingValueTreatment {found} of the field \"{what}\" has no missingValueReplacement: "
      "missing values stay missing",
      "Give the field the missingValueReplacement that the treatment found."},
     CheckMissingTreatments},
};

}  // namespace

std::span<const AuditRule> FieldRules() { return kRules; }

}  // namespace MCVelscore_850
