#include "engine/documents/audit/familyfacts.h"

#include "engine/documents/audit/documentfacts.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Stratum = DocumentFacts::Stratum;

// All below the element, at any depth: so does the reader look for the parts of an extension.
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

// What the parts of a baseline are called. In the published form a stratum, or the section without
// strata, is its own table and tells its last time itself: `table` and `maxTime` are null there.
struct BaselineTags {
    const std::string& stratum;
    const std::string& cell;
    const std::string* table;
    const std::string* maxTime;
};

const BaselineTags kPublished{Tags::XML_ELM_BASELINESTRATUM, Tags::XML_ELM_BASELINECELL, nullptr,
                              nullptr};
const BaselineTags kExtension{Tags::XML_EXT_ELE_COXREG_STRATUM, Tags::XML_EXT_ELE_COXREG_BASELINE,
                              &Tags::XML_EXT_ELE_COXREG_HAZARD_TABLE,
                              &Tags::XML_EXT_ELE_COXREG_BASEMAXTIME};

// Reads a baseline in one walk: it may have hundreds of thousands of cells.
class BaselineReader {
public:
    BaselineReader(Element section, const BaselineTags& tags) : tags_(tags)
    {
        baseline_.element = section;
        baseline_.isExtension = tags.table != nullptr;
        AddStratum(section);
        ReadBelow(section, tags.table == nullptr);
        baseline_.isStratified = baseline_.strata.size() > 1;
        // What stands beside strata isn't read.
        if (baseline_.isStratified) baseline_.strata.erase(baseline_.strata.begin());
    }

    DocumentFacts::Baseline Baseline() && { return std::move(baseline_); }

private:
    Stratum& Current() { return baseline_.strata.back(); }

    void AddStratum(Element element)
    {
        Stratum stratum;
        stratum.element = element;
        stratum.value = element.Text(Tags::XML_ATT_VALUE);
        stratum.variable = element.Text(Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME);
        if (tags_.table == nullptr) {
            stratum.tables = {element};
            stratum.maxTimes = {element};
            stratum.maxTime = element.Number(Tags::XML_ATT_MAXTIME);
        }
        baseline_.strata.push_back(std::move(stratum));
    }

    void AddMaxTime(Element element)
    {
        if (Current().maxTimes.empty()) Current().maxTime = element.Number(Tags::XML_ATT_VALUE);
        Current().maxTimes.push_back(element);
    }

    // `inTable` where cells count: within the first table of a stratum.
    void ReadBelow(Element element, bool inTable)
    {
        for (const Element child : element.Children()) {
            if (child.Is(tags_.cell)) {
                if (inTable) AddCell(child);
            } else if (child.Is(tags_.stratum)) {
                AddStratum(child);
                ReadBelow(child, tags_.table == nullptr);
            } else if (tags_.table != nullptr && child.Is(*tags_.table)) {
                Current().tables.push_back(child);
                ReadBelow(child, Current().tables.size() == 1);
            } else if (tags_.maxTime != nullptr && child.Is(*tags_.maxTime)) {
                AddMaxTime(child);
            } else {
                ReadBelow(child, inTable);
            }
        }
    }

    void AddCell(Element cell)
    {
        Current().cells.push_back({cell, cell.Number(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME),
                                   cell.Number(Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD)});
    }

    const BaselineTags& tags_;
    DocumentFacts::Baseline baseline_;
};

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
            facts.baselines.push_back(BaselineReader(option.element, kExtension).Baseline());
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
        facts.baselines.push_back(BaselineReader(section, kPublished).Baseline());
    }
}

}  // namespace MCVelscore_850
