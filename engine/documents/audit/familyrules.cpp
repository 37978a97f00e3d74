// Whether what stands beside the tables of a model belongs to its family, and agrees.

#include <algorithm>
#include <array>
#include <initializer_list>
#include <unordered_set>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/audit/nearnames.h"
#include "engine/documents/names.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/nearword.h"
#include "host/model/modeldescription.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Option = DocumentFacts::Option;
using Options = std::vector<const Option*>;
using Word = std::string_view;

constexpr FamilySet kGeneralized = Family(kGeneralizedLinear);
constexpr FamilySet kOwnLink = kGeneralized | kOrdinalFamilies;
constexpr FamilySet kLinearFamilies = Family(kLinear) | Family(kGeneralLinear);

std::string FamilyName(const DocumentFacts& facts) { return FamilyOf(*facts.family).name; }

template <class List>
bool Among(const List& list, Word word)
{
    return std::find(list.begin(), list.end(), word) != list.end();
}

template <class List>
std::string Words(const List& words)
{
    std::string text;
    for (const Word word : words) {
        if (!text.empty()) text += ", ";
        text.append("\"").append(word).append("\"");
    }
    return text.empty() ? "none" : text;
}

std::optional<double> NumberOf(const std::string& text)
{
    double number = 0.0;
    if (ReadNumber(text, number) != NumberText::Number) return std::nullopt;
    return number;
}

bool SameValue(const std::string& one, const std::string& other)
{
    return one == other || AreOneNumber(one, other);
}

Detail At(const Option& option)
{
    return {.element = option.element,
            .attribute = option.Attribute(),
            .found = option.value,
            .what = option.name};
}

// ---- which options a family reads

// The families that read an option as an attribute of the model, and as an extension.
struct OptionReading {
    const std::string& name;
    FamilySet attribute;
    FamilySet extension;
};

const OptionReading kReadings[] = {
    {Tags::XML_VAL_RM_EXT_NAME_LINK, kGeneralized | Family(kOrdinal),
     kGeneralized | Family(kOrdinalGeneralized)},
    {Tags::XML_ATT_RM_NAME_CUMULATIVELINK, Family(kOrdinalGeneralized), 0},
    {Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION, kGeneralized | Family(kOrdinalGeneralized),
     kGeneralized | Family(kOrdinalGeneralized)},
    {Tags::XML_ATT_RM_EXT_NAME_LINK_PARAM, kGeneralized, kGeneralized},
    {Tags::XML_ATT_RM_EXT_NAME_DIST_PARAM, kGeneralized, 0},
    // The generalized ordinal family knows an offset variable and adds something else.
    {Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR, kGeneralized | Family(kOrdinal), kGeneralized},
    {Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE, kOwnLink, kGeneralized | Family(kOrdinalGeneralized)},
    {Tags::XML_VAL_RM_EXT_NAME_TRIALVAR, kGeneralized, kGeneralized},
    {Tags::XML_ATT_RM_EXT_NAME_TRIALS_VALUE, kGeneralized, kGeneralized},
    {Tags::XML_ATT_RM_EXT_NAME_CUTOFF, 0, Family(kBinary)},
    {Tags::XML_VAL_NAME_MODELDF, kAllFamilies, kAllFamilies},
    {Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE, kCoxFamilies, kCoxFamilies},
};

bool IsRead(const DocumentFacts& facts, const Option& option)
{
    return std::any_of(std::begin(kReadings), std::end(kReadings), [&](const auto& reading) {
        return reading.name == option.name &&
               facts.IsAmong(option.isExtension ? reading.extension : reading.attribute);
    });
}

// Those of the names that are written, wherever they stand.
Options Written(const DocumentFacts& facts, std::initializer_list<Word> names)
{
    Options written;
    for (const Option& option : facts.options) {
        if (Among(names, option.name)) written.push_back(&option);
    }
    return written;
}

// Those of them that the family reads, in the order in which it does.
Options Read(const DocumentFacts& facts, std::initializer_list<Word> names)
{
    Options read = Written(facts, names);
    std::erase_if(read, [&](const Option* option) { return !IsRead(facts, *option); });
    return read;
}

// The last one that is read counts; null when there is none.
const Option* Counting(const DocumentFacts& facts, std::initializer_list<Word> names)
{
    const Options read = Read(facts, names);
    return read.empty() ? nullptr : read.back();
}

// ---- links and distributions

constexpr std::array<Word, 11> kLinks = {"identity", "log",       "power",  "logit",
                                         "probit",   "cloglog",   "loglog", "logc",
                                         "negbin",   "oddspower", "cauchit"};
constexpr std::array<Word, 8> kDistributions = {"binomial", "gamma",  "igauss",  "multinomial",
                                                "negbin",   "normal", "poisson", "tweedie"};

// What a family computes. Of the families with a link of their own, `unnamed` is what is taken
// where none is named; of the others it is the one that they have.
struct FamilyWords {
    FamilySet families;
    Word unnamed;
    std::vector<Word> links;
    std::vector<Word> distributions;
};

const FamilyWords& WordsOf(FamilyCode family)
{
    static const FamilyWords kWords[] = {
        {kGeneralized,
         "identity",
         {"identity", "log", "power", "logit", "probit", "cloglog", "loglog", "logc", "negbin",
          "oddspower"},
         {"binomial", "gamma", "igauss", "negbin", "normal", "poisson", "tweedie"}},
        {Family(kOrdinal),
         "logit",
         {"logit", "probit", "cloglog", "loglog", "cauchit"},
         {"multinomial", "binomial"}},
        {Family(kOrdinalGeneralized),
         "logit",
         {"logit", "probit", "cloglog", "loglog", "cauchit"},
         {"multinomial"}},
        {kLinearFamilies, "identity", {"identity"}, {"normal"}},
        {kCoxFamilies, "", {}, {}},
        {kAllFamilies, "logit", {"logit"}, {"multinomial", "binomial"}},  // the logistic ones
    };
    return *std::find_if(std::begin(kWords), std::end(kWords),
                         [family](const auto& row) { return Has(row.families, family); });
}

// Extensions spell some links in a way of their own.
Word PlainLink(const Option& option)
{
    const Word link = option.value;
    if (link.starts_with("cum")) return link.substr(3);
    return link == Tags::XML_VAL_RM_EXT_VALUE_LINK_NLOGLOG ? Word("loglog") : link;
}

const Option* LinkOf(const DocumentFacts& facts)
{
    return Counting(facts, {"linkFunction", "cumulativeLink"});
}
const Option* DistributionOf(const DocumentFacts& facts)
{
    return Counting(facts, {"distribution"});
}

Options WrittenLinks(const DocumentFacts& facts)
{
    return Written(facts, {"linkFunction", "cumulativeLink"});
}

// The links that are written, where none of them is read; nothing where one is, or the family has
// no link of its own.
std::optional<Options> UnreadLinks(const DocumentFacts& facts)
{
    if (!facts.IsAmong(kOwnLink) || LinkOf(facts) != nullptr) return std::nullopt;
    return WrittenLinks(facts);
}

void ReportUnreadLink(const DocumentFacts& facts, RuleReport& report)
{
    // It is there, as the misspelt attribute that was told.
    if (Among(facts.misspeltOptions, Tags::XML_ATT_LINKFUNCTION) ||
        Among(facts.misspeltOptions, Tags::XML_ATT_RM_NAME_CUMULATIVELINK)) {
        return;
    }
    // An ordinal model of either family may say cumulativeLink: the adapter carries it over.
    report({.element = facts.model,
            .attribute = facts.IsAmong(kOrdinalFamilies) ? Tags::XML_ATT_RM_NAME_CUMULATIVELINK
                                                         : Tags::XML_ATT_LINKFUNCTION,
            .expected = Words(WordsOf(*facts.family).links),
            .what = FamilyName(facts)});
}

void MissingLink(const DocumentFacts& facts, RuleReport& report)
{
    const auto unread = UnreadLinks(facts);
    if (!unread || (unread->empty() && !facts.IsAmong(kGeneralized))) return;
    const bool agree = std::all_of(unread->begin(), unread->end(), [&](const Option* option) {
        return PlainLink(*option) == WordsOf(*facts.family).unnamed;
    });
    if (!agree || unread->empty()) ReportUnreadLink(facts, report);
}

// What ordinal regression is called without more words has the link logit.
void UnnamedLink(const DocumentFacts& facts, RuleReport& report)
{
    const auto unread = UnreadLinks(facts);
    if (!unread || !unread->empty() || !facts.IsAmong(kOrdinalFamilies)) return;
    ReportUnreadLink(facts, report);
}

bool IsCumulativeElsewhere(const DocumentFacts& facts, const Option& option)
{
    return option.name == Tags::XML_ATT_RM_NAME_CUMULATIVELINK && !facts.IsAmong(kOrdinalFamilies);
}

// Words that the standard doesn't have are told by the rules of the vocabulary.
void LinkOfAnotherFamily(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    const auto& links = WordsOf(*facts.family).links;
    for (const Option* option : WrittenLinks(facts)) {
        const Word link = PlainLink(*option);
        const bool isOwn = Among(links, link) && !IsCumulativeElsewhere(facts, *option);
        if (!Among(kLinks, link) || isOwn) continue;
        Detail detail = At(*option);
        detail.expected = Words(links);
        detail.what = FamilyName(facts);
        report(detail);
    }
}

// Of words that the family has: the others are told already.
void ContradictingLinks(const DocumentFacts& facts, RuleReport& report)
{
    const Option* counting = facts.family ? LinkOf(facts) : nullptr;
    if (counting == nullptr) return;
    const auto& links = WordsOf(*facts.family).links;
    if (!Among(links, PlainLink(*counting))) return;
    for (const Option* option : WrittenLinks(facts)) {
        const Word link = PlainLink(*option);
        if (link == PlainLink(*counting) || !Among(links, link)) continue;
        if (IsCumulativeElsewhere(facts, *option)) continue;
        Detail detail = At(*option);
        detail.expected = counting->name + " \"" + counting->value + "\"";
        report(detail);
    }
}

void DistributionOfAnotherFamily(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    const auto& distributions = WordsOf(*facts.family).distributions;
    for (const Option* option : Written(facts, {"distribution"})) {
        if (!Among(kDistributions, option->value) || Among(distributions, option->value)) continue;
        Detail detail = At(*option);
        detail.expected = Words(distributions);
        detail.what = FamilyName(facts);
        report(detail);
    }
}

constexpr std::array<Word, 7> kLinksOfProbabilities = {"logit", "probit",  "cloglog",  "loglog",
                                                       "logc",  "cauchit", "oddspower"};
constexpr std::array<Word, 4> kDistributionsOfAmounts = {"poisson", "negbin", "gamma", "igauss"};

void LinkAgainstDistribution(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsAmong(kGeneralized)) return;
    const Option* link = LinkOf(facts);
    const Option* distribution = DistributionOf(facts);
    if (link == nullptr || distribution == nullptr) return;
    const bool isAmount = Among(kDistributionsOfAmounts, distribution->value);
    const bool ofAnother = link->value == "negbin" && distribution->value != "negbin";
    if (!ofAnother && !(isAmount && Among(kLinksOfProbabilities, PlainLink(*link)))) return;
    Detail detail = At(*link);
    detail.what = distribution->value;
    report(detail);
}

bool Classifies(const DocumentFacts& facts)
{
    return facts.model.Text(Tags::XML_ATT_RM_FUNC_NAME) == Tags::XML_VAL_RM_FUNC_NAME_C;
}

void DistributionOfCategories(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsAmong(kGeneralized) || !Classifies(facts)) return;
    const Option* distribution = DistributionOf(facts);
    if (distribution == nullptr || distribution->value == "binomial") return;
    // One that the family doesn't have is told already.
    if (!Among(WordsOf(*facts.family).distributions, distribution->value)) return;
    report(At(*distribution));
}

// ---- offset, trials, and what else is a number or a variable

// An offset of 0 and trials of 1 change no score.
bool IsNeutral(const Option& option)
{
    const auto number = NumberOf(option.value);
    return (option.name == Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE && number == 0.0) ||
           (option.name == Tags::XML_ATT_RM_EXT_NAME_TRIALS_VALUE && number == 1.0);
}

Options WrittenTrials(const DocumentFacts& facts)
{
    Options trials = Written(facts, {"trialsVariable", "trialsValue"});
    std::erase_if(trials, [](const Option* option) { return IsNeutral(*option); });
    return trials;
}

// A target of two categories is read as one by its binomial distribution.
bool NeedsDistributionToClassify(const DocumentFacts& facts)
{
    return !Classifies(facts) && facts.target != nullptr && facts.target->categories.size() == 2 &&
           facts.target->optype != Tags::XML_VAL_OT_CONTINUOUS;
}

void MissingDistribution(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsAmong(kGeneralized) || DistributionOf(facts) != nullptr) return;
    const Options trials = WrittenTrials(facts);
    if (trials.empty() && !NeedsDistributionToClassify(facts)) return;
    report({.element = facts.model,
            .attribute = Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION,
            .what = trials.empty() ? "a target of categories" : trials.front()->name});
}

void ReportUncounted(const DocumentFacts& facts, const Options& options, RuleReport& report)
{
    for (const Option* option : options) {
        if (IsRead(facts, *option) || IsNeutral(*option)) continue;
        Detail detail = At(*option);
        detail.note = "it is read as " + FamilyName(facts);
        report(detail);
    }
}

void OffsetNotCounted(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    ReportUncounted(facts, Written(facts, {"offsetVariable", "offsetValue"}), report);
}

void TrialsNotCounted(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    const Options trials = WrittenTrials(facts);
    ReportUncounted(facts, trials, report);
    if (!facts.IsAmong(kGeneralized)) return;
    const Option* distribution = DistributionOf(facts);
    const bool isOther = distribution != nullptr && distribution->value != "binomial";
    for (const Option* option : trials) {
        Detail detail = At(*option);
        if (Classifies(facts)) {
            detail.note = "it predicts one of two categories";
        } else if (isOther) {
            detail.note = "its distribution is \"" + distribution->value + "\"";
        } else {
            continue;
        }
        report(detail);
    }
}

void TrialsBelowOne(const DocumentFacts& facts, RuleReport& report)
{
    for (const Option* option : Read(facts, {"trialsValue"})) {
        const auto number = NumberOf(option->value);
        if (number && *number < 1.0) report(At(*option));
    }
}

// Why the values of a field are no numbers; empty where they are.
std::string WhyNoNumbers(const DocumentFacts& facts, const DocumentFacts::Field& field)
{
    const bool isFactor = std::any_of(
        facts.predictors.begin(), facts.predictors.end(),
        [&](const auto& predictor) { return predictor.isFactor && predictor.name == field.name; });
    if (isFactor) return "a factor of the model";
    // Before version 3.1 a field may leave its type out.
    const bool isText = field.dataType.empty()
                            ? field.optype != Tags::XML_VAL_OT_CONTINUOUS
                            : field.dataType == "string" || field.dataType == "boolean";
    if (!isText) return {};
    return "a field of " +
           (field.dataType.empty() ? "optype " + field.optype : "dataType " + field.dataType);
}

void VariableWithoutNumbers(const DocumentFacts& facts, RuleReport& report)
{
    for (const Option* option :
         Read(facts, {"offsetVariable", "trialsVariable", "endTimeVariable"})) {
        const uint32_t number = facts.fieldNames.Find(Word(option->value));
        if (number == NameIndex::kNone) continue;
        Detail detail = At(*option);
        detail.expected = "a field of numbers";
        detail.note = WhyNoNumbers(facts, facts.fields[number]);
        if (!detail.note.empty()) report(detail);
    }
}

// Names under which one thing may be written.
const std::initializer_list<Word> kNamesOfOneThing[] = {
    {"offsetVariable", "offsetValue"},
    {"trialsVariable", "trialsValue"},
    {"distribution"},
    {"linkParameter"},
    {"cutoff"},
    {"modelDF"},
    {"endTimeVariable"},
};

void ReportOther(const Option& option, const Option& first, RuleReport& report)
{
    if (option.name == first.name && SameValue(option.value, first.value)) return;
    Detail detail = At(option);
    detail.expected = first.name + " \"" + first.value + "\"";
    report(detail);
}

void ContradictingOptions(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    for (const auto& names : kNamesOfOneThing) {
        const Options options = Read(facts, names);
        for (const Option* option : options) ReportOther(*option, *options.front(), report);
    }
    // Under the link of that name the distribution's parameter is the link's.
    const Option* link = LinkOf(facts);
    const Option* own = Counting(facts, {"linkParameter"});
    const Option* other = Counting(facts, {"distParameter"});
    if (link == nullptr || link->value != "negbin" || own == nullptr || other == nullptr) return;
    if (!SameValue(own->value, other->value)) ReportOther(*other, *own, report);
}

// The link takes a parameter, or the distribution does, whose exporters write it under this name.
bool TakesParameter(const Option* link, const Option* distribution)
{
    constexpr std::array<Word, 3> kLinksWithParameter = {"negbin", "oddspower", "power"};
    constexpr std::array<Word, 2> kDistributionsWithParameter = {"negbin", "tweedie"};
    return link == nullptr || Among(kLinksWithParameter, link->value) ||
           (distribution != nullptr && Among(kDistributionsWithParameter, distribution->value));
}

void UnusedLinkParameter(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    const bool isGeneralized = facts.IsAmong(kGeneralized);
    const Option* link = LinkOf(facts);
    if (isGeneralized && TakesParameter(link, DistributionOf(facts))) return;
    for (const Option* option : Written(facts, {"linkParameter"})) {
        Detail detail = At(*option);
        detail.note = isGeneralized ? "the link \"" + link->value + "\" has none"
                                    : "the model is read as " + FamilyName(facts);
        report(detail);
    }
}

// ---- categories, cut-offs, thresholds, degrees of freedom

void UnknownReferenceCategory(const DocumentFacts& facts, RuleReport& report)
{
    const std::string category = facts.model.Text(Tags::XML_ATT_TARGETREFCATEGORY);
    if (category.empty() || facts.target == nullptr || !facts.target->IsClosed()) return;
    const bool predictsCategory = facts.IsAmong(kCategoryFamilies | Family(kConditional)) ||
                                  (facts.IsAmong(kGeneralized) && Classifies(facts));
    const std::string key = KeyOf(facts.target, category);
    if (!predictsCategory || Among(facts.target->categoryKeys, key)) return;
    report({.element = facts.model,
            .attribute = Tags::XML_ATT_TARGETREFCATEGORY,
            .found = category,
            .expected = Listed(facts.target->categories),
            .nearWord = NearWord(category, facts.target->categories),
            .what = facts.target->name});
}

constexpr std::array<Word, 2> kFeaturesOfCategories = {"probability", "residual"};

void UnknownOutputCategory(const DocumentFacts& facts, RuleReport& report)
{
    if (facts.target == nullptr || !facts.target->IsClosed()) return;
    const Element output = facts.model.Child("Output");
    if (!output) return;
    const auto& keys = facts.target->categoryKeys;
    const std::unordered_set<std::string_view> known(keys.begin(), keys.end());
    NearNames unknown(report);
    for (const Element field : output.Children("OutputField")) {
        const std::string category = field.Text(Tags::XML_ATT_VALUE);
        if (category.empty() || !Among(kFeaturesOfCategories, field.Text("feature"))) continue;
        if (known.contains(KeyOf(facts.target, category))) continue;
        unknown.Tell({.element = field,
                      .attribute = Tags::XML_ATT_VALUE,
                      .found = category,
                      .what = field.Text(Tags::XML_ATT_NAME)},
                     facts.target->categories);
    }
}

void CutoffOutOfRange(const DocumentFacts& facts, RuleReport& report)
{
    for (const Option* option : Read(facts, {"cutoff"})) {
        const auto number = NumberOf(option->value);
        // One of 0 is as good as none to the model, and would say always.
        if (number && !(*number > 0.0 && *number <= 1.0)) report(At(*option));
    }
}

void CutoffNotCounted(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    ReportUncounted(facts, Written(facts, {"cutoff"}), report);
}

// From this version on the attribute that names the category is read.
constexpr double kReferenceCategoryVersion = 4.0;

void CutoffWithoutCategory(const DocumentFacts& facts, RuleReport& report)
{
    const Option* cutoff = facts.family ? Counting(facts, {"cutoff"}) : nullptr;
    const bool isNamed = facts.version >= kReferenceCategoryVersion &&
                         !facts.model.Text(Tags::XML_ATT_TARGETREFCATEGORY).empty();
    if (cutoff == nullptr || isNamed) return;
    report(At(*cutoff));
}

// The model compares the category as written.
void CutoffOfOtherSpelling(const DocumentFacts& facts, const ModelDescription& model,
                           RuleReport& report)
{
    if (!model.hasCutoff || Among(model.targetCategories, model.cutoffCategory)) return;
    Detail detail = At(*Counting(facts, {"cutoff"}));
    detail.expected = Listed(model.targetCategories);
    report(detail);
}

// A generalized linear model of two categories has one equation, and takes the betas of the
// category that the last cells name, by its text.
void BetasOfOtherCategory(const DocumentFacts& facts, const ModelDescription& model,
                          RuleReport& report)
{
    if (model.className != "GZLRModel" || model.targetCategories.empty()) return;
    const std::string& counting = model.equations.front().category;
    for (const DocumentFacts::Estimate& cell : facts.estimates) {
        if (!cell.beta || *cell.beta == 0.0 || cell.targetCategory == counting) continue;
        report({.element = cell.element,
                .attribute = Tags::XML_ATT_PC_TARGET_CAT,
                .found = cell.targetCategory,
                .what = Quoted(counting)});
    }
}

// The cell of a threshold; the model's element where none names that category.
Element ThresholdCell(const DocumentFacts& facts, const std::string& parameter,
                      const std::string& category)
{
    const uint32_t number = facts.parameterNames.Find(Word(parameter));
    for (const DocumentFacts::Estimate& estimate : facts.estimates) {
        if (estimate.parameter == number && estimate.targetCategory == category) {
            return estimate.element;
        }
    }
    return facts.model;
}

// In both ordinal families a threshold is the cumulative link of the categories up to its own, with
// a linear predictor of 0: whatever the predictor's sign, they ascend.
void FallingThresholds(const DocumentFacts& facts, const ModelDescription& model,
                       RuleReport& report)
{
    const ModelDescription::Equation* before = nullptr;
    for (const ModelDescription::Equation& equation : model.equations) {
        if (!equation.isCumulative || equation.terms.empty()) return;
        const ModelDescription::Term& threshold = equation.terms.front();
        if (before != nullptr && !(threshold.beta > before->terms.front().beta)) {
            const Element cell = ThresholdCell(facts, threshold.parameter, equation.category);
            report({.element = cell,
                    .attribute = Tags::XML_ATT_PC_BETA,
                    .found = cell.Text(Tags::XML_ATT_PC_BETA),
                    .expected = before->category,
                    .what = equation.category});
        }
        before = &equation;
    }
}

void NegativeDegreesOfFreedom(const DocumentFacts& facts, RuleReport& report)
{
    for (const Option* option : Written(facts, {"modelDF"})) {
        const auto number = NumberOf(option->value);
        if (number && *number < 0.0) report(At(*option));
    }
    for (const DocumentFacts::Estimate& estimate : facts.estimates) {
        if (!estimate.df || *estimate.df >= 0.0) continue;
        report({.element = estimate.element,
                .attribute = Tags::XML_ATT_PC_DF,
                .found = estimate.element.Text(Tags::XML_ATT_PC_DF),
                .what = Tags::XML_ATT_PC_DF});
    }
}

void MissingDegreesOfFreedom(const DocumentFacts& facts, RuleReport& report)
{
    if (facts.older || !facts.IsAmong(kLinearFamilies) || facts.covariances.empty()) return;
    if (Counting(facts, {"modelDF"}) != nullptr) return;
    report({.element = facts.model, .attribute = Tags::XML_VAL_NAME_MODELDF});
}

constexpr bool kStrict = true;
constexpr bool kNotStrict = false;

// Names that the model element may leave out, of which the reader takes empty ones for none.
void EmptyOptions(const DocumentFacts& facts, RuleReport& report)
{
    for (const std::string* name :
         {&Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR, &Tags::XML_VAL_RM_EXT_NAME_TRIALVAR,
          &Tags::XML_ATT_TARGETREFCATEGORY}) {
        if (!facts.model.Has(*name) || !facts.model.Text(*name).empty()) continue;
        report({.element = facts.model, .attribute = *name});
    }
}

constexpr AuditRule kRules[] = {
    {{"missing-link", Answer::Fault, kStrict,
      "a generalized linear model without its link, or an ordinal one whose link stands where it "
      "isn't read",
      "{element} has no {attribute}, and nothing else tells the link of the {what}",
      "Write the {attribute} that the model was fitted with: {expected}."},
     MissingLink},
    {{"unnamed-link", Answer::Notice, kStrict,
      "an ordinal model that names no link: it is read with logit",
      "{element} has no {attribute}: {what} without one is read with the link \"logit\"",
      "Write the {attribute} that the model was fitted with: {expected}."},
     UnnamedLink},
    {{"link-of-another-family", Answer::Fault, kStrict,
      "a link that the family, as which the model is read, doesn't have",
      "{attribute} {found} isn't one of {what}, as which the model is read; its links: {expected}",
      "Correct the link; or, if it is right, modelType and algorithmName, which choose how the "
      "model is read."},
     LinkOfAnotherFamily},
    {{"contradicting-links", Answer::Fault, kStrict, "two links that contradict each other",
      "{what} {found} contradicts {expected}, which is the one that counts",
      "Leave the link that the model was fitted with, and take the other out."},
     ContradictingLinks},
    {{"link-against-distribution", Answer::Fault, kStrict,
      "a link that doesn't go with the distribution",
      "the link {found} doesn't go with the distribution \"{what}\"",
      "Correct the link or the distribution: links of probabilities go with binomial, "
      "the link negbin with negbin alone."},
     LinkAgainstDistribution},
    {{"missing-distribution", Answer::Fault, kStrict,
      "no distribution where trials or categories depend on it",
      "{element} has no {attribute}, on which {what} depends",
      "Write distribution=\"binomial\", if that is what the model was fitted with."},
     MissingDistribution},
    {{"distribution-of-another-family", Answer::Fault, kStrict,
      "a distribution that the family doesn't have",
      "the distribution {found} isn't one of {what}, as which the model is read; its "
      "distributions: {expected}",
      "Correct the distribution; or, if it is right, modelType and algorithmName, which choose "
      "how the model is read."},
     DistributionOfAnotherFamily},
    {{"distribution-of-categories", Answer::Fault, kStrict,
      "a distribution of numbers where one of two categories is predicted",
      "the distribution {found} is one of numbers, and the model predicts one of two categories",
      "Write distribution=\"binomial\", or functionName=\"regression\" for a target of numbers."},
     DistributionOfCategories},
    {{"offset-not-counted", Answer::Fault, kStrict, "an offset in a family that doesn't count it",
      "{what} is {found}, and the model doesn't count it: {note}",
      "Make the offset a covariate with a beta of 1, or correct what chooses how the model is "
      "read."},
     OffsetNotCounted},
    {{"trials-not-counted", Answer::Fault, kStrict, "trials where they don't count",
      "{what} is {found}, and the model doesn't count trials: {note}",
      "Trials belong to a generalized linear model of numbers with distribution=\"binomial\"; "
      "take them out, or correct what says otherwise."},
     TrialsNotCounted},
    {{"trials-below-one", Answer::Fault, kStrict, "trials below 1",
      "{what} is {found}, and trials are 1 or more",
      "Write the number of trials behind each prediction, a whole number."},
     TrialsBelowOne},
    {{"text-variable", Answer::Fault, kStrict,
      "an offset, trials or end time of a field that holds no numbers",
      "{what} {found} is {note}, and has to be a variable of numbers",
      "Name the field that holds the number, or correct how the field is declared."},
     VariableWithoutNumbers},
    {{"contradicting-options", Answer::Fault, kStrict,
      "two ways to tell one option, of which one alone can count",
      "{what} {found} stands beside {expected}, and one of them alone can count",
      "Leave the one that the model was fitted with, and take the other out."},
     ContradictingOptions},
    {{"empty-option", Answer::Notice, kStrict,
      "an offset, trials or a reference category whose name is empty; it counts as absent",
      "{attribute} of {element} is empty, which counts as absent",
      "Name the field or the category, or take the attribute out."},
     EmptyOptions},
    {{"unused-link-parameter", Answer::Notice, kStrict, "a parameter for a link that has none",
      "{what} {found} isn't used: {note}", "Take it out, or correct the link that it belongs to."},
     UnusedLinkParameter},
    {{"unknown-reference-category", Answer::Fault, kStrict,
      "a reference category that the target doesn't have",
      "{attribute} {found} is none of the categories of {what}: {expected}{meant}",
      "Name one of the target's categories as it is written there."},
     UnknownReferenceCategory},
    {{"unknown-output-category", Answer::Notice, kStrict,
      "an output field of a category that the target doesn't have; its column stays empty",
      "the output field {what} is for {found}, no category of the target, which has "
      "{expected}{meant}",
      "Name one of the target's categories as it is written there."},
     UnknownOutputCategory},
    {{"cutoff-out-of-range", Answer::Fault, kStrict, "a cut-off that is no probability",
      "the cut-off {found} is no probability above 0 and up to 1",
      "Write the probability that the category of targetReferenceCategory has to exceed."},
     CutoffOutOfRange},
    {{"cutoff-not-counted", Answer::Fault, kStrict, "a cut-off in a family that has none",
      "{what} is {found}, and the model doesn't count it: {note}",
      "Take the cut-off out and apply it to the probabilities; contrastLogistic models alone "
      "have one."},
     CutoffNotCounted},
    {{"cutoff-without-category", Answer::Fault, kStrict, "a cut-off for no category",
      "the cut-off {found} is for no category: there is no targetReferenceCategory, or it is older "
      "than version 4.0",
      "Name the category in targetReferenceCategory, in a document of version 4.0 or later."},
     CutoffWithoutCategory},
    {{"cutoff-category-spelling", Answer::Fault, kStrict,
      "a cut-off for a category that the target spells otherwise",
      "the cut-off {found} is for a category that the target spells otherwise: {expected}",
      "Write targetReferenceCategory as the target's category is written."},
     nullptr,
     CutoffOfOtherSpelling},
    {{"beta-of-other-category", Answer::Fault, kStrict,
      "a beta of another category than the one whose betas count",
      "{element} {attribute} {found} gives a beta that wouldn't count: the model has one equation, "
      "that of {what}",
      "Give every beta to the one category whose probability the equation gives, written as the "
      "target's value is."},
     nullptr,
     BetasOfOtherCategory},
    {{"falling-thresholds", Answer::Fault, kStrict,
      "thresholds of an ordinal model that don't ascend",
      "the threshold {found} of category \"{what}\" isn't above that of the category before, "
      "\"{expected}\"",
      "Correct the thresholds, which rise from category to category, or the order of the "
      "target's values."},
     nullptr,
     FallingThresholds},
    {{"negative-degrees-of-freedom", Answer::Fault, kStrict, "degrees of freedom below 0",
      "{what} is {found}, below 0", "Write the degrees of freedom of the fit."},
     NegativeDegreesOfFreedom},
    {{"missing-degrees-of-freedom", Answer::Notice, kNotStrict,
      "covariances of a linear model without modelDF: there are no confidence limits",
      "{element} has covariances and no {attribute}: its predictions have no confidence limits",
      "Write the residual degrees of freedom as {attribute}, if limits are wanted."},
     MissingDegreesOfFreedom},
};

}  // namespace

std::span<const AuditRule> FamilyRules() { return kRules; }

}  // namespace MCVelscore_850
