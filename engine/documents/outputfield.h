#ifndef VELSCORE_ENGINE_DOCUMENTS_OUTPUTFIELD_H
#define VELSCORE_ENGINE_DOCUMENTS_OUTPUTFIELD_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/variables/scoredictionary.h"
#include "host/variables/transformationdictionary.h"

namespace MCVelscore_850 {

class TransformVar;

/// One field of a document's Output section.
struct OutputField {
    enum class Feature {
        PredictedValue,
        PredictedDisplayValue,
        Probability,
        StandardError,
        ConfidenceIntervalLower,
        ConfidenceIntervalUpper,
        Residual,
        Expression  ///< transformedValue and decision
    };

    std::string name;
    Feature feature = Feature::PredictedValue;
    /// The category that a probability or residual is for; empty for the predicted one.
    std::string category;
    /// Of an Expression; the section's.
    const TransformVar* expression = nullptr;
};

/// A document's Output section, ready to be filled case by case.
struct OutputSection {
    std::vector<OutputField> fields;
    /// How people read the target's categories, where the document says so.
    std::map<std::string, std::string> displayValues;
    /// Fields of the data that expressions and residuals read, beside what the model reads.
    std::vector<std::string> inputs;

    /// What the expressions see: the document's fields, and the section's without expression.
    std::unique_ptr<BaseDictionary> dictionary;
    std::unique_ptr<TransformationDictionary> expressions;
};

}  // namespace MCVelscore_850

#endif
