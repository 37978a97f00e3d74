#ifndef VELSCORE_ENGINE_DOCUMENTS_LOADEDMODEL_H
#define VELSCORE_ENGINE_DOCUMENTS_LOADEDMODEL_H

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "engine/documents/audit/finding.h"
#include "engine/documents/miningtreatment.h"
#include "engine/documents/plugin.h"
#include "engine/messages/failure.h"
#include "host/model/modeldescription.h"

namespace MCVelscore_850 {

class Document;
class ScoreModel;
class VSException;
struct OutputSection;
struct VerificationTable;

/// A document that its reader refused, with the place as far as it is known. What the loader
/// refuses is a plain Failure, whose text tells the place.
class DocumentFailure : public Failure {
public:
    /// `found` is what adapter and audit had told before the refusal.
    DocumentFailure(const VSException& refusal, std::string file, Findings found = {});
    ~DocumentFailure() override;

    const std::string& File() const { return file_; }
    /// From 1; 0 when unknown.
    unsigned long Line() const { return line_; }
    unsigned long Column() const { return column_; }
    /// The element's path from the root; empty when unknown.
    const std::string& ElementPath() const { return path_; }
    /// What adapter and audit told of the document, by place.
    const Findings& Found() const { return found_; }

protected:
    /// The first fault of `found` is what is told first.
    DocumentFailure(std::string file, const Finding& fault, Findings found);

private:
    std::string file_;
    unsigned long line_ = 0;
    unsigned long column_ = 0;
    std::string path_;
    Findings found_;
};

/// A document that the audit refused: the first fault's place and text, and all that was found.
class DocumentFaults : public DocumentFailure {
public:
    /// `findings` are sorted and hold a fault.
    DocumentFaults(Findings findings, std::string file);
    ~DocumentFaults() override;
};

/// What a model does with a predictor value that is missing or not valid.
enum class MissingPolicy {
    Substitute,    ///< take the replacement where one is known
    SysmisResult,  ///< answer a missing prediction
    StatusOnly     ///< answer the status alone
};

/// Which columns are wanted: the model's own or those of the document's Output section. Where
/// `Document` wants one that isn't there, the document is refused with kNoOutputSection.
enum class OutputColumns { Own, DocumentIfAny, Document };

struct LoadOptions {
    /// Leaves the document as it is, without adaptations and audit.
    bool asIs = false;
    /// Rules of the audit whose faults are to be notices; names that FindAuditRule() knows.
    std::vector<std::string> allowed{};
    OutputColumns output = OutputColumns::Own;
    /// Reads the ModelVerification section too; a document without one is refused with
    /// kNoVerification.
    bool verification = false;
    /// Keeps the digest of the document's bytes.
    bool digest = false;
    /// Unless null, becomes the document in UTF-8, also where it is refused later on.
    std::string* text = nullptr;
};

/// A model, read from its document by the plug-in.
///
/// Errors  Failure of kind Document: a DocumentFaults when the audit refuses, another
///         DocumentFailure when the reader does.
/// Owner   keeps the plug-in open; results made by the model must be gone before it is.
/// Threads one thread at a time.
class LoadedModel {
public:
    /// `path` "-" is standard input.
    LoadedModel(const std::string& path, std::shared_ptr<const Plugin> plugin,
                const LoadOptions& options = {});
    /// Of a document at hand, which is adapted; without digest and text.
    LoadedModel(Document& document, std::shared_ptr<const Plugin> plugin,
                const LoadOptions& options = {});
    LoadedModel(const LoadedModel&) = delete;
    LoadedModel& operator=(const LoadedModel&) = delete;
    ~LoadedModel();

    /// How messages call the document.
    const std::string& File() const { return file_; }
    /// What the adapter and the audit found, by place; no faults but allowed ones, as notices.
    const Findings& DocumentFindings() const { return findings_; }
    /// What was adapted, and what else was noticed, a line each.
    std::vector<std::string> Adaptations() const { return Lines(Answer::Adapted); }
    std::vector<std::string> Notices() const { return Lines(Answer::Notice); }
    ScoreModel& Model() { return *model_; }
    const ScoreModel& Model() const { return *model_; }
    /// Until this is called the model's own policy stands: reading a document may have set one.
    void SetPolicy(MissingPolicy policy);
    /// False once a policy was set that replaces nothing. The model's own policy doesn't tell: a
    /// model that knows no replacement for its numbers gives substitution up, while the document
    /// may well have replacements for categories.
    bool Substitutes() const { return substitutes_; }
    /// Tells the model to compute its prediction alone, if that can't change the prediction:
    /// among others than those with standard errors it can.
    void WantPredictionOnly();
    /// Sets the level of the confidence limits, between 0 and 1, for what scores from now on, and
    /// has the description tell it. Only of a model whose description has a confidence level.
    void SetConfidenceLevel(double level);
    const ModelDescription& Description() const { return description_; }
    /// The columns that a table needs, each once: the description's variables, and in the place of
    /// a derived one the fields that it is computed from.
    std::vector<std::string> Columns() const { return ColumnsOf(description_); }
    /// The same of a description that names fewer variables.
    std::vector<std::string> ColumnsOf(const ModelDescription& description) const;
    /// Variables whose list of categories was taken from the model's cells.
    const std::vector<std::string>& ListedByCells() const { return listedByCells_; }
    const std::vector<MiningFieldTreatment>& Treatments() const { return treatments_; }
    /// The document's Output section; null unless it was asked for.
    const OutputSection* Output() const { return output_.get(); }
    /// The records of the ModelVerification section; null unless they were asked for.
    const VerificationTable* Verification() const { return verification_.get(); }
    /// The SHA-256 of the document's bytes, in hexadecimal digits; empty unless it was asked for.
    const std::string& Sha256() const { return sha256_; }
    /// The document's version, empty when it tells none.
    std::string Version() const;
    /// The model's plain text of all that it holds.
    void Display(std::ostream& out) const;

private:
    void Read(Document& document, const LoadOptions& options);
    std::vector<std::string> Lines(Answer answer) const;
    void Describe();

    std::shared_ptr<const Plugin> plugin_;  // first: its code outlives the model
    std::string file_;
    std::string sha256_;
    Findings findings_;
    std::vector<std::string> listedByCells_;
    std::string translatedFamily_;  // of a RegressionModel; empty for any other model
    std::vector<MiningFieldTreatment> treatments_;
    std::unique_ptr<ScoreModel> model_;
    bool substitutes_ = true;
    std::unique_ptr<OutputSection> output_;
    std::unique_ptr<VerificationTable> verification_;
    ModelDescription description_;
};

}  // namespace MCVelscore_850

#endif
