// Extensions of the system's own: what they are called, where they stand and what they hold.

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/names.h"
#include "engine/documents/ownextensions.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/nearword.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kTrue = "true";
const std::string kFalse = "false";

using Visit = std::function<void(Element)>;

void VisitExtensions(Element parent, const Visit& visit)
{
    for (const Element child : parent.Children(Tags::XML_ELE_EXTENSION)) visit(child);
}

// The Extensions of the elements that may hold one of the system's own, and of those around them.
void ForEachExtension(const DocumentFacts& facts, const Visit& visit)
{
    const Element schema = facts.model.Child(Tags::XML_ELE_MININGSCHEMA);
    for (const Element parent :
         {facts.root, facts.root.Child(Tags::XML_ELE_DATADICTIONARY),
          facts.root.Child(Tags::XML_ELE_TRANSFORMATION), facts.model,
          facts.model.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS), schema,
          facts.model.Child(Tags::XML_ELE_PARAM_LIST), facts.model.Child(Tags::XML_ELE_FAC_LIST),
          facts.model.Child(Tags::XML_ELE_COV_LIST), facts.model.Child(Tags::XML_ELE_PP_MATRIX)}) {
        VisitExtensions(parent, visit);
    }
    for (const DocumentFacts::Field& field : facts.fields) VisitExtensions(field.element, visit);
    for (const DocumentFacts::Predictor& predictor : facts.predictors) {
        VisitExtensions(predictor.element, visit);
    }
}

// Those that are the system's own by their place and name.
template <class OwnVisit>
void ForEachOwn(const DocumentFacts& facts, OwnVisit visit)
{
    ForEachExtension(facts, [&](Element extension) {
        const OwnExtension* own = FindOwnExtension(extension);
        if (own == nullptr || ExtenderOf(extension) == Extender::Another) return;
        visit(extension, *own);
    });
}

std::string NameOf(Element extension) { return extension.Text(Tags::XML_ATT_EXT_NAME); }
std::string ValueOf(Element extension) { return extension.Text(Tags::XML_ATT_EXT_VALUE); }

// Where the name belongs, or else the names that belong here.
std::string ExpectedAt(Element extension)
{
    const std::string name = NameOf(extension);
    for (const OwnExtension& own : OwnExtensions()) {
        if (name == own.name) return "in " + std::string(own.parent);
    }
    const std::vector<std::string> names = OwnExtensionNames(extension.Parent());
    return names.empty() ? "none" : "one of " + Listed(names);
}

void CheckNames(const DocumentFacts& facts, RuleReport& report)
{
    ForEachExtension(facts, [&](Element extension) {
        if (FindOwnExtension(extension) != nullptr) return;
        const Extender extender = ExtenderOf(extension);
        const std::string near = NearOwnName(extension);
        const bool isOwn = extender == Extender::Own;
        if (!isOwn && (extender == Extender::Another || near.empty())) return;
        report({extension, Tags::XML_ATT_EXT_NAME, NameOf(extension), ExpectedAt(extension), near,
                extension.Parent().Tag()});
    });
}

void CheckExtenders(const DocumentFacts& facts, RuleReport& report)
{
    ForEachOwn(facts, [&](Element extension, const OwnExtension&) {
        if (ExtenderOf(extension) != Extender::Misspelt) return;
        report({extension, Tags::XML_ATT_EXTENSION_EXTENDER,
                extension.Text(Tags::XML_ATT_EXTENSION_EXTENDER), Tags::XML_VAL_EXTENSION_EXTENDER,
                Tags::XML_VAL_EXTENSION_EXTENDER, NameOf(extension)});
    });
}

void CheckSignatures(const DocumentFacts& facts, RuleReport& report)
{
    ForEachOwn(facts, [&](Element extension, const OwnExtension& own) {
        if (!own.needsExtender || ExtenderOf(extension) != Extender::None) return;
        report({extension,
                Tags::XML_ATT_EXTENSION_EXTENDER,
                {},
                Tags::XML_VAL_EXTENSION_EXTENDER,
                {},
                NameOf(extension)});
    });
}

bool IsOption(const OwnExtension& own) { return own.parent == Tags::XML_ELE_REGRESSMODEL; }

void CheckPlaces(const DocumentFacts& facts, RuleReport& report)
{
    ForEachOwn(facts, [&](Element extension, const OwnExtension& own) {
        if (!IsOption(own) || !own.IsHeededBy(facts.family) || IsLeading(extension)) return;
        report({extension, Tags::XML_ATT_EXT_NAME, NameOf(extension)});
    });
}

void CheckFamilies(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family) return;
    ForEachOwn(facts, [&](Element extension, const OwnExtension& own) {
        if (own.IsHeededBy(facts.family)) return;
        report({extension,
                Tags::XML_ATT_EXT_NAME,
                NameOf(extension),
                {},
                {},
                FamilyOf(*facts.family).name});
    });
}

void CheckRepeated(const DocumentFacts& facts, RuleReport& report)
{
    std::unordered_map<std::string, std::string> values;  // by name
    ForEachOwn(facts, [&](Element extension, const OwnExtension& own) {
        if (!IsOption(own) || !own.IsHeededBy(facts.family)) return;
        const auto [first, isNew] = values.emplace(NameOf(extension), ValueOf(extension));
        const bool differs = first->second != ValueOf(extension) ||
                             !extension.Children().Empty();  // what it holds may differ
        if (isNew || !differs) return;
        report({extension, Tags::XML_ATT_EXT_NAME, NameOf(extension)});
    });
}

// The values that an Extension may have, where the reader takes any other in silence.
struct ValueRow {
    std::string_view name;
    bool (*isTaken)(Element extension);
    std::string_view expected;
};

bool IsNoNegative(Element extension)
{
    const auto number = extension.Number(Tags::XML_ATT_EXT_VALUE);
    return !number || *number >= 0.0;  // what is no number the reader refuses
}

std::span<const ValueRow> ValueRows()
{
    static const ValueRow rows[] = {
        {Tags::XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS,
         [](Element e) { return ValueOf(e) == kTrue || ValueOf(e) == kFalse; },
         "\"true\" or \"false\""},
        {"unlistedCategories", [](Element e) { return ValueOf(e) == "accept"; }, "\"accept\""},
        {Tags::XML_VAL_NAME_MODELDF, [](Element e) { return !ValueOf(e).empty(); }, "a number"},
        {Tags::XML_ATT_RM_EXT_NAME_SIGMA, IsNoNegative, "a number from 0 on"},
        {Tags::XML_ATT_RM_EXT_NAME_PERCENTILE, IsNoNegative, "a number from 0 on"},
    };
    return rows;
}

void CheckExtensionValues(const DocumentFacts& facts, RuleReport& report)
{
    ForEachOwn(facts, [&](Element extension, const OwnExtension& own) {
        for (const ValueRow& row : ValueRows()) {
            if (own.name != row.name || row.isTaken(extension)) continue;
            report({extension,
                    Tags::XML_ATT_EXT_VALUE,
                    ValueOf(extension),
                    std::string(row.expected),
                    {},
                    NameOf(extension)});
        }
    });
}

// What the Extensions with a form of their own hold.
struct ContentRow {
    std::string_view extension;
    std::string_view element;
    std::vector<std::string> attributes;
    bool isOutermost = false;  ///< within another one the reader would count its content for both
};

const std::vector<ContentRow>& ContentRows()
{
    static const std::string& hazards = Tags::XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES;
    static const std::vector<ContentRow> rows = {
        {Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT,
         Tags::XML_EXT_ELE_COXREG_BASEPOINT,
         {Tags::XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME, Tags::XML_ATT_EXT_VALUE}},
        {hazards,
         Tags::XML_EXT_ELE_COXREG_STRATUM,
         {Tags::XML_ATT_VALUE, Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME},
         true},
        {hazards, Tags::XML_EXT_ELE_COXREG_HAZARD_TABLE, {}},
        {hazards, Tags::XML_EXT_ELE_COXREG_BASEMAXTIME, {Tags::XML_ATT_VALUE}},
        {hazards,
         Tags::XML_EXT_ELE_COXREG_BASELINE,
         {Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME,
          Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD}},
    };
    return rows;
}

// Calls `tell(element, attribute)` for every word that the form doesn't have, the attribute null
// where it is the element's. The guard bounds the depth, and with it this recursion.
template <class Tell>
void CheckContent(Element parent, const std::string& extension, const Tell& tell)
{
    for (const Element child : parent.Children()) {
        const ContentRow* row = nullptr;
        for (const ContentRow& each : ContentRows()) {
            if (each.extension == extension && child.Is(each.element)) row = &each;
        }
        const bool isOutermost = parent.Is(Tags::XML_ELE_EXTENSION);
        if (row == nullptr || (row->isOutermost && !isOutermost)) {
            std::vector<std::string> tags;
            for (const ContentRow& each : ContentRows()) {
                if (each.extension != extension || (each.isOutermost && !isOutermost)) continue;
                tags.emplace_back(each.element);
            }
            tell(child, child.Tag(), tags, false);
            continue;
        }
        child.ForEachAttribute([&](Element::RawText name, Element::RawText) {
            const std::string text = Utf8FromXml(std::basic_string<XMLCh>(name).c_str());
            const auto& known = row->attributes;
            if (std::find(known.begin(), known.end(), text) != known.end()) return;
            tell(child, text, known, true);
        });
        CheckContent(child, extension, tell);
    }
}

void CheckContents(const DocumentFacts& facts, RuleReport& report)
{
    ForEachOwn(facts, [&](Element extension, const OwnExtension& own) {
        const std::string name(own.name);
        const auto& rows = ContentRows();
        const bool hasForm = std::any_of(
            rows.begin(), rows.end(), [&](const ContentRow& row) { return row.extension == name; });
        if (!hasForm || !own.IsHeededBy(facts.family)) return;
        CheckContent(extension, name,
                     [&](Element element, const std::string& word,
                         const std::vector<std::string>& known, bool isAttribute) {
                         report({element, isAttribute ? word : std::string(), word,
                                 known.empty() ? "nothing" : "one of " + Listed(known),
                                 NearWord(word, known), name});
                     });
    });
}

constexpr bool kStrict = true;

constexpr AuditRule kRules[] = {
    {{"unknown-extension", Answer::Fault, kStrict,
      "an Extension of velscore's that it doesn't know there",
      "Extension {found} in {what} is none that velscore knows there{meant}",
      "Correct its name or its place (expected {expected}), or remove the Extension."},
     CheckNames},
    {{"unknown-extender", Answer::Fault, kStrict, "an extender that comes near to velscore's",
      "extender {found} of the Extension \"{what}\" is unknown{meant}",
      "Write extender=\"{expected}\"."},
     CheckExtenders},
    {{"unsigned-extension", Answer::Notice, kStrict,
      "an Extension of a known name without an extender; it isn't read",
      "Extension \"{what}\" has no extender and isn't read",
      "Write extender=\"{expected}\", or remove the Extension."},
     CheckSignatures},
    {{"late-extension", Answer::Fault, kStrict,
      "an Extension behind other children of the model, where it isn't read",
      "Extension {found} stands behind another child of the model, where it isn't read",
      "Move it to the front, before the MiningSchema."},
     CheckPlaces},
    {{"extension-of-another-family", Answer::Notice, kStrict,
      "an Extension that says nothing in the family",
      "Extension {found} says nothing in a model of this family ({what})",
      "Remove the Extension, or correct the model's type."},
     CheckFamilies},
    {{"repeated-extension", Answer::Fault, kStrict, "an Extension that stands twice and differs",
      "Extension {found} stands twice, with different values",
      "Keep the Extension that is meant, and remove the other."},
     CheckRepeated},
    {{"extension-value", Answer::Fault, kStrict, "a value of an Extension outside of its range",
      "value {found} of the Extension \"{what}\" is not {expected}", "Write {expected}."},
     CheckExtensionValues},
    {{"extension-content", Answer::Fault, kStrict, "unknown content of an Extension",
      "{found} in {element} of the Extension \"{what}\" is unknown{meant}",
      "Correct the name; {expected} may stand there."},
     CheckContents},
};

}  // namespace

std::span<const AuditRule> ExtensionRules() { return kRules; }

}  // namespace MCVelscore_850
