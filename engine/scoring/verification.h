#ifndef VELSCORE_ENGINE_SCORING_VERIFICATION_H
#define VELSCORE_ENGINE_SCORING_VERIFICATION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/documents/verificationtable.h"

namespace MCVelscore_850 {

class ByteSource;
class LoadedModel;

/// One value that is not the expected one.
struct Difference {
    int64_t record = 0;  ///< from 1
    std::string field;
    std::string expected;  ///< empty for a missing value
    std::string found;     ///< empty for a missing value
    double precision = 0.0;
    long status = 0;            ///< of a record that wasn't scored
    std::string faultyField{};  ///< that it wasn't scored for, as far as a single one is to blame
    std::optional<std::string> faultyText{};  ///< what stood in that field
};

struct VerificationReport {
    int64_t records = 0;
    int64_t compared = 0;  ///< values
    std::vector<Difference> differences;
};

/// True when a found number agrees with an expected one: both at most zeroThreshold in size, or
/// |found - expected| <= precision |expected|.
bool AgreesWith(double found, double expected, const VerificationTable::Field& field);

/// Scores the records and compares. A field is looked for among the document's output fields, then
/// it is the target, whose predicted value is compared, then an input.
///
/// Errors  Failure of kind Document: kVerificationField for a field that is none of them; what
///         CasePreparer refuses of a table that lacks inputs.
VerificationReport Verify(const LoadedModel& model, const VerificationTable& table);

/// Cases as records, with what the model makes of them: the inputs of the model and of the output
/// fields, the predicted value of the target, and the output fields but for residuals, which need
/// an observed value.
struct MadeVerification {
    VerificationTable table;
    int64_t leftOut = 0;  ///< cases without a score
};

/// How a table of cases to make records of is written.
struct VerificationOptions {
    char delimiter = ',';
    char decimal = '.';
    std::vector<std::string> missingTexts{};
};

/// The most cases that become records: a document isn't the place for more.
inline constexpr int64_t kMostRecords = 10000;

/// Errors  what RowReader and CasePreparer refuse; kTooManyRecords (cases).
MadeVerification MakeVerification(const LoadedModel& model, ByteSource& cases,
                                  const VerificationOptions& options);

}  // namespace MCVelscore_850

#endif
