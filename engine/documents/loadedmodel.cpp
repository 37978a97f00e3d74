#include "engine/documents/loadedmodel.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <unordered_set>

#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/miningtreatments.h"
#include "engine/documents/modelreading.h"
#include "engine/documents/outputsection.h"
#include "engine/documents/verificationsection.h"
#include "engine/messages/digest.h"
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

}  // namespace

DocumentFailure::DocumentFailure(const VSException& refusal, std::string file)
    : Failure(FailureKind::Document, refusal.GetErrorCode(), refusal.GetArguments()),
      file_(std::move(file)),
      line_(refusal.GetPlace().line),
      column_(refusal.GetPlace().column),
      path_(refusal.GetPlace().path)
{}

DocumentFailure::~DocumentFailure() = default;

LoadedModel::LoadedModel(const std::string& path, std::shared_ptr<const Plugin> plugin,
                         const LoadOptions& options)
    : plugin_(std::move(plugin))
{
    Read(LoadDocument(path, {}, options.digest ? &sha256_ : nullptr), options);
}

LoadedModel::LoadedModel(const DocumentText& text, std::shared_ptr<const Plugin> plugin,
                         const LoadOptions& options)
    : plugin_(std::move(plugin))
{
    Read(LoadDocumentText(text.bytes, text.name), options);
    if (options.digest) sha256_ = Sha256Of(text.bytes);
}

LoadedModel::~LoadedModel() = default;

void LoadedModel::Read(Document document, const LoadOptions& options)
{
    file_ = document.File();
    bool rotatedTarget = false;
    try {
        if (!options.asIs) {
            for (Adaptation& adaptation : AdaptDocument(document)) {
                adaptations_.push_back(adaptation.ToString());
                rotatedTarget |= adaptation.rotatedTarget;
                std::move(adaptation.listedByCells.begin(), adaptation.listedByCells.end(),
                          std::back_inserter(listedByCells_));
            }
        }
        treatments_ = ReadMiningTreatments(document);
        model_ = ReadModel(*plugin_, document);
        if (options.output != OutputColumns::Own) output_ = ReadOutputSection(document, *model_);
        if (options.verification) verification_ = ReadVerification(document);
    } catch (const VSException& refusal) {
        throw DocumentFailure(refusal, file_);
    }
    if (options.output == OutputColumns::Document && !output_) {
        throw Failure(FailureKind::Document, kNoOutputSection, {file_});
    }
    if (options.verification && !verification_) {
        throw Failure(FailureKind::Document, kNoVerification, {file_});
    }
    model_->Describe(description_);
    if (rotatedTarget) RestoreTargetOrder(description_);
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
    ModelDescription description;
    model_->Describe(description);
    description_ = std::move(description);
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
