#ifndef VELSCORE_TESTS_HOST_DERIVATION_H
#define VELSCORE_TESTS_HOST_DERIVATION_H

#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "dom.h"
#include "host/expressions/transformvar.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/transformationdictionary.h"
#include "pmmlreader.h"

namespace MCVelscore_850 {

/// The fields that the documents of these tests derive from: numbers x, y and z, a text t, a text
/// c of the categories a and b, a code k of the numbers 1 and 2, truths b and w (which spells them
/// yet otherwise), an ordinal text o, and dates and times of several types.
inline constexpr char kDataFields[] =
    "<DataField name='x' optype='continuous' dataType='double'/>"
    "<DataField name='y' optype='continuous' dataType='double'/>"
    "<DataField name='z' optype='continuous' dataType='double'>"
    "<Interval closure='closedClosed' leftMargin='0' rightMargin='10'/></DataField>"
    "<DataField name='t' optype='categorical' dataType='string'/>"
    "<DataField name='c' optype='categorical' dataType='string'>"
    "<Value value='a'/><Value value='b'/></DataField>"
    "<DataField name='k' optype='categorical' dataType='integer'>"
    "<Value value='1'/><Value value='2'/></DataField>"
    "<DataField name='b' optype='categorical' dataType='boolean'/>"
    "<DataField name='w' optype='categorical' dataType='boolean'>"
    "<Value value='T'/><Value value='F'/></DataField>"
    "<DataField name='o' optype='ordinal' dataType='string'>"
    "<Value value='small'/><Value value='medium'/><Value value='large'/></DataField>"
    "<DataField name='day' optype='continuous' dataType='date'/>"
    "<DataField name='clock' optype='continuous' dataType='time'/>"
    "<DataField name='moment' optype='continuous' dataType='dateTime'/>"
    "<DataField name='days60' optype='continuous' dataType='dateDaysSince[1960]'/>"
    "<DataField name='seconds80' optype='continuous' dataType='dateTimeSecondsSince[1980]'/>";

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

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

    /// The value that the field's type reads from the text.
    Derivation& Read(const std::string& name, const std::string& text)
    {
        record_->Own(record_->GetVarIndex(name),
                     std::unique_ptr<ScoreValue>(dictionary_->GetVar(name)->MakeValue(text)));
        return *this;
    }

    /// The value of a derived field in the case.
    const ScoreValue& operator[](const std::string& name) const
    {
        return *Var(name).GetTransformedValue(record_.get(), dictionary_.get(), derived_.get());
    }
    double Number(const std::string& name) const { return (*this)[name].GetDouble(); }
    bool Missing(const std::string& name) const { return Var(name).IsMissing(&(*this)[name]); }

    /// Neither missing nor valid.
    bool Invalid(const std::string& name) const
    {
        const ScoreValue& value = (*this)[name];
        return !Var(name).IsMissing(&value) && !Var(name).IsValid(&value);
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
