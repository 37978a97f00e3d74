#include "engine/documents/modelreading.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documenttree.h"
#include "engine/documents/plugin.h"
#include "engine/documents/treetext.h"
#include "host/documents/basetranslator.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

// The standard's models beside the one that is read.
constexpr std::string_view kOtherModels[] = {
    "AnomalyDetectionModel",
    "AssociationModel",
    "BaselineModel",
    "BayesianNetworkModel",
    "ClusteringModel",
    "GaussianProcessModel",
    "MiningModel",
    "NaiveBayesModel",
    "NearestNeighborModel",
    "NeuralNetwork",
    "RegressionModel",
    "RuleSetModel",
    "Scorecard",
    "SequenceModel",
    "SupportVectorMachineModel",
    "TextModel",
    "TimeSeriesModel",
    "TreeModel",
};

// The reader would say only that its own element is missing.
void ExpectNoOtherModel(const xercesc::DOMElement* root)
{
    if (!IsPmmlRoot(root)) return;
    const xercesc::DOMElement* other = nullptr;
    for (const auto* child = root->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        const std::string tag = Utf8FromXml(child->getTagName());
        if (LocalNameOf(tag) == PMMLModelTags::XML_ELE_REGRESSMODEL) return;
        if (other == nullptr && IsOtherModel(tag)) other = child;
    }
    if (other != nullptr) {
        const std::string tag = Utf8FromXml(other->getTagName());
        RefuseAt(other, kOtherModel, std::string(LocalNameOf(tag)).c_str());
    }
}

// Extensions hold what they like, and the columns of a table are names of the document's own.
bool HoldsFreeNames(const std::string& tag)
{
    const std::string_view name = LocalNameOf(tag);
    return name == PMMLModelTags::XML_ELE_EXTENSION || name == "InlineTable";
}

// Refuses the first element whose prefix nothing declares: it is none of PMML, so the reader
// doesn't see it and complains of something else.
void ExpectPrefixesDeclared(const xercesc::DOMElement* element)
{
    const std::string tag = Utf8FromXml(element->getTagName());
    const std::string prefix(PrefixOf(tag));
    if (!prefix.empty() && prefix != "xml" && !NamespaceOf(element, prefix)) {
        RefuseAt(element, kUndeclaredPrefix, prefix.c_str(), tag.c_str());
    }
    if (HoldsFreeNames(tag)) return;
    // The guard bounds the depth, and with it this recursion.
    for (const auto* child = element->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        ExpectPrefixesDeclared(child);
    }
}

}  // namespace

bool IsOtherModel(std::string_view tag)
{
    return std::find(std::begin(kOtherModels), std::end(kOtherModels), LocalNameOf(tag)) !=
           std::end(kOtherModels);
}

std::unique_ptr<ScoreModel> ReadModel(const Plugin& plugin, const Document& document)
{
    const xercesc::DOMElement* root = document.GetTree().dom->getDocumentElement();
    ExpectNoOtherModel(root);
    const std::unique_ptr<BaseTranslator> reader = plugin.MakeReader();
    try {
        // An empty encoding keeps the model's texts in UTF-8, as tables are read.
        return std::unique_ptr<ScoreModel>(
            reader->ParseFromTree(document.GetTree().dom.get(), std::string()));
    } catch (const VSException&) {
        ExpectPrefixesDeclared(root);
        throw;
    }
}

}  // namespace MCVelscore_850
