#ifndef VELSCORE_TESTS_ENGINE_ADAPTED_H
#define VELSCORE_TESTS_ENGINE_ADAPTED_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/element.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

// A tree as text: tags, attributes by name, and what lies within, without the blanks between.
inline void Write(Element element, std::string& out)
{
    out += "<" + element.Tag();
    std::map<std::string, std::string> attributes;
    element.ForEachAttribute([&](Element::RawText name, Element::RawText text) {
        attributes[Utf8FromXml(name.data())] = Utf8FromXml(text.data());
    });
    for (const auto& [name, text] : attributes) out += " " + name + "='" + text + "'";
    out += ">";
    for (const Element child : element.Children()) Write(child, out);
    out += "</>";
}

// A document before and after the adapter.
struct Adapted {
    explicit Adapted(const std::string& text) : document(LoadDocumentText(text, "m.pmml"))
    {
        before = Text();
        adaptations = AdaptDocument(document);
        after = Text();
    }

    Element Root() const { return document.Root(); }
    std::string Text() const
    {
        std::string text;
        Write(Root(), text);
        return text;
    }
    bool Untouched() const { return adaptations.empty() && before == after; }
    // The rules that did something, in order.
    std::string Rules() const
    {
        std::string rules;
        for (const Adaptation& adaptation : adaptations) {
            rules += (rules.empty() ? "" : " ") + std::string(adaptation.rule->name);
        }
        return rules;
    }
    bool Has(std::string_view piece) const { return after.find(piece) != std::string::npos; }

    Document document;
    std::string before, after;
    std::vector<Adaptation> adaptations;
};

// The parts of a document that a test cares about; the rest is as the reader takes it.
struct Parts {
    std::string root = "PMML version='4.4'";
    std::string fields =
        "<DataField name='y' optype='continuous' dataType='double'/>"
        "<DataField name='a' optype='continuous' dataType='double'/>"
        "<DataField name='b' optype='continuous' dataType='double'/>";
    std::string model = "modelType='regression' functionName='regression'";
    std::string schema =
        "<MiningField name='y' usageType='target'/><MiningField name='a'/><MiningField name='b'/>";
    std::string parameters =
        "<Parameter name='(Constant)'/><Parameter name='pa'/><Parameter name='pb'/>";
    std::string factors;
    std::string covariates = "<Predictor name='a'/><Predictor name='b'/>";
    std::string cells =
        "<PPCell parameterName='pa' predictorName='a' value='1'/>"
        "<PPCell parameterName='pb' predictorName='b' value='1'/>";
    std::string betas =
        "<PCell parameterName='(Constant)' beta='3'/>"
        "<PCell parameterName='pa' beta='1'/><PCell parameterName='pb' beta='2'/>";
    std::string before;  // children of the model ahead of the others
    std::string covariances;

    std::string Text() const
    {
        return "<" + root + "><DataDictionary>" + fields + "</DataDictionary>\n" +
               "<GeneralRegressionModel " + model + ">" + before + "<MiningSchema>" + schema +
               "</MiningSchema>\n<ParameterList>" + parameters + "</ParameterList>\n<FactorList>" +
               factors + "</FactorList><CovariateList>" + covariates +
               "</CovariateList>\n<PPMatrix>" + cells + "</PPMatrix><PCovMatrix>" + covariances +
               "</PCovMatrix><ParamMatrix>" + betas +
               "</ParamMatrix></GeneralRegressionModel></PMML>";
    }
};

}  // namespace MCVelscore_850

#endif
