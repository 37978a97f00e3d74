#ifndef VELSCORE_ENGINE_SCORING_CASEPREPARER_H
#define VELSCORE_ENGINE_SCORING_CASEPREPARER_H

#include <deque>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "engine/documents/miningtreatment.h"
#include "engine/scoring/casefield.h"
#include "engine/scoring/resultblock.h"
#include "host/expressions/expressionscratch.h"
#include "host/model/modeldescription.h"
#include "host/variables/caserecord.h"

namespace MCVelscore_850 {

class ScoreDictVar;
class ScoreDictionary;
class ScoreModel;
class TransformVar;
struct ColumnBlock;

/// Turns the rows of a table into cases for one model: typed values in one record, overwritten
/// row by row.
///
/// Columns   are found by name, as CaseOptions::columnOf says; those that the model needs must be
/// there, each once: the
///           variables that its description names, and for derived ones the fields that their
///           expressions read.
/// Values    An empty field is a missing value, and so is NA unless the variable declares a
///           category of that name. Every value is set anew for each row, since a model may write
///           its replacements into the record.
/// Treatment What the mining schema leaves to the host, in this order: outliers that count as the
///           limits, missing values apart; invalid values as they are, as missing, as another value
///           or as a refusal; missing values by their replacement, but for continuous fields that
///           the model alone reads, since it replaces them itself. What the schema puts in, or
///           wants as it is, is valid whatever the variable lists; where a factor's contrasts have
///           a row for each category alone, its variable judges it all the same.
/// Derived   values stand in the same record: GetScore is told that they are there.
/// Errors    kMissingColumn, kDuplicateColumn, kUnknownMappedName (Failure) from the constructor; a
///           row that can't be a case answers its code.
/// Owner     the model and its dictionaries outlive the preparer.
class CasePreparer {
public:
    CasePreparer(const ScoreModel& model, const ModelDescription& description,
                 const std::vector<MiningFieldTreatment>& treatments,
                 std::span<const std::string> header, const std::string& tableName,
                 CaseOptions options = {});
    CasePreparer(const CasePreparer&) = delete;
    CasePreparer& operator=(const CasePreparer&) = delete;
    ~CasePreparer();

    /// Makes a row of a block the record's case. The block has a column for each of the header's;
    /// what the status and the unlisted values view stands as long as the block, and until
    /// BeginBlock().
    CaseStatus Prepare(const ColumnBlock& block, size_t row);
    /// The same for a row that nothing is to be told of: false where it is refused. Prepare() makes
    /// a case of such a row, then or later.
    bool PrepareSurely(const ColumnBlock& block, size_t row);
    /// Notes an unlisted value: what stands in a row of the field's column.
    void NoteUnlisted(const CaseField& field, const ColumnBlock& block, size_t row);

    const CaseRecord& Record() const { return *record_; }

    /// The model's variable of that name, data or derived; null when it has none.
    const ScoreDictVar* FindVar(const std::string& name) const;
    /// The status of a prepared row that the model failed with a code for a variable, null when it
    /// blames none. A derived variable hands the blame on to its first input that is missing or
    /// not valid, or to its only one: the table has no field of its own name.
    CaseStatus Refusal(long code, const ScoreDictVar* failed, const ColumnBlock& block, size_t row);
    /// True where a missing value is what is told of a row's field.
    bool IsMissing(const CaseStatus& status) const;
    /// Lets go what was noted of the block before, and the texts that statuses view.
    void BeginBlock();
    /// What was noted of the block at hand.
    std::vector<UnlistedValue>& Unlisted() { return unlisted_; }

    /// The data variables that are read, in the order of their values in the record.
    std::span<CaseField> Fields() { return fields_; }
    std::span<const CaseField> Fields() const { return fields_; }
    bool HasDerived() const { return !derived_.empty(); }
    std::vector<std::string> InputNames() const;
    /// A row's texts of these variables as a document writes them: a missing value is empty, and
    /// numbers have a decimal point. Of a block of texts.
    std::vector<std::string> InputTexts(const ColumnBlock& block, size_t row) const;

private:
    struct Derived {
        const TransformVar* var;
        int position;
    };

    /// `columns` are the table's, for variables that it may lack; null when it may not.
    void AddVariable(const ScoreDictVar& var, std::vector<std::string>& names,
                     const std::span<const std::string>* columns = nullptr);
    void RefuseUnknownNames() const;
    void BindColumns(std::span<const std::string> header, const std::string& tableName);
    FieldTreatment TreatmentOf(const ScoreDictVar& var, const MiningFieldTreatment& schema,
                               const ModelDescription& description) const;
    bool LeavesReplacementToModel(const ScoreDictVar& var,
                                  const ModelDescription& description) const;
    void ComputeDerived();
    /// What stands in a row of a field's column.
    std::string_view TextOf(const CaseField& field, const ColumnBlock& block, size_t row);

    CaseOptions options_;
    const ScoreDictionary* dictionary_;
    const ScoreDictionary* transformations_;
    bool modelSubstitutes_;
    std::vector<CaseField> fields_;
    std::vector<Derived> derived_;  ///< inputs before what reads them
    std::unordered_set<const ScoreDictVar*> seen_;
    std::unique_ptr<CaseRecord> record_;
    ExpressionScratch expressions_;  ///< of the derived values
    std::vector<UnlistedValue> unlisted_;
    std::deque<std::string> numberTexts_;  // of numbers that are viewed, which mustn't move
    size_t numberTextCount_ = 0;
};

}  // namespace MCVelscore_850

#endif
