#include "engine/documents/modelreading.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "engine/documents/documenttree.h"
#include "engine/documents/element.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/plugin.h"
#include "host/documents/basetranslator.h"
#include "host/documents/pmmlmodeltags.h"
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

// The models that the segments of a MiningModel hold, as a message goes on: " of 3 RegressionModel
// and 1 TreeModel segments".
std::string SegmentsText(Element model)
{
    std::map<std::string, size_t> counts;
    size_t all = 0;
    for (const Element child : model.Children()) {
        if (LocalNameOf(child.Tag()) != "Segmentation") continue;
        for (const Element segment : child.Children()) {
            for (const Element part : segment.Children()) {
                const std::string tag = part.Tag();
                const std::string name(LocalNameOf(tag));
                if (name != PMMLModelTags::XML_ELE_REGRESSMODEL && !IsOtherModel(name)) continue;
                ++counts[name];
                ++all;
            }
        }
    }
    if (counts.empty()) return {};
    std::vector<std::string> parts;
    parts.reserve(counts.size());
    for (const auto& [name, count] : counts) parts.push_back(fmt::format("{} {}", count, name));
    return fmt::format(" of {} {}", fmt::join(parts, " and "), all == 1 ? "segment" : "segments");
}

// The reader would say only that its own element is missing.
void ExpectNoOtherModel(Element root)
{
    if (!IsPmmlRoot(root)) return;
    Element other;
    for (const Element child : root.Children()) {
        const std::string tag = child.Tag();
        if (LocalNameOf(tag) == PMMLModelTags::XML_ELE_REGRESSMODEL) return;
        if (!other && IsOneOf(LocalNameOf(tag), kOtherModels)) other = child;
    }
    if (!other) return;
    const std::string tag = other.Tag();
    RefuseAt(other, kOtherModel, (std::string(LocalNameOf(tag)) + SegmentsText(other)).c_str());
}

// Extensions hold what they like, and the columns of a table are names of the document's own.
const std::string_view kHoldersOfFreeNames[] = {PMMLModelTags::XML_ELE_EXTENSION, "InlineTable"};

// Refuses the first element whose prefix nothing declares: it is none of PMML, so the reader
// doesn't see it and complains of something else.
void ExpectPrefixesDeclared(Element element)
{
    const std::string tag = element.Tag();
    const std::string prefix(PrefixOf(tag));
    if (!prefix.empty() && prefix != "xml" && !NamespaceOf(element, prefix)) {
        RefuseAt(element, kUndeclaredPrefix, prefix.c_str(), tag.c_str());
    }
    if (IsOneOf(LocalNameOf(tag), kHoldersOfFreeNames)) return;
    // The guard bounds the depth, and with it this recursion.
    for (const Element child : element.Children()) ExpectPrefixesDeclared(child);
}

}  // namespace

bool IsOtherModel(std::string_view tag)
{
    return std::find(std::begin(kOtherModels), std::end(kOtherModels), LocalNameOf(tag)) !=
           std::end(kOtherModels);
}

std::unique_ptr<ScoreModel> ReadModel(const Plugin& plugin, const Document& document)
{
    ExpectNoOtherModel(document.Root());
    const std::unique_ptr<BaseTranslator> reader = plugin.MakeReader();
    try {
        // An empty encoding keeps the model's texts in UTF-8, as tables are read.
        return std::unique_ptr<ScoreModel>(
            reader->ParseFromTree(document.GetTree().dom.get(), std::string()));
    } catch (const VSException&) {
        ExpectPrefixesDeclared(document.Root());
        throw;
    }
}

}  // namespace MCVelscore_850
