#include "engine/documents/modelreading.h"

#include <string>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documenttree.h"
#include "engine/documents/treetext.h"
#include "engine/plugin.h"
#include "host/basetranslator.h"
#include "host/documentplace.h"
#include "host/messages.h"
#include "host/pmmlmodeltags.h"
#include "host/scoremodel.h"
#include "host/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

// The reader would say only that its own element is missing.
void ExpectNoOtherModel(const xercesc::DOMElement* root)
{
    if (!IsPmmlRoot(root)) return;
    const xercesc::DOMElement* other = nullptr;
    for (const auto* child = root->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        const std::string tag = Utf8FromXml(child->getTagName());
        if (LocalNameOf(tag) == PMMLModelTags::XML_ELE_REGRESSMODEL) return;
        if (other == nullptr && (tag.ends_with("Model") || tag.ends_with("Network"))) other = child;
    }
    if (other != nullptr) {
        RefuseAt(other, kOtherModel, Utf8FromXml(other->getTagName()).c_str());
    }
}

}  // namespace

std::unique_ptr<ScoreModel> ReadModel(const Plugin& plugin, const Document& document)
{
    ExpectNoOtherModel(document.GetTree().dom->getDocumentElement());
    const std::unique_ptr<BaseTranslator> reader = plugin.MakeReader();
    // An empty encoding keeps the model's texts in UTF-8, as tables are read.
    return std::unique_ptr<ScoreModel>(
        reader->ParseFromTree(document.GetTree().dom.get(), std::string()));
}

}  // namespace MCVelscore_850
