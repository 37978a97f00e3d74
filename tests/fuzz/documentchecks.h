#ifndef VELSCORE_TESTS_FUZZ_DOCUMENTCHECKS_H
#define VELSCORE_TESTS_FUZZ_DOCUMENTCHECKS_H

#include <memory>
#include <string>
#include <string_view>

#include "engine/documents/loadedmodel.h"
#include "tests/engine/scoredtable.h"

// What holds for every document, however it was made. Each check ends the program where it doesn't.
namespace MCVelscore_850::fuzz {

/// The plug-in, linked into the target.
std::shared_ptr<const Plugin> BuiltIn();

/// The model of a document; null where it is refused.
std::unique_ptr<LoadedModel> ModelOf(std::string_view document, const LoadOptions& options = {});

/// Some cases for a model: declared categories, ordinary and extreme numbers, empty and odd texts.
/// Drawn from the model's columns alone, so that they are the same each time.
CaseTable DrawnCases(const LoadedModel& model);

/// A table has the same results, bit by bit, whether its rows go together or alone. Of a sound
/// document (one that adapter and audit let pass) probabilities lie within 0 and 1 and add up to 1,
/// survival lies within 0 and 1 and doesn't rise with time, and limits enclose the prediction.
void CheckScores(const LoadedModel& model, const CaseTable& table, bool isSound);

/// Everything that is done with a document: it is read with and without adapter and audit,
/// described, put right, converted, verified, and scores drawn cases. Under libFuzzer all but the
/// reading with adapter and audit, and the scores, is done with a share of the documents.
void CheckDocument(std::string_view document);

/// A document that is converted is read, and scores drawn cases to the same bits.
void CheckConverted(std::string_view document);

}  // namespace MCVelscore_850::fuzz

#endif
