// Derived fields of exported documents on whole tables. What they feed is a sum of betas times
// derived values; the mean that R predicts is that sum or its logistic, so R's numbers judge the
// derived values without any model of ours.

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "dom.h"
#include "host/expressions/transformvar.h"
#include "host/variables/caserecord.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/transformationdictionary.h"
#include "pmmlreader.h"

namespace MCVelscore_850 {
namespace {

std::string Slurp(const std::string& file)
{
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

using Row = std::vector<std::string>;

// A table without quoted fields.
std::vector<Row> Table(const std::string& file)
{
    std::vector<Row> rows;
    std::istringstream in(Slurp(file));
    for (std::string line; std::getline(in, line);) {
        Row row;
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, ',');) row.push_back(field);
        rows.push_back(std::move(row));
    }
    return rows;
}

struct Term {
    double beta = 0.0;
    std::vector<std::pair<std::string, std::string>> cells;  // predictor, category or exponent
};

class Document {
public:
    explicit Document(const std::string& folder) : dom_(Slurp(folder + "model.pmml"))
    {
        dictionary_.reset(reader_.ParseDictionary(dom_.First("DataDictionary"), true));
        derived_.reset(reader_.HandleTransformationDictionary(dom_.First("LocalTransformations"),
                                                              dictionary_.get()));
        Each("PPCell", [&](const xercesc::DOMElement* cell) {
            terms_[Text(cell, "parameterName")].cells.emplace_back(Text(cell, "predictorName"),
                                                                   Text(cell, "value"));
        });
        Each("PCell", [&](const xercesc::DOMElement* cell) {
            terms_[Text(cell, "parameterName")].beta = reader_.VerifyDouble(Text(cell, "beta"));
        });
    }

    double Predictor(const Row& header, const Row& row) const
    {
        CaseRecord record(header, false);
        for (size_t i = 0; i < header.size(); ++i) {
            const ScoreDictVar* var = dictionary_->GetVar(header[i]);
            record.Own(static_cast<int>(i), std::unique_ptr<ScoreValue>(var->MakeValue(row[i])));
        }
        double sum = 0.0;
        for (const auto& [name, term] : terms_) {
            double design = 1.0;
            for (const auto& [predictor, text] : term.cells) {
                const ScoreValue& value = *Value(predictor, record);
                const bool isText = value.GetValueType() == ScoreValue::STRING;
                design *= !isText ? value.GetDouble() : value.GetString() == text ? 1.0 : 0.0;
            }
            sum += term.beta * design;
        }
        return sum;
    }

    const ScoreDictionary& Derived() const { return *derived_; }

private:
    template <class Do>
    void Each(const std::string& tag, Do&& what)
    {
        const auto* found = reader_.GetElementsByTagName(dom_.Root(), tag);
        for (XMLSize_t i = 0; i < found->getLength(); ++i) {
            what(static_cast<const xercesc::DOMElement*>(found->item(i)));
        }
    }
    std::string Text(const xercesc::DOMElement* element, const std::string& attribute) const
    {
        return reader_.ToString(reader_.GetAttributeForced(element, attribute));
    }
    const ScoreValue* Value(const std::string& name, const CaseRecord& record) const
    {
        const ScoreDictVar* var = derived_->GetVar(name);
        if (var == nullptr) return record.GetValue(name);
        return static_cast<const TransformVar*>(var)->GetTransformedValue(
            &record, dictionary_.get(), derived_.get());
    }

    Dom dom_;
    PmmlReader reader_;
    std::unique_ptr<ScoreDictionary> dictionary_;
    std::unique_ptr<TransformationDictionary> derived_;
    std::map<std::string, Term> terms_;
};

TEST(DerivedFieldsOfExporters, FeedThePredictionsOfR)
{
    const struct {
        const char* name;
        size_t rows;
        bool logistic;
        const char* column;
    } kCases[] = {{"xform-functions-mtcars", 32, false, "prediction"},
                  {"xform-zscore-minmax-iris", 114, false, "prediction"},
                  {"xform-map-discretize-birthwt", 120, true, "prediction"},
                  {"xform-normdiscrete-pima-public", 120, true, "probability(Yes)"}};
    for (const auto& each : kCases) {
        SCOPED_TRACE(each.name);
        const std::string folder = std::string("tests/data/cases/") + each.name + "/";
        const Document document(folder);
        const std::vector<Row> input = Table(folder + "input.csv");
        const std::vector<Row> expected = Table(folder + "expected.csv");
        ASSERT_EQ(input.size(), each.rows + 1);
        ASSERT_EQ(expected.size(), input.size());
        size_t column = 0;
        while (expected[0][column] != each.column) ++column;
        for (size_t i = 1; i < input.size(); ++i) {
            const double sum = document.Predictor(input[0], input[i]);
            const double mean = each.logistic ? 1.0 / (1.0 + std::exp(-sum)) : sum;
            const double wanted = std::stod(expected[i][column]);
            // the exporter writes coefficients with 15 digits
            EXPECT_LE(std::fabs(mean - wanted), 1e-9 * std::fabs(wanted)) << "row " << i;
        }
    }
}

}  // namespace
}  // namespace MCVelscore_850
