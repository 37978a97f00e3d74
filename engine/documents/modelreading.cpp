#include "engine/documents/modelreading.h"

#include "engine/documents/documenttree.h"
#include "engine/plugin.h"
#include "host/basetranslator.h"
#include "host/scoremodel.h"

namespace MCVelscore_850 {

std::unique_ptr<ScoreModel> ReadModel(const Plugin& plugin, const Document& document)
{
    const std::unique_ptr<BaseTranslator> reader = plugin.MakeReader();
    // An empty encoding keeps the model's texts in UTF-8, as tables are read.
    return std::unique_ptr<ScoreModel>(
        reader->ParseFromTree(document.GetTree().dom.get(), std::string()));
}

}  // namespace MCVelscore_850
