#ifndef VELSCORE_ENGINE_DOCUMENTS_VERIFICATIONSECTION_H
#define VELSCORE_ENGINE_DOCUMENTS_VERIFICATIONSECTION_H

#include <memory>
#include <string>

#include "engine/documents/verificationtable.h"

namespace MCVelscore_850 {

class Document;

/// The ModelVerification section of a document; null when it has none.
///
/// Errors  VSException: 260115 for a section without its parts, kNotANumber for a precision that is
///         none, kExpressionNotSupported for a table that lies elsewhere.
std::unique_ptr<VerificationTable> ReadVerification(const Document& document);

/// The document of a file with this section in place of its own, as text.
///
/// Errors  Failure of kind Document, as LoadDocument.
std::string TextWithVerification(const std::string& path, const VerificationTable& table);

}  // namespace MCVelscore_850

#endif
