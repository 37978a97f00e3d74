// Expressions drawn from bytes, in derived fields: read from their elements and evaluated for some
// cases.

#include <bit>
#include <deque>
#include <memory>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/documents/veltranscoder.h"
#include "host/expressions/transformvar.h"
#include "host/messages/vsexception.h"
#include "host/variables/caserecord.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/transformationdictionary.h"
#include "tests/fuzz/expressiondrawing.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/host/dom.h"
#include "tests/host/pmmlreader.h"

namespace MCVelscore_850::fuzz {

namespace {

// What every input's expressions read: a dictionary, and a few cases.
class Fields {
public:
    Fields()
    {
        const Dom dom("<PMML>" + XmlOf(DataDictionary()) + "</PMML>");
        PmmlReader reader;
        dictionary_.reset(reader.ParseDictionary(dom.First("DataDictionary"), true));
        std::vector<std::string> names;
        for (const DrawnField& field : All()) names.emplace_back(field.name);
        for (size_t row = 0; row < All().front().cells.size(); ++row) {
            CaseRecord& record = cases_.emplace_back(names, false);
            for (size_t i = 0; i < names.size(); ++i) {
                record.Own(static_cast<int>(i),
                           std::unique_ptr<ScoreValue>(
                               dictionary_->GetVar(names[i])->MakeValue(All()[i].cells[row])));
            }
        }
    }
    const ScoreDictionary& Dictionary() const { return *dictionary_; }
    const std::deque<CaseRecord>& Cases() const { return cases_; }

private:
    static const std::vector<DrawnField>& All()
    {
        static const std::vector<DrawnField> all = [] {
            std::vector<DrawnField> fields{
                {"x", "continuous", "double", {}, {"1", "2.5", "", "-1e300", "0.05", "x"}},
                {"sex", "categorical", "string", {"f", "m"}, {"m", "f", "", "m", "q", "f"}}};
            fields.insert(fields.end(), DrawnFields().begin(), DrawnFields().end());
            return fields;
        }();
        return all;
    }
    static Node DataDictionary()
    {
        Node dictionary{"DataDictionary"};
        for (const DrawnField& field : All()) dictionary.children.push_back(DataFieldOf(field));
        return dictionary;
    }

    std::unique_ptr<ScoreDictionary> dictionary_;
    std::deque<CaseRecord> cases_;
};

// The tree of a document around drawn elements. It keeps the memory of elements for others to come,
// though not all of it: now and then there is a new one.
class Tree {
public:
    xercesc::DOMElement* Make(const Node& node)
    {
        xercesc::DOMDocument& document = *dom_->Document();
        xercesc::DOMElement* element = document.createElement(XmlFromUtf8(node.tag).c_str());
        for (const auto& [name, value] : node.attributes) {
            element->setAttribute(XmlFromUtf8(name).c_str(), XmlFromUtf8(value).c_str());
        }
        if (!node.text.empty()) {
            element->appendChild(document.createTextNode(XmlFromUtf8(node.text).c_str()));
        }
        for (const Node& child : node.children) element->appendChild(Make(child));
        return element;
    }
    void Renew()
    {
        constexpr int kKept = 1024;
        if (++inputs_ % kKept == 0) dom_ = std::make_unique<Dom>(kDocument);
    }

private:
    static constexpr const char* kDocument = "<PMML/>";
    std::unique_ptr<Dom> dom_ = std::make_unique<Dom>(kDocument);
    int inputs_ = 0;
};

struct Releaser {
    void operator()(xercesc::DOMElement* element) const { element->release(); }
};

// A derived value, as it can be compared.
std::string Told(const TransformVar& var, const ScoreValue& value)
{
    if (var.IsMissing(&value)) return "missing";
    if (value.GetValueType() == ScoreValue::STRING) return "'" + value.GetString() + "'";
    return std::to_string(std::bit_cast<uint64_t>(value.GetDouble()));
}

// A derived text is one of those that its variable lists.
void CheckListed(const TransformVar& var, const ScoreValue& value)
{
    if (value.GetValueType() != ScoreValue::STRING || var.HasOpenCategories()) return;
    Require(var.IsMissing(&value) || var.IsValid(&value),
            "a text that " + var.GetName() + " lists, not '" + value.GetString() + "'");
}

// The derived values of a case, one behind the other.
std::string Values(const CaseRecord& record, const ScoreDictionary& dictionary,
                   const TransformationDictionary& derived)
{
    std::string told;
    for (const ScoreDictVar* each : derived.GetVars()) {
        const auto& var = static_cast<const TransformVar&>(*each);
        const ScoreValue& value = *var.GetTransformedValue(&record, &dictionary, &derived);
        CheckListed(var, value);
        told += Told(var, value) + "\n";
    }
    return told;
}

// Whatever was evaluated before, a case has the same values.
void CheckValues(const Fields& fields, const TransformationDictionary& derived)
{
    std::vector<std::string> told;
    for (const CaseRecord& record : fields.Cases()) {
        told.push_back(Values(record, fields.Dictionary(), derived));
    }
    for (size_t row = told.size(); row-- > 0;) {
        Require(Values(fields.Cases()[row], fields.Dictionary(), derived) == told[row],
                "the same values in another order of cases");
    }
}

void CheckSection(const Node& section)
{
    StartXml();
    static const Fields fields;
    static Tree tree;
    static PmmlReader reader;
    tree.Renew();
    const std::unique_ptr<xercesc::DOMElement, Releaser> element(tree.Make(section));
    try {
        const std::unique_ptr<TransformationDictionary> derived(
            reader.HandleTransformationDictionary(element.get(), &fields.Dictionary()));
        Require(derived != nullptr, "derived fields");
        CheckValues(fields, *derived);
    } catch (const VSException& refusal) {
        Require(!refusal.GetText().empty(), "a refusal that says why");
    }
}

}  // namespace

}  // namespace MCVelscore_850::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    Choices choices(TextOf(bytes, size));
    CheckSection(DrawSection(choices));
    return 0;
}
