#include "engine/documents/audit/familyfacts.h"

#include "engine/documents/audit/documentfacts.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Stratum = DocumentFacts::Stratum;

// All below the element, at any depth: so does the reader look for the parts of a baseline.
void AddDescendants(Element element, std::string_view tag, std::vector<Element>& found)
{
    for (const Element child : element.Children()) {
        if (child.Is(tag)) found.push_back(child);
        AddDescendants(child, tag, found);
    }
}

std::vector<Element> Descendants(Element element, std::string_view tag)
{
    std::vector<Element> found;
    AddDescendants(element, tag, found);
    return found;
}

void AddCells(Element table, std::string_view tag, Stratum& stratum)
{
    for (const Element cell : Descendants(table, tag)) {
        stratum.cells.push_back({cell, cell.Number(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME),
                                 cell.Number(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD)});
    }
}

Stratum StratumOf(Element element)
{
    Stratum stratum;
    stratum.element = element;
    stratum.value = element.Text(Tags::XML_ATT_VALUE);
    stratum.variable = element.Text(Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME);
    return stratum;
}

Stratum PublishedStratum(Element element)
{
    Stratum stratum = StratumOf(element);
    stratum.tables = {element};
    stratum.maxTimes = {element};
    stratum.maxTime = element.Number(Tags::XML_ATT_MAXTIME);
    AddCells(element, Tags::XML_ELM_BASELINECELL, stratum);
    return stratum;
}

Stratum ExtensionStratum(Element element)
{
    Stratum stratum = StratumOf(element);
    stratum.tables = Descendants(element, Tags::XML_EXT_ELE_COXREG_HAZARD_TABLE);
    stratum.maxTimes = Descendants(element, Tags::XML_EXT_ELE_COXREG_BASEMAXTIME);
    if (!stratum.maxTimes.empty()) {
        stratum.maxTime = stratum.maxTimes.front().Number(Tags::XML_ATT_VALUE);
    }
    if (!stratum.tables.empty()) {
        AddCells(stratum.tables.front(), Tags::XML_EXT_ELE_COXREG_BASELINE, stratum);
    }
    return stratum;
}

// The two forms differ in their tags alone.
DocumentFacts::Baseline BaselineOf(Element section, bool isExtension)
{
    DocumentFacts::Baseline baseline{section, isExtension, false, {}};
    const auto read = isExtension ? ExtensionStratum : PublishedStratum;
    const std::vector<Element> strata = Descendants(
        section, isExtension ? Tags::XML_EXT_ELE_COXREG_STRATUM : Tags::XML_ELM_BASELINESTRATUM);
    baseline.isStratified = !strata.empty();
    for (const Element stratum : strata) baseline.strata.push_back(read(stratum));
    if (strata.empty()) baseline.strata.push_back(read(section));
    return baseline;
}

}  // namespace

void GatherOptions(DocumentFacts& facts)
{
    for (const Element child : facts.model.Children()) {
        if (!child.Is(Tags::XML_ELE_EXTENSION)) break;
        facts.options.push_back(
            {child, child.Text(Tags::XML_ATT_EXT_NAME), child.Text(Tags::XML_ATT_VALUE), true});
    }
    facts.model.ForEachAttribute([&facts](Element::RawText name, Element::RawText value) {
        if (value.empty()) return;
        facts.options.push_back({facts.model, Utf8FromXml(std::basic_string(name).c_str()),
                                 Utf8FromXml(std::basic_string(value).c_str()), false});
    });
}

void GatherBaselines(DocumentFacts& facts)
{
    if (!facts.IsAmong(kCoxFamilies)) return;
    for (const DocumentFacts::Parameter& parameter : facts.parameters) {
        std::string point = parameter.element.Text(Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT);
        if (point.empty()) continue;
        facts.basePoints.push_back({parameter.element, parameter.name, std::move(point)});
    }
    for (const DocumentFacts::Option& option : facts.options) {
        if (!option.isExtension) continue;
        if (option.name == Tags::XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES) {
            facts.baselines.push_back(BaselineOf(option.element, true));
        }
        if (option.name != Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT) continue;
        for (const Element point :
             Descendants(option.element, Tags::XML_EXT_ELE_COXREG_BASEPOINT)) {
            facts.basePoints.push_back(
                {point, point.Text(Tags::XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME),
                 point.Text(Tags::XML_ATT_EXT_VALUE)});
        }
    }
    if (const Element section = facts.model.Child(Tags::XML_ELM_BASECUMHAZARDTABLES)) {
        facts.baselines.push_back(BaselineOf(section, false));
    }
}

}  // namespace MCVelscore_850
