#ifndef VELSCORE_ENGINE_DOCUMENTS_MODELREADING_H
#define VELSCORE_ENGINE_DOCUMENTS_MODELREADING_H

#include <memory>
#include <string_view>

namespace MCVelscore_850 {

class Document;
class Plugin;
class ScoreModel;

/// True for the tag, with or without a prefix, of one of the standard's models beside the general
/// form.
bool IsOtherModel(std::string_view tag);

/// Has the plug-in's reader read the document's tree. Throws VSException when it refuses, or when
/// the document holds another kind of model. The model keeps nothing of the tree.
std::unique_ptr<ScoreModel> ReadModel(const Plugin& plugin, const Document& document);

}  // namespace MCVelscore_850

#endif
