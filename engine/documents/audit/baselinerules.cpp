// The baselines of a Cox model: what a time's cumulative hazard can't be, and what would give a
// case the baseline of another stratum, or none.

#include <algorithm>
#include <set>
#include <unordered_set>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/names.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/nearword.h"
#include "host/values/numbertext.h"
#include "host/variables/datatypes.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Stratum = DocumentFacts::Stratum;
using Baseline = DocumentFacts::Baseline;
using HazardCell = DocumentFacts::HazardCell;

// A near word for each of the findings that are kept: looking for one takes time that grows with
// the list.
class NearWords {
public:
    explicit NearWords(const std::vector<std::string>& list) : list_(list) {}
    std::string Of(const std::string& word)
    {
        return ++count_ > Findings::kKeptOfRule ? std::string() : NearWord(word, list_);
    }

private:
    const std::vector<std::string>& list_;
    size_t count_ = 0;
};

// Calls `look(stratum, baseline)` for each.
template <class Look>
void ForEachStratum(const DocumentFacts& facts, Look look)
{
    for (const Baseline& baseline : facts.baselines) {
        for (const Stratum& stratum : baseline.strata) look(stratum, baseline);
    }
}

bool IsEarlier(const HazardCell* one, const HazardCell* other) { return *one->time < *other->time; }

// The cells by time, of one time as the document has them. Those that lack a number are the
// reader's to refuse.
std::vector<const HazardCell*> CellsByTime(const Stratum& stratum)
{
    std::vector<const HazardCell*> cells;
    cells.reserve(stratum.cells.size());
    for (const HazardCell& cell : stratum.cells) {
        if (cell.time && cell.hazard) cells.push_back(&cell);
    }
    if (!std::is_sorted(cells.begin(), cells.end(), IsEarlier)) {
        std::stable_sort(cells.begin(), cells.end(), IsEarlier);
    }
    return cells;
}

Detail AtHazard(const HazardCell& cell)
{
    const std::string& attribute = Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD;
    return {.element = cell.element,
            .attribute = attribute,
            .found = cell.element.Text(attribute),
            .what = cell.element.Text(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME)};
}

// Calls `report(cell, before)` for each cell that `isFault(cell, before)` says so of, where before
// is the cell ahead of it by time.
template <class IsFault>
void LookAtNeighbours(const DocumentFacts& facts, RuleReport& report, IsFault isFault)
{
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline&) {
        const HazardCell* before = nullptr;
        for (const HazardCell* cell : CellsByTime(stratum)) {
            if (before != nullptr && isFault(*cell, *before)) {
                Detail detail = AtHazard(*cell);
                detail.expected =
                    before->element.Text(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD);
                report(detail);
            }
            before = cell;
        }
    });
}

void FallingBaseline(const DocumentFacts& facts, RuleReport& report)
{
    LookAtNeighbours(facts, report, [](const HazardCell& cell, const HazardCell& before) {
        return *cell.time > *before.time && *cell.hazard < *before.hazard;
    });
}

void TwoHazards(const DocumentFacts& facts, RuleReport& report)
{
    LookAtNeighbours(facts, report, [](const HazardCell& cell, const HazardCell& before) {
        return *cell.time == *before.time && *cell.hazard != *before.hazard;
    });
}

void NegativeHazard(const DocumentFacts& facts, RuleReport& report)
{
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline&) {
        for (const HazardCell& cell : stratum.cells) {
            if (cell.hazard && *cell.hazard < 0.0) report(AtHazard(cell));
        }
    });
}

// The model takes the first cell's time for the earliest, and a hazard of 0 before it.
void LateFirstCell(const DocumentFacts& facts, RuleReport& report)
{
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline&) {
        const std::vector<const HazardCell*> cells = CellsByTime(stratum);
        if (cells.empty() || !stratum.cells.front().time) return;
        const HazardCell& first = stratum.cells.front();
        if (*first.time <= *cells.front()->time) return;
        const std::string& attribute = Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME;
        report({.element = first.element,
                .attribute = attribute,
                .found = first.element.Text(attribute),
                .expected = cells.front()->element.Text(attribute)});
    });
}

void EmptyBaseline(const DocumentFacts& facts, RuleReport& report)
{
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline& baseline) {
        if (!stratum.cells.empty()) return;
        report({.element = stratum.element,
                .attribute = baseline.isStratified ? Tags::XML_ATT_VALUE : "",
                .found = stratum.value,
                .what =
                    baseline.isStratified ? "the stratum \"" + stratum.value + "\"" : "the model"});
    });
}

void MissingMaxTime(const DocumentFacts& facts, RuleReport& report)
{
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline&) {
        if (!stratum.maxTimes.empty()) return;
        report({.element = stratum.element, .found = stratum.value});
    });
}

void EarlyMaxTime(const DocumentFacts& facts, RuleReport& report)
{
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline& baseline) {
        const std::vector<const HazardCell*> cells = CellsByTime(stratum);
        if (!stratum.maxTime || cells.empty() || *stratum.maxTime >= *cells.back()->time) return;
        const std::string& attribute =
            baseline.isExtension ? Tags::XML_ATT_VALUE : Tags::XML_ATT_MAXTIME;
        const Element element = stratum.maxTimes.front();
        report(
            {.element = element,
             .attribute = attribute,
             .found = element.Text(attribute),
             .expected = cells.back()->element.Text(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME)});
    });
}

// Of two sections, tables or last times the reader takes none, or one with the other's strata.
void RepeatedBaseline(const DocumentFacts& facts, RuleReport& report)
{
    const auto reportBehindFirst = [&](const std::vector<Element>& elements) {
        for (size_t i = 1; i < elements.size(); ++i) report({.element = elements[i]});
    };
    std::vector<Element> sections;
    for (const Baseline& baseline : facts.baselines) sections.push_back(baseline.element);
    reportBehindFirst(sections);
    ForEachStratum(facts, [&](const Stratum& stratum, const Baseline&) {
        reportBehindFirst(stratum.tables);
        reportBehindFirst(stratum.maxTimes);
    });
}

// ---- strata

std::string StrataAttribute(const DocumentFacts& facts)
{
    return facts.model.Text(Tags::XML_ATT_BASELINESTRATAVARIABLE);
}

// The variable by which the reader finds a case's stratum.
std::string StrataVariable(const DocumentFacts& facts, const Baseline& baseline)
{
    const std::string& first = baseline.strata.front().variable;
    return first.empty() && !baseline.isExtension ? StrataAttribute(facts) : first;
}

const DocumentFacts::Field* StrataField(const DocumentFacts& facts, const Baseline& baseline)
{
    const std::string variable = StrataVariable(facts, baseline);
    const uint32_t number = facts.fieldNames.Find(std::string_view(variable));
    return number == NameIndex::kNone ? nullptr : &facts.fields[number];
}

void StrataWithoutVariable(const DocumentFacts& facts, RuleReport& report)
{
    for (const Baseline& baseline : facts.baselines) {
        if (!baseline.isStratified || !StrataVariable(facts, baseline).empty()) continue;
        report({.element = baseline.element,
                .attribute = baseline.isExtension ? Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME
                                                  : Tags::XML_ATT_BASELINESTRATAVARIABLE,
                .what = std::to_string(baseline.strata.size())});
    }
}

void VariableWithoutStrata(const DocumentFacts& facts, RuleReport& report)
{
    const std::string variable = StrataAttribute(facts);
    if (variable.empty()) return;
    for (const Baseline& baseline : facts.baselines) {
        if (baseline.isStratified) continue;
        report({.element = facts.model,
                .attribute = Tags::XML_ATT_BASELINESTRATAVARIABLE,
                .found = variable});
    }
}

void ContradictingStrataVariables(const DocumentFacts& facts, RuleReport& report)
{
    for (const Baseline& baseline : facts.baselines) {
        const std::string variable = StrataVariable(facts, baseline);
        if (!baseline.isStratified || variable.empty()) continue;
        const auto look = [&](Element element, const std::string& attribute,
                              const std::string& found) {
            if (found.empty() || found == variable) return;
            report(
                {.element = element, .attribute = attribute, .found = found, .expected = variable});
        };
        look(facts.model, Tags::XML_ATT_BASELINESTRATAVARIABLE, StrataAttribute(facts));
        for (const Stratum& stratum : baseline.strata) {
            look(stratum.element, Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME, stratum.variable);
        }
    }
}

Detail AtValue(const Stratum& stratum, const DocumentFacts::Field* field)
{
    return {.element = stratum.element,
            .attribute = Tags::XML_ATT_VALUE,
            .found = stratum.value,
            .what = field == nullptr ? "" : field->name};
}

void RepeatedStratum(const DocumentFacts& facts, RuleReport& report)
{
    for (const Baseline& baseline : facts.baselines) {
        if (!baseline.isStratified) continue;
        const DocumentFacts::Field* field = StrataField(facts, baseline);
        std::unordered_set<std::string> keys;
        for (const Stratum& stratum : baseline.strata) {
            if (keys.insert(KeyOf(field, stratum.value)).second) continue;
            report(AtValue(stratum, field));
        }
    }
}

void UnknownStratum(const DocumentFacts& facts, RuleReport& report)
{
    for (const Baseline& baseline : facts.baselines) {
        const DocumentFacts::Field* field = StrataField(facts, baseline);
        if (!baseline.isStratified || field == nullptr || !field->IsClosed()) continue;
        const std::set<std::string> keys(field->categoryKeys.begin(), field->categoryKeys.end());
        NearWords near(field->categories);
        for (const Stratum& stratum : baseline.strata) {
            if (keys.contains(KeyOf(field, stratum.value))) continue;
            Detail detail = AtValue(stratum, field);
            detail.expected = Listed(field->categories);
            detail.nearWord = near.Of(stratum.value);
            report(detail);
        }
    }
}

// Rows of such a value are refused, each with its status.
void ValueWithoutStratum(const DocumentFacts& facts, RuleReport& report)
{
    for (const Baseline& baseline : facts.baselines) {
        const DocumentFacts::Field* field = StrataField(facts, baseline);
        if (!baseline.isStratified || field == nullptr) continue;
        std::unordered_set<std::string> keys;
        for (const Stratum& stratum : baseline.strata) keys.insert(KeyOf(field, stratum.value));
        for (size_t i = 0; i < field->categories.size(); ++i) {
            if (keys.contains(field->categoryKeys[i])) continue;
            report(
                {.element = baseline.element, .found = field->categories[i], .what = field->name});
        }
    }
}

// The model compares a date with the text of a stratum by its plain number, which nobody writes.
void StrataOfDates(const DocumentFacts& facts, RuleReport& report)
{
    for (const Baseline& baseline : facts.baselines) {
        const DocumentFacts::Field* field = StrataField(facts, baseline);
        const DataType* type = field == nullptr ? nullptr : FindDataType(field->dataType);
        if (!baseline.isStratified || type == nullptr) continue;
        if (type->dateTimeType == ScoreDictVar::NOT_DATETIME) continue;
        report({.element = field->element,
                .attribute = "dataType",
                .found = field->dataType,
                .what = field->name});
    }
}

void StartTimeUnused(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsAmong(kCoxFamilies)) return;
    for (const DocumentFacts::Option& option : facts.options) {
        if (option.name != Tags::XML_EXT_NAME_COXREG_STARTTIMEVARIABLE) continue;
        report({.element = option.element,
                .attribute = option.Attribute(),
                .found = option.value,
                .what = option.name});
    }
}

// What a Cox model alone reads: without it the model is most likely another one than it seems.
void CoxPartNotRead(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family || facts.IsAmong(kCoxFamilies)) return;
    const std::string family = FamilyOf(*facts.family).name;
    const std::string* const names[] = {&Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE,
                                        &Tags::XML_ATT_BASELINESTRATAVARIABLE,
                                        &Tags::XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES};
    for (const DocumentFacts::Option& option : facts.options) {
        const bool isPart = std::any_of(std::begin(names), std::end(names),
                                        [&](const auto* name) { return *name == option.name; });
        if (!isPart) continue;
        report({.element = option.element,
                .attribute = option.isExtension ? Tags::XML_ATT_EXT_NAME : option.name,
                .found = option.isExtension ? option.name : option.value,
                .expected = family,
                .what = option.name});
    }
    if (const Element section = facts.model.Child(Tags::XML_ELM_BASECUMHAZARDTABLES)) {
        report({.element = section, .expected = family, .what = Tags::XML_ELM_BASECUMHAZARDTABLES});
    }
}

// ---- base points

void UnknownBasePoint(const DocumentFacts& facts, RuleReport& report)
{
    const std::vector<std::string>& names = facts.parameterNames.Names();
    NearWords near(names);
    for (const DocumentFacts::BasePoint& point : facts.basePoints) {
        if (facts.parameterNames.Find(std::string_view(point.parameter)) != NameIndex::kNone) {
            continue;
        }
        report({.element = point.element,
                .attribute = Tags::XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME,
                .found = point.parameter,
                .expected = Listed(names),
                .nearWord = near.Of(point.parameter)});
    }
}

void TwoBasePoints(const DocumentFacts& facts, RuleReport& report)
{
    std::unordered_map<std::string, const std::string*> points;
    for (const DocumentFacts::BasePoint& point : facts.basePoints) {
        const auto [first, isNew] = points.emplace(point.parameter, &point.value);
        if (isNew || *first->second == point.value || AreOneNumber(*first->second, point.value)) {
            continue;
        }
        report({.element = point.element,
                .attribute = Tags::XML_ATT_EXT_VALUE,
                .found = point.value,
                .expected = *first->second,
                .what = point.parameter});
    }
}

constexpr bool kStrict = true;
constexpr bool kNotStrict = false;

constexpr AuditRule kRules[] = {
    {{"falling-baseline", Answer::Fault, kStrict,
      "a cumulative hazard below that of the time before",
      "{attribute} {found} at the time {what} is below that of the time before, {expected}",
      "Correct the cumulative hazards, which never fall, or the times that they belong to."},
     FallingBaseline},
    {{"negative-hazard", Answer::Fault, kStrict, "a cumulative hazard below 0",
      "{attribute} is {found} at the time {what}, below 0",
      "Correct it: a negative cumulative hazard would make a survival above 1."},
     NegativeHazard},
    {{"two-hazards", Answer::Fault, kStrict, "two cumulative hazards for one time",
      "{attribute} {found} at the time {what}, which has {expected} already",
      "Leave one cell for each time."},
     TwoHazards},
    {{"late-first-cell", Answer::Fault, kStrict, "a baseline whose first cell isn't its earliest",
      "the first cell has the time {found}, and a later one {expected}: times before the first "
      "cell's would count as before any event",
      "Put the cells in the order of their times."},
     LateFirstCell},
    {{"empty-baseline", Answer::Fault, kStrict, "a baseline or stratum without cells",
      "{element} has no cells: {what} has no baseline to be scored by",
      "Export the model with the baseline cumulative hazard of each stratum."},
     EmptyBaseline},
    {{"missing-max-time", Answer::Fault, kStrict, "a baseline without its last time",
      "{element} has no X-BaseMaxTime, the last time that its baseline holds for",
      "Write <X-BaseMaxTime value=\"...\"/> beside its X-BaseCumHazardTable."},
     MissingMaxTime},
    {{"early-max-time", Answer::Fault, kStrict, "a last time before that of the last cell",
      "the last time {found} lies before the last cell's, {expected}",
      "Write a time that isn't before the last cell's: times behind it have no survival."},
     EarlyMaxTime},
    {{"repeated-baseline", Answer::Fault, kStrict, "a second baseline where one is read",
      "a second {element} stands where one baseline is read", "Leave one."},
     RepeatedBaseline},
    {{"strata-without-variable", Answer::Fault, kStrict,
      "strata without the variable by which a case finds its own",
      "{element} has {what} strata and no {attribute} by which a case finds its own",
      "Write in {attribute} the field by which the model is stratified."},
     StrataWithoutVariable},
    {{"variable-without-strata", Answer::Fault, kStrict, "the variable of strata without any",
      "{attribute} is {found}, and the baseline has no strata",
      "Export the model with the baseline of each stratum, or take {attribute} out."},
     VariableWithoutStrata},
    {{"contradicting-strata-variables", Answer::Fault, kStrict,
      "two variables of strata that contradict each other",
      "{attribute} {found} contradicts \"{expected}\", by which a case finds its stratum",
      "Name one field for all strata."},
     ContradictingStrataVariables},
    {{"repeated-stratum", Answer::Fault, kStrict, "two baselines for one stratum",
      "there is a baseline for the stratum {found} already, which is the one that counts",
      "Leave one baseline for each value of the field, or correct the value."},
     RepeatedStratum},
    {{"unknown-stratum", Answer::Fault, kStrict,
      "a stratum that its variable doesn't have as a value",
      "the stratum {found} is none of the values of {what}: {expected}{meant}",
      "Write the value as the field lists it."},
     UnknownStratum},
    {{"strata-of-dates", Answer::Fault, kStrict,
      "strata of a field of dates or times, which no case would find",
      "the strata are those of {what}, whose type is {found}: no case would find its own",
      "Write dataType=\"string\" in the field {what}: cases find their strata by its texts then."},
     StrataOfDates},
    {{"value-without-stratum", Answer::Notice, kNotStrict,
      "a value of the stratum variable that has no baseline: its rows can't be scored",
      "no stratum has the value {found} of {what}: rows of it can't be scored",
      "Nothing, where no such row comes; else export the model with that baseline too."},
     ValueWithoutStratum},
    {{"cox-part-not-read", Answer::Fault, kStrict,
      "an end time, strata or a baseline in a model that isn't read as Cox regression",
      "{what} belongs to Cox regression, and the model is read as {expected}",
      "Write modelType=\"CoxRegression\", or take out what belongs to it."},
     CoxPartNotRead},
    {{"start-time-unused", Answer::Notice, kNotStrict,
      "a start time: survival is that from time 0 on",
      "{what} {found} isn't read: survival is that from time 0 to the end time",
      "Nothing, where that is wanted; the survival from start to end is the ratio of those at the "
      "two times."},
     StartTimeUnused},
    {{"unknown-base-point", Answer::Fault, kStrict, "a base point of no parameter",
      "the base point of {found} is for no parameter; there are {expected}{meant}",
      "Name a parameter of ParameterList."},
     UnknownBasePoint},
    {{"two-base-points", Answer::Fault, kStrict,
      "two base points of a parameter that contradict each other",
      "the base point {found} of parameter \"{what}\" contradicts {expected}, which is the one "
      "that "
      "counts",
      "Leave one base point for each parameter."},
     TwoBasePoints},
};

}  // namespace

std::span<const AuditRule> BaselineRules() { return kRules; }

}  // namespace MCVelscore_850
