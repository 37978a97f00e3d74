#include "engine/documents/documentconverter.h"

#include <memory>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/modelreading.h"
#include "engine/documents/treewriting.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

PublishedForm ConvertWithinMemory(Document& document, const Plugin& plugin)
{
    PublishedForm published{document.File(), {}, {}};
    bool translated = false;
    try {
        for (Adaptation& adaptation : AdaptDocument(document)) {
            if (!adaptation.family.empty()) translated = true;
            published.notes.push_back(adaptation.change);
        }
        if (translated) ReadModel(plugin, document);
    } catch (const VSException& refusal) {
        throw DocumentFailure(refusal, document.File());
    }
    if (!translated) return ConvertLegacyDocument(document, plugin);
    DropIndentation(document.Root());
    published.text = TreeText(*document.GetTree().dom);
    return published;
}

}  // namespace

PublishedForm ConvertDocument(Document& document, const Plugin& plugin)
{
    return WithinMemory([&] { return ConvertWithinMemory(document, plugin); });
}

}  // namespace MCVelscore_850
