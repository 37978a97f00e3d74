#ifndef VELSCORE_TESTS_HOST_DERIVATION_H
#define VELSCORE_TESTS_HOST_DERIVATION_H

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "dom.h"
#include "host/caserecord.h"
#include "host/numericvalue.h"
#include "host/scoredictionary.h"
#include "host/stringvalue.h"
#include "host/transformationdictionary.h"
#include "host/transformvar.h"
#include "pmmlreader.h"

namespace MCVelscore_850 {

/// The fields that the documents of these tests derive from: numbers x, y and z, a text t, a text
/// c of the categories a and b, and a code k of the numbers 1 and 2.
inline constexpr char kDataFields[] =
    "<DataField name='x' optype='continuous' dataType='double'/>"
    "<DataField name='y' optype='continuous' dataType='double'/>"
    "<DataField name='z' optype='continuous' dataType='double'>"
    "<Interval closure='closedClosed' leftMargin='0' rightMargin='10'/></DataField>"
    "<DataField name='t' optype='categorical' dataType='string'/>"
    "<DataField name='c' optype='categorical' dataType='string'>"
    "<Value value='a'/><Value value='b'/></DataField>"
    "<DataField name='k' optype='categorical' dataType='integer'>"
    "<Value value='1'/><Value value='2'/></DataField>";

/// Derived fields and one case.
class Derivation {
public:
    explicit Derivation(const std::string& derivedFields)
    {
        StartXml();
        const Dom dom("<PMML><DataDictionary>" + std::string(kDataFields) +
                      "</DataDictionary><TransformationDictionary>" + derivedFields +
                      "</TransformationDictionary></PMML>");
        PmmlReader reader;
        dictionary_.reset(reader.ParseDictionary(dom.First("DataDictionary"), true));
        derived_.reset(reader.HandleTransformationDictionary(dom.First("TransformationDictionary"),
                                                             dictionary_.get()));
        std::vector<std::string> names;
        for (const ScoreDictVar* var : dictionary_->GetVars()) names.push_back(var->GetName());
        record_ = std::make_unique<CaseRecord>(std::move(names), false);
    }

    Derivation& With(const std::string& name, double number)
    {
        record_->Own(record_->GetVarIndex(name), std::make_unique<NumericValue>(number));
        return *this;
    }
    Derivation& With(const std::string& name, const char* text)
    {
        record_->Own(record_->GetVarIndex(name), std::make_unique<StringValue>(text));
        return *this;
    }

    /// The value of a derived field in the case.
    const ScoreValue& operator[](const std::string& name) const
    {
        return *Var(name).GetTransformedValue(record_.get(), dictionary_.get(), derived_.get());
    }
    double Number(const std::string& name) const { return (*this)[name].GetDouble(); }
    bool Missing(const std::string& name) const
    {
        return Var(name).IsMissing(&(*this)[name]);
    }

    const TransformVar& Var(const std::string& name) const
    {
        return static_cast<const TransformVar&>(*derived_->GetVar(name));
    }
    TransformationDictionary* Derived() const { return derived_.get(); }
    const ScoreDictionary* Dictionary() const { return dictionary_.get(); }
    const CaseRecord* Record() const { return record_.get(); }

private:
    std::unique_ptr<ScoreDictionary> dictionary_;
    std::unique_ptr<TransformationDictionary> derived_;
    std::unique_ptr<CaseRecord> record_;
};

inline std::string DerivedField(const std::string& name, const std::string& expression,
                                const std::string& optype = "continuous",
                                const std::string& dataType = "double")
{
    return "<DerivedField name='" + name + "' optype='" + optype + "' dataType='" + dataType +
           "'>" + expression + "</DerivedField>";
}

inline std::string FieldRef(const std::string& field, const std::string& attributes = "")
{
    return "<FieldRef field='" + field + "' " + attributes + "/>";
}

inline std::string Constant(const std::string& text, const std::string& attributes = "")
{
    return "<Constant " + attributes + ">" + text + "</Constant>";
}

inline std::string Apply(const std::string& function, const std::string& arguments,
                         const std::string& attributes = "")
{
    return "<Apply function='" + function + "' " + attributes + ">" + arguments + "</Apply>";
}

inline Refusal RefusedFor(const std::string& derivedFields)
{
    return RefusalOf([&] { const Derivation derivation(derivedFields); });
}

}  // namespace MCVelscore_850

#endif
