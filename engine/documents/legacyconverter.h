#ifndef VELSCORE_ENGINE_DOCUMENTS_LEGACYCONVERTER_H
#define VELSCORE_ENGINE_DOCUMENTS_LEGACYCONVERTER_H

#include <string>
#include <vector>

namespace MCVelscore_850 {

class Document;
class Plugin;

/// A document of the older form in the published one.
struct PublishedForm {
    /// How messages call the document that it comes from.
    std::string file;
    /// A PMML 4.4 document, in UTF-8.
    std::string text;
    /// What was left out, a line each.
    std::vector<std::string> notes;
};

/// Reads a document in the older form (root "zelt-ml") and writes it in the published one, which
/// under the models' default policies scores every case to the same last bit. The result is read
/// back before it is answered: it needs no adaptation.
///
/// Errors  Failure of kind Document: kAlreadyPublished for a PMML document; DocumentFailure for
///         what the reader refuses, and with one of kUnpairedParameters to kPublishedFormRefused
///         for what the published form can't say.
PublishedForm ConvertLegacyDocument(const Document& document, const Plugin& plugin);

}  // namespace MCVelscore_850

#endif
