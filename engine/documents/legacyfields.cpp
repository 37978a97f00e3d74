#include "engine/documents/legacyfields.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>

#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

namespace {

using Old = ZELTModelTags;
using Tags = PMMLModelTags;

constexpr double kNoBound = std::numeric_limits<double>::infinity();

struct DeclaredValue {
    std::string text;
    std::string display;
    bool missing = false;
};

// One end of a range: a number as the document writes it; without text there is no bound.
struct Bound {
    std::string text;
    double number;
};

struct Range {
    Bound low;
    Bound high;
};

// The values of a declaration, each once: the first of two alike counts, whatever it says.
class ValueList {
public:
    explicit ValueList(bool numeric) : numeric_(numeric) {}

    void Add(DeclaredValue value)
    {
        if (seen_.insert(numeric_ ? NumericValue(NumberOf(value.text)).GetString() : value.text)
                .second) {
            values_.push_back(std::move(value));
        }
    }
    const std::vector<DeclaredValue>& Get() const { return values_; }
    bool HasValid() const
    {
        return std::any_of(values_.begin(), values_.end(),
                           [](const auto& v) { return !v.missing; });
    }

private:
    bool numeric_;
    std::set<std::string> seen_;
    std::vector<DeclaredValue> values_;
};

bool IsNumeric(const ScoreDictVar& var) { return var.GetValueType() == ScoreDictVar::NUMERIC; }
bool IsContinuous(const ScoreDictVar& var)
{
    return var.GetMeasureLevel() == ScoreDictVar::CONTINUOUS;
}

ValueList DeclaredValues(const LegacyVariable& variable)
{
    ValueList values(IsNumeric(*variable.var));
    for (const Element part : variable.element.Children()) {
        // In the document's order: a value that is both counts as what it is first.
        for (const Element category : part.Children(Old::XML_ELE_CATEGORY)) {
            values.Add({category.Text(Old::XML_ATT_VALUE),
                        category.Text(Old::XML_ATT_CA_DISPLAY_VALUE), false});
        }
        for (const Element missing : part.Children(Old::XML_ATT_VALUE)) {
            values.Add({missing.Text(Old::XML_ATT_VALUE), "", true});
        }
    }
    return values;
}

Bound BoundOf(const std::string& text, const std::string& none, double noBound)
{
    Bound bound{text, noBound};
    if (text == none) {
        bound.text.clear();
    } else {
        bound.number = NumberOf(text);
    }
    return bound;
}

// The missing ranges of a variable of numbers, from the lowest on, those that overlap as one. A
// text lies in no range, and an inverted one holds nothing.
std::vector<Range> MissingRanges(const LegacyVariable& variable)
{
    std::vector<Range> ranges;
    if (!IsNumeric(*variable.var)) return ranges;
    for (const Element part : variable.element.Children(Old::XML_ELE_MISSING_VALUES)) {
        for (const Element range : part.Children(Old::XML_ELE_RANGE)) {
            Range found{
                BoundOf(range.Text(Old::XML_ATT_VS_MIN), Old::XML_VAL_VA_LOWEST, -kNoBound),
                BoundOf(range.Text(Old::XML_ATT_VS_MAX), Old::XML_VAL_VA_HIGHEST, kNoBound)};
            if (found.low.number <= found.high.number) ranges.push_back(std::move(found));
        }
    }
    std::stable_sort(ranges.begin(), ranges.end(),
                     [](const Range& a, const Range& b) { return a.low.number < b.low.number; });
    std::vector<Range> merged;
    for (Range& range : ranges) {
        if (merged.empty() || range.low.number > merged.back().high.number) {
            merged.push_back(std::move(range));
        } else if (range.high.number > merged.back().high.number) {
            merged.back().high = std::move(range.high);
        }
    }
    return merged;
}

void AddInterval(Element field, const Bound& low, const Bound& high)
{
    const Element interval = field.Append("Interval");
    interval.SetText("closure", "openOpen");
    if (!low.text.empty()) interval.SetText("leftMargin", low.text);
    if (!high.text.empty()) interval.SetText("rightMargin", high.text);
}

// The numbers in none of the ranges; false when there is none.
bool AddIntervalsAround(Element field, const std::vector<Range>& ranges)
{
    bool any = false;
    Bound reached{"", -kNoBound};
    for (const Range& range : ranges) {
        if (range.low.number > reached.number) {
            AddInterval(field, reached, range.low);
            any = true;
        }
        reached = range.high;
    }
    if (reached.number == kNoBound) return any;  // exact: no bound at all
    AddInterval(field, reached, {"", kNoBound});
    return true;
}

bool LiesInOne(const std::vector<Range>& ranges, const std::string& text)
{
    const double number = NumberOf(text);
    const auto above =
        std::upper_bound(ranges.begin(), ranges.end(), number,
                         [](double value, const Range& range) { return value < range.low.number; });
    return above != ranges.begin() && number <= std::prev(above)->high.number;
}

ScoreDictVar::MeasureLevel LevelOf(const LegacyVariable& variable)
{
    switch (variable.use) {
        case FieldUse::Factor:
            return IsContinuous(*variable.var) ? ScoreDictVar::CATEGORICAL
                                               : variable.var->GetMeasureLevel();
        case FieldUse::Covariate:
        case FieldUse::MeanTarget: return ScoreDictVar::CONTINUOUS;
        case FieldUse::CategoryTarget:
        case FieldUse::None: break;
    }
    return variable.var->GetMeasureLevel();
}

const char* OpTypeOf(ScoreDictVar::MeasureLevel level)
{
    switch (level) {
        case ScoreDictVar::CONTINUOUS: return "continuous";
        case ScoreDictVar::ORDINAL: return "ordinal";
        case ScoreDictVar::CATEGORICAL: break;
    }
    return "categorical";
}

void AddMissingRanges(Element field, const LegacyVariable& variable, const ValueList& values,
                      ScoreDictVar::MeasureLevel level)
{
    const std::vector<Range> ranges = MissingRanges(variable);
    if (ranges.empty()) return;
    const bool matters = variable.use != FieldUse::None && variable.use != FieldUse::MeanTarget;
    bool said = true;
    if (values.HasValid()) {
        // What isn't listed isn't valid anyway, so a range around the list says nothing more.
        said = std::none_of(values.Get().begin(), values.Get().end(), [&](const auto& value) {
            return !value.missing && LiesInOne(ranges, value.text);
        });
    } else {
        said = level == ScoreDictVar::CONTINUOUS && AddIntervalsAround(field, ranges);
    }
    if (said || !matters) return;
    RefuseAt(variable.element, kMissingRangeOfList, variable.var->GetName().c_str());
}

}  // namespace

double NumberOf(const std::string& text)
{
    double number = NumericValue::GetSysmisValue();
    ReadNumber(text, number);
    return number;
}

void AddDataField(Element dictionary, const LegacyVariable& variable)
{
    const ScoreDictVar& var = *variable.var;
    const ScoreDictVar::MeasureLevel level = LevelOf(variable);
    ValueList values = DeclaredValues(variable);
    const bool isFactor = variable.use == FieldUse::Factor;
    // Any number may meet a factor that lists no valid value, declared as one or continuous; once a
    // value is declared missing the field would be closed to those that no cell names.
    const bool isOpen = IsContinuous(var) ? !values.HasValid() : var.HasOpenCategories();
    const bool anyNumber = isFactor && isOpen && IsNumeric(var);
    // Likewise any text, whose cells tell their categories here.
    const bool anyText = isFactor && isOpen && !IsNumeric(var);
    if (anyText || (!IsContinuous(var) && !var.HasOpenCategories())) {
        for (const std::string& text : variable.cellValues) values.Add({text, "", false});
    }

    const Element field = dictionary.Append("DataField");
    field.SetText(Tags::XML_ATT_NAME, var.GetName());
    const std::string label = variable.element.Text(Old::XML_ATT_LABEL);
    if (!label.empty()) field.SetText("displayName", label);
    field.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, OpTypeOf(level));
    field.SetText("dataType", IsNumeric(var) ? "double" : "string");
    if ((anyNumber || anyText) && !values.Get().empty()) AcceptUnlisted(field);
    AddMissingRanges(field, variable, values, level);
    for (const DeclaredValue& value : values.Get()) {
        const Element element = field.Append(Tags::XML_ELE_VALUE);
        element.SetText(Tags::XML_ATT_VALUE_VALUE, value.text);
        if (!value.display.empty()) element.SetText("displayValue", value.display);
        if (value.missing) element.SetText("property", "missing");
    }
}

}  // namespace MCVelscore_850
