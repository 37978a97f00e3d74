#ifndef VELSCORE_ENGINE_DOCUMENTS_MODELREADING_H
#define VELSCORE_ENGINE_DOCUMENTS_MODELREADING_H

#include <memory>

namespace MCVelscore_850 {

class Document;
class Plugin;
class ScoreModel;

/// Has the plug-in's reader read the document's tree. Throws VSException when it refuses, or when
/// the document holds another kind of model. The model keeps nothing of the tree.
std::unique_ptr<ScoreModel> ReadModel(const Plugin& plugin, const Document& document);

}  // namespace MCVelscore_850

#endif
