// Expressions of derived fields, of functions and of output fields.

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/audit/fieldvalues.h"
#include "engine/documents/names.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/nearword.h"
#include "host/values/numbertext.h"
#include "host/variables/datatypes.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kField = "field";
const std::string kBin = "DiscretizeBin";

// An expression and whose it is.
struct Place {
    Element element;
    const std::string& owner;  ///< the derived field, output field or function
    bool seesFields;           ///< false in a function, which sees its parameters alone
};

using Visit = std::function<void(const Place&)>;

// The guard bounds the depth, and with it this recursion.
void VisitExpressions(const Place& parent, const Visit& visit)
{
    for (const Element child : parent.element.Children()) {
        if (child.Is(Tags::XML_ELE_EXTENSION)) continue;
        const Place place{child, parent.owner, parent.seesFields};
        visit(place);
        if (child.Is("Apply")) VisitExpressions(place, visit);
    }
}

// All expressions of the document, the arguments of functions among them.
void ForEachExpression(const DocumentFacts& facts, const Visit& visit)
{
    for (const Element section :
         {facts.root.Child(Tags::XML_ELE_TRANSFORMATION),
          facts.model.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS), facts.model.Child("Output")}) {
        for (const Element owner : section.Children()) {
            const std::string name = owner.Text(Tags::XML_ATT_NAME);
            VisitExpressions({owner, name, !owner.Is("DefineFunction")}, visit);
        }
    }
}

bool HasExpressions(const DocumentFacts& facts)
{
    bool has = false;
    ForEachExpression(facts, [&](const Place&) { has = true; });
    return has;
}

// What the expressions know of fields: of output fields nothing, which go before fields of the same
// name.
class Sources {
public:
    explicit Sources(const DocumentFacts& facts) : facts_(facts), closed_(facts)
    {
        for (const Element field : facts.model.Child("Output").Children("OutputField")) {
            outputs_.insert(field.Text(Tags::XML_ATT_NAME));
        }
    }
    const ClosedValues* Closed(const Place& place, const std::string& name) const
    {
        return IsField(place, name) ? closed_.Find(name) : nullptr;
    }
    std::string TypeOf(const Place& place, const std::string& name) const
    {
        const uint32_t number = facts_.fieldNames.Find(name);
        if (!IsField(place, name) || number == NameIndex::kNone) return {};
        return facts_.fields[number].dataType;
    }

private:
    bool IsField(const Place& place, const std::string& name) const
    {
        return place.seesFields && !outputs_.contains(name);
    }

    const DocumentFacts& facts_;
    ClosedFields closed_;
    std::unordered_set<std::string> outputs_;
};

// A text that an expression looks for in a field.
struct Wanted {
    Element element;
    std::string attribute;
    std::string text;
};

// Whether texts that a field doesn't list are misspelt, or just of no use.
class Unlisted {
public:
    Unlisted(const ClosedValues& values, const std::vector<Wanted>& wanted) : values_(values)
    {
        std::unordered_set<std::string> met;
        for (const Wanted& each : wanted) met.insert(ValueKey(*values.field, each.text));
        for (const std::string& text : values.listed) {
            if (!met.contains(ValueKey(*values.field, text))) unmet_.push_back(text);
        }
    }
    bool LeavesNoneUnmet() const { return unmet_.empty(); }
    bool MeetsNone() const { return unmet_.size() == values_.listed.size(); }
    // Of numbers none is nearer in its spelling. Of many candidates each text would cost too
    // much.
    std::string Near(const std::string& text)
    {
        constexpr size_t kMostCandidates = 200;
        if (IsNumericType(values_.field->dataType) || unmet_.size() > kMostCandidates ||
            triesLeft_ == 0) {
            return {};
        }
        --triesLeft_;
        return NearWord(text, unmet_);
    }

private:
    const ClosedValues& values_;
    std::vector<std::string> unmet_;  // the listed values that nothing looks for
    size_t triesLeft_ = Findings::kKeptOfRule;
};

enum class Verdict { Misspelt, Constant, OfNoUse };

// What a text that its field never has is where no listed value is near: in an indicator, in a
// table with rows for all values or not, in a comparison with some listed values or none.
enum class Use { Indicator, Table, Comparison };
Verdict VerdictOf(Use use, const Unlisted& unlisted)
{
    switch (use) {
        case Use::Indicator: return Verdict::Misspelt;
        case Use::Table: return unlisted.LeavesNoneUnmet() ? Verdict::OfNoUse : Verdict::Misspelt;
        case Use::Comparison: return unlisted.MeetsNone() ? Verdict::Constant : Verdict::OfNoUse;
    }
    return Verdict::Misspelt;
}

// Calls `tell(verdict, detail)` for the texts that the field never has.
template <class Tell>
void JudgeWanted(const ClosedValues& values, const std::vector<Wanted>& wanted, Use use, Tell tell)
{
    const bool allHave = std::all_of(wanted.begin(), wanted.end(),
                                     [&](const Wanted& each) { return values.Has(each.text); });
    if (allHave) return;
    Unlisted unlisted(values, wanted);
    const Verdict verdict = VerdictOf(use, unlisted);
    for (const Wanted& each : wanted) {
        if (values.Has(each.text)) continue;
        const std::string near = unlisted.Near(each.text);
        tell(near.empty() ? verdict : Verdict::Misspelt,
             Detail{each.element, each.attribute, each.text, "one of " + Listed(values.listed),
                    near, values.field->name});
    }
}

std::string WithoutPrefix(const std::string& name) { return std::string(LocalNameOf(name)); }

// The rows of a table of the document.
template <class Take>
void ForEachRow(Element mapValues, Take take)
{
    for (const Element row : mapValues.Child("InlineTable").Children()) {
        if (LocalNameOf(row.Tag()) == "row") take(row);
    }
}

Element CellOf(Element row, const std::string& column)
{
    Element found;
    for (const Element cell : row.Children()) {
        if (LocalNameOf(cell.Tag()) == column) found = cell;  // the last one counts
    }
    return found;
}

std::vector<Wanted> CellsOf(Element mapValues, const std::string& column)
{
    std::vector<Wanted> cells;
    ForEachRow(mapValues, [&](Element row) {
        const Element cell = CellOf(row, column);
        if (cell) cells.push_back({cell, {}, cell.Content()});
    });
    return cells;
}

// The constants that an Apply compares a field with, and the field; no field for any other Apply.
struct Comparison {
    std::string field;
    std::vector<Wanted> constants;
};

Comparison ComparisonOf(Element apply)
{
    static const std::set<std::string> kFunctions = {"equal", "notEqual", "isIn", "isNotIn"};
    if (!kFunctions.contains(apply.Text("function"))) return {};
    Comparison comparison;
    for (const Element argument : apply.Children()) {
        if (argument.Is(Tags::XML_ELE_EXTENSION)) continue;
        if (argument.Is("FieldRef") && comparison.field.empty() && !argument.Has("mapMissingTo")) {
            comparison.field = argument.Text(kField);
        } else if (argument.Is("Constant") && !argument.Has("missing")) {
            comparison.constants.push_back({argument, {}, argument.Content()});
        } else {
            return {};
        }
    }
    return comparison;
}

template <class Tell>
void JudgeExpression(const Sources& sources, const Place& place, Tell tell)
{
    const Element element = place.element;
    if (element.Is("NormDiscrete")) {
        const ClosedValues* values = sources.Closed(place, element.Text(kField));
        if (values == nullptr) return;
        const std::string& attribute = Tags::XML_ATT_VALUE;
        JudgeWanted(*values, {{element, attribute, element.Text(attribute)}}, Use::Indicator, tell);
    } else if (element.Is("Apply")) {
        const Comparison comparison = ComparisonOf(element);
        const ClosedValues* values = sources.Closed(place, comparison.field);
        if (values != nullptr) JudgeWanted(*values, comparison.constants, Use::Comparison, tell);
    } else if (element.Is("MapValues")) {
        for (const Element pair : element.Children("FieldColumnPair")) {
            const ClosedValues* values = sources.Closed(place, pair.Text(kField));
            if (values == nullptr) continue;
            JudgeWanted(*values, CellsOf(element, WithoutPrefix(pair.Text("column"))), Use::Table,
                        tell);
        }
    }
}

void CheckValues(const DocumentFacts& facts, RuleReport& report, Verdict wanted)
{
    if (!HasExpressions(facts)) return;
    const Sources sources(facts);
    ForEachExpression(facts, [&](const Place& place) {
        JudgeExpression(sources, place, [&](Verdict verdict, const Detail& detail) {
            if (verdict == wanted) report(detail);
        });
    });
}

void CheckMisspeltValues(const DocumentFacts& facts, RuleReport& report)
{
    CheckValues(facts, report, Verdict::Misspelt);
}

void CheckConstants(const DocumentFacts& facts, RuleReport& report)
{
    CheckValues(facts, report, Verdict::Constant);
}

void CheckValuesOfNoUse(const DocumentFacts& facts, RuleReport& report)
{
    CheckValues(facts, report, Verdict::OfNoUse);
}

// Cells of a column of numbers that no number meets.
void CheckCellTypes(const DocumentFacts& facts, RuleReport& report)
{
    if (!HasExpressions(facts)) return;
    const Sources sources(facts);
    ForEachExpression(facts, [&](const Place& place) {
        if (!place.element.Is("MapValues")) return;
        for (const Element pair : place.element.Children("FieldColumnPair")) {
            const std::string field = pair.Text(kField);
            const DataType* type = FindDataType(sources.TypeOf(place, field));
            if (type == nullptr || type->valueType != ScoreDictVar::NUMERIC) continue;
            for (const Wanted& cell : CellsOf(place.element, WithoutPrefix(pair.Text("column")))) {
                double number = 0.0;
                if (ReadNumber(cell.text, number) == NumberText::Number) continue;
                report({cell.element, {}, cell.text, "a number", {}, field});
            }
        }
    });
}

// Rows of the same cells, of which the first counts, with another outcome.
void CheckRows(const DocumentFacts& facts, RuleReport& report)
{
    ForEachExpression(facts, [&](const Place& place) {
        if (!place.element.Is("MapValues")) return;
        std::vector<std::string> columns;
        for (const Element pair : place.element.Children("FieldColumnPair")) {
            columns.push_back(WithoutPrefix(pair.Text("column")));
        }
        const std::string output = WithoutPrefix(place.element.Text("outputColumn"));
        std::unordered_map<std::string, std::string> outcomes;  // by cells
        ForEachRow(place.element, [&](Element row) {
            std::vector<std::string> cells;
            std::string key;
            for (const std::string& column : columns) {
                const Element cell = CellOf(row, column);
                if (!cell) return;  // refused by the reader, which says what is missing
                cells.push_back(cell.Content());
                key += cells.back() + '\0';  // no text of a document holds it
            }
            const std::string outcome = CellOf(row, output).Content();
            const auto [first, isNew] = outcomes.emplace(key, outcome);
            if (isNew || first->second == outcome || cells.empty()) return;
            report({row, {}, outcome, Listed({first->second}), {}, Listed(cells)});
        });
    });
}

std::vector<FieldInterval> BinsOf(const Sources& sources, const Place& place)
{
    std::vector<FieldInterval> bins;
    if (!place.element.Is("Discretize")) return bins;
    const std::string type = sources.TypeOf(place, place.element.Text(kField));
    for (const Element bin : place.element.Children(kBin)) {
        if (auto interval = ReadFieldInterval(bin.Child("Interval"), type)) {
            bins.push_back(*interval);
        }
    }
    return bins;
}

// A text is in no bin and on no line, even one that spells a number.
void CheckTextsAsNumbers(const DocumentFacts& facts, RuleReport& report)
{
    if (!HasExpressions(facts)) return;
    const Sources sources(facts);
    ForEachExpression(facts, [&](const Place& place) {
        if (!place.element.Is("Discretize") && !place.element.Is("NormContinuous")) return;
        const std::string field = place.element.Text(kField);
        const std::string type = sources.TypeOf(place, field);
        if (type != "string" && type != "boolean") return;
        report({.element = place.element,
                .attribute = kField,
                .found = field,
                .expected = "a field of numbers",
                .what = place.owner,
                .note = type});
    });
}

void CheckEmptyBins(const DocumentFacts& facts, RuleReport& report)
{
    if (!HasExpressions(facts)) return;
    const Sources sources(facts);
    ForEachExpression(facts, [&](const Place& place) {
        for (const FieldInterval& bin : BinsOf(sources, place)) {
            if (!bin.IsEmpty()) continue;
            report({bin.element, "leftMargin", bin.Text(), {}, {}, place.owner});
        }
    });
}

void CheckBins(const DocumentFacts& facts, RuleReport& report, bool touch)
{
    if (!HasExpressions(facts)) return;
    const Sources sources(facts);
    const auto valueOf = [](const FieldInterval& bin) {
        return bin.element.Parent().Text("binValue");
    };
    ForEachExpression(facts, [&](const Place& place) {
        for (const IntervalOverlap& overlap : FindOverlaps(BinsOf(sources, place))) {
            if (overlap.touch != touch || valueOf(overlap.one) == valueOf(overlap.other)) continue;
            report({overlap.other.element,
                    "leftMargin",
                    overlap.other.Text(),
                    Listed({overlap.one.Text()}),
                    {},
                    place.owner});
        }
    });
}

void CheckOverlappingBins(const DocumentFacts& facts, RuleReport& report)
{
    CheckBins(facts, report, false);
}

void CheckTouchingBins(const DocumentFacts& facts, RuleReport& report)
{
    CheckBins(facts, report, true);
}

constexpr bool kStrict = true;

constexpr AuditRule kRules[] = {
    {{"unlisted-value", Answer::Fault, kStrict,
      "NormDiscrete, MapValues or the like of a value that the field never has",
      "{found} is looked for in the field \"{what}\", which never has it{meant}",
      "Write the value as the field has it ({expected}), or list it in the field."},
     CheckMisspeltValues},
    {{"constant-comparison", Answer::Notice, kStrict,
      "a comparison with a value that the field never has",
      "the field \"{what}\" is compared with {found}, which it never has: the outcome is always "
      "the "
      "same",
      "Compare with a value that the field has ({expected}), or list the value in the field."},
     CheckConstants},
    {{"unused-value", Answer::Notice, !kStrict,
      "a row of a table for a value that the field never has",
      "{found} is looked for in the field \"{what}\", which never has it",
      "Nothing needs to be done, unless the field should list the value."},
     CheckValuesOfNoUse},
    {{"cell-without-number", Answer::Fault, kStrict,
      "a cell of a table that is no number, for a field of numbers",
      "a cell of MapValues holds {found}, and the field \"{what}\" holds numbers",
      "Write a number, or remove the row."},
     CheckCellTypes},
    {{"contradicting-rows", Answer::Fault, kStrict,
      "two rows of a table for the same cells that differ",
      "row of {what} maps to {found}, and a row before it to {expected}",
      "Remove the row that isn't meant."},
     CheckRows},
    {{"text-as-number", Answer::Fault, kStrict, "a field of texts in Discretize or NormContinuous",
      "{element} of \"{what}\" reads the field {found} as a number; its dataType is {note}",
      "Name a field of numbers, correct the field's dataType, or use MapValues."},
     CheckTextsAsNumbers},
    {{"empty-bin", Answer::Fault, kStrict, "a bin that holds no value",
      "bin {found} of \"{what}\" holds no value",
      "Swap leftMargin and rightMargin, or correct them."},
     CheckEmptyBins},
    {{"overlapping-bins", Answer::Fault, kStrict, "bins that overlap and differ",
      "bin {found} of \"{what}\" overlaps with {expected}, and their values differ",
      "Correct the margins, so that every number falls into one bin."},
     CheckOverlappingBins},
    {{"touching-bins", Answer::Notice, kStrict, "bins that share the number between them",
      "bins {expected} and {found} of \"{what}\" share the number between them, which goes to the "
      "first of them in the document",
      "Make one of the two open at that end (closure)."},
     CheckTouchingBins},
};

}  // namespace

std::span<const AuditRule> TransformationRules() { return kRules; }

}  // namespace MCVelscore_850
