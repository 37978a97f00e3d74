#include "engine/documents/loadedmodel.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <unordered_set>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/miningtreatments.h"
#include "engine/documents/modelreading.h"
#include "engine/documents/outputsection.h"
#include "engine/documents/verificationsection.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "host/model/versioninfo.h"
#include "host/variables/scoredictionary.h"

namespace MCVelscore_850 {

namespace {

// Columns keep the document's own order of the categories.
void RestoreTargetOrder(ModelDescription& description)
{
    auto& categories = description.targetCategories;
    auto& quantities = description.quantities;
    if (categories.empty() || quantities.size() != categories.size() + 1) return;
    std::rotate(categories.begin(), categories.end() - 1, categories.end());
    std::rotate(quantities.begin() + 1, quantities.end() - 1, quantities.end());
}

// The first by place, but a misspelt name before all others, which may come of it: a "PPCel" leaves
// its parameter without a cell.
const Finding& FirstFault(const Findings& findings)
{
    const auto& kept = findings.Kept();
    const auto isMisspelt = [](const Finding& finding) {
        return finding.answer == Answer::Fault && IsMisspeltName(*finding.rule);
    };
    const auto misspelt = std::find_if(kept.begin(), kept.end(), isMisspelt);
    if (misspelt != kept.end()) return *misspelt;
    return *std::find_if(kept.begin(), kept.end(),
                         [](const Finding& finding) { return finding.answer == Answer::Fault; });
}

void RefuseFaults(Findings& findings, const std::string& file)
{
    if (findings.CountOf(Answer::Fault) == 0) return;
    findings.Sort();
    throw DocumentFaults(std::move(findings), file);
}

// `sha256` is the model's.
Keeping KeepingOf(const LoadOptions& options, std::string& sha256)
{
    return {.sha256 = options.digest ? &sha256 : nullptr, .text = options.text};
}

}  // namespace

DocumentFailure::DocumentFailure(const VSException& refusal, std::string file, Findings found)
    : Failure(FailureKind::Document, refusal.GetErrorCode(), refusal.GetArguments()),
      file_(std::move(file)),
      line_(refusal.GetPlace().line),
      column_(refusal.GetPlace().column),
      path_(refusal.GetPlace().path),
      found_(std::move(found))
{
    found_.Sort();
}

DocumentFailure::DocumentFailure(std::string file, const Finding& fault, Findings found)
    : Failure(FailureKind::Document, kDocumentFault, {fault.text, std::string(fault.rule->name)},
              fault.remedy),
      file_(std::move(file)),
      line_(fault.place.line),
      column_(fault.place.column),
      path_(fault.place.path),
      found_(std::move(found))
{}

DocumentFailure::~DocumentFailure() = default;

DocumentFaults::DocumentFaults(Findings findings, std::string file)
    : DocumentFailure(std::move(file), FirstFault(findings), findings)
{}

DocumentFaults::~DocumentFaults() = default;

LoadedModel::LoadedModel(const std::string& path, std::shared_ptr<const Plugin> plugin,
                         const LoadOptions& options)
    : plugin_(std::move(plugin))
{
    WithinMemory([&] {
        Document document = LoadDocument(path, {}, KeepingOf(options, sha256_));
        Read(document, options);
    });
}

LoadedModel::LoadedModel(const DocumentText& text, std::shared_ptr<const Plugin> plugin,
                         const LoadOptions& options)
    : plugin_(std::move(plugin))
{
    WithinMemory([&] {
        Document document =
            LoadDocumentText(text.bytes, text.name, {}, KeepingOf(options, sha256_));
        Read(document, options);
    });
}

LoadedModel::LoadedModel(Document& document, std::shared_ptr<const Plugin> plugin,
                         const LoadOptions& options)
    : plugin_(std::move(plugin))
{
    WithinMemory([&] { Read(document, options); });
}

LoadedModel::~LoadedModel() = default;

void LoadedModel::Read(Document& document, const LoadOptions& options)
{
    file_ = document.File();
    bool rotatedTarget = false;
    const auto note = [&](std::vector<Adaptation> adaptations) {
        for (Adaptation& adaptation : adaptations) {
            findings_.AddAdapted(*adaptation.rule, adaptation.place, adaptation.change);
            rotatedTarget |= adaptation.rotatedTarget;
            std::move(adaptation.listedByCells.begin(), adaptation.listedByCells.end(),
                      std::back_inserter(listedByCells_));
            if (!adaptation.family.empty()) translatedFamily_ = std::move(adaptation.family);
        }
    };
    DocumentAudit audit(document, options.allowed, findings_);
    try {
        if (!options.asIs) {
            note(AdaptNames(document));
            audit.LookAtNames();
            note(AdaptDocument(document));
            audit.LookAtTree();
            RefuseFaults(findings_, file_);
        }
        treatments_ = ReadMiningTreatments(document);
        model_ = ReadModel(*plugin_, document);
        if (options.output != OutputColumns::Own) output_ = ReadOutputSection(document, *model_);
        if (options.verification) verification_ = ReadVerification(document);
    } catch (const VSException& refusal) {
        // A fault that was found before may be why.
        RefuseFaults(findings_, file_);
        throw DocumentFailure(refusal, file_, std::move(findings_));
    }
    if (options.output == OutputColumns::Document && !output_) {
        throw Failure(FailureKind::Document, kNoOutputSection, {file_});
    }
    if (options.verification && !verification_) {
        throw Failure(FailureKind::Document, kNoVerification, {file_});
    }
    Describe();
    if (!options.asIs) {
        audit.LookAtModel(description_);
        RefuseFaults(findings_, file_);
        findings_.Sort();
    }
    if (rotatedTarget) RestoreTargetOrder(description_);
}

std::vector<std::string> LoadedModel::Lines(Answer answer) const
{
    std::vector<std::string> lines;
    for (const Finding& finding : findings_.Kept()) {
        if (finding.answer == answer) lines.push_back(finding.ToString());
    }
    return lines;
}

void LoadedModel::SetPolicy(MissingPolicy policy)
{
    substitutes_ = policy == MissingPolicy::Substitute;
    switch (policy) {
        case MissingPolicy::Substitute:
            model_->SetMissingValuePolicy(ScoreModel::MV_SUBSTITUTE);
            break;
        case MissingPolicy::SysmisResult:
            model_->SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
            break;
        case MissingPolicy::StatusOnly:
            model_->SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
            break;
    }
}

void LoadedModel::WantPredictionOnly()
{
    if (description_.resultType == ScoreResult::LR_RESULT) model_->SetPredictionOnly(true);
}

void LoadedModel::SetConfidenceLevel(double level)
{
    model_->SetConfidenceLevel(level);
    // A model with limits predicts no categories, whose order would have to be restored.
    Describe();
}

void LoadedModel::Describe()
{
    description_ = {};
    model_->Describe(description_);
    if (translatedFamily_.empty()) return;
    description_.family = translatedFamily_;
    description_.className = "RegressionModel";
    description_.distribution.clear();  // a RegressionModel has none
}

std::vector<std::string> LoadedModel::ColumnsOf(const ModelDescription& description) const
{
    const ScoreDictionary* dictionary = model_->GetDictionary();
    const ScoreDictionary* transformations = model_->GetTransformationDictionary();
    std::vector<std::string> columns;
    std::unordered_set<std::string> seen;
    const auto add = [&](const auto& self, const ScoreDictVar& var) -> void {
        if (!seen.insert(var.GetName()).second) return;
        if (!var.IsDerived()) return columns.push_back(var.GetName());
        // Reading bounds the chain of derived fields, and with it this recursion.
        for (const auto* input : static_cast<const TransformVar&>(var).Inputs()) self(self, *input);
    };
    for (const std::string& name : description.variables) {
        const ScoreDictVar* var = dictionary == nullptr ? nullptr : dictionary->GetVar(name);
        if (var == nullptr && transformations != nullptr) var = transformations->GetVar(name);
        if (var != nullptr) add(add, *var);
    }
    return columns;
}

std::string LoadedModel::Version() const
{
    const ScoreVersionInfo* version = model_->GetVersionInfo();
    return version == nullptr ? std::string() : version->GetVersion();
}

void LoadedModel::Display(std::ostream& out) const { model_->Display(out); }

}  // namespace MCVelscore_850
