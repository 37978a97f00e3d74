#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTCONVERTER_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTCONVERTER_H

#include "engine/documents/legacyconverter.h"

namespace MCVelscore_850 {

/// A document that isn't a GeneralRegressionModel yet, as one: ConvertLegacyDocument for the older
/// form; a RegressionModel as the adapter leaves it, which scores every case to the same last bit.
/// The document's own tree is adapted with it.
///
/// Errors  Failure of kind Document: kAlreadyPublished for another PMML document; DocumentFailure
///         for what the adapter or the reader refuses.
PublishedForm ConvertDocument(Document& document, const Plugin& plugin);

}  // namespace MCVelscore_850

#endif
