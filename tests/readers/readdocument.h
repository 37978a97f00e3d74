#ifndef VELSCORE_TESTS_READERS_READDOCUMENT_H
#define VELSCORE_TESTS_READERS_READDOCUMENT_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "host/messages/vsexception.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850::testing {

/// A document parsed from text; the DOM lives as long as this.
class ParsedText {
public:
    explicit ParsedText(const std::string& text);
    ~ParsedText();
    xercesc::DOMDocument* Get() { return parser_->getDocument(); }

private:
    std::unique_ptr<xercesc::XercesDOMParser> parser_;
};

/// The model that the reader makes of a document. Throws what the reader throws.
std::unique_ptr<RegressionModel> ReadModel(const std::string& document);

/// The reader's refusal of a document; code 0 when it wasn't refused.
VSException RefusalOf(const std::string& document);

/// The trace of reading a document, line by line, refused or not.
std::vector<std::string> TraceOf(const std::string& document, int level);

/// `text` with its first `from` replaced; fails the test when `from` isn't there.
std::string With(const std::string& text, const std::string& from, const std::string& to);

/// A general linear document with a factor f (a, b), covariates x and w, four parameters,
/// covariances: y = 1 + 2 [f = b] + 3 x^2 + 0.5 w [f = b].
extern const std::string kGeneralLinearDocument;
/// A linear regression in x and w, its constant first: y = 1 + 2 x + 3 w.
extern const std::string kLinearDocument;

}  // namespace MCVelscore_850::testing

#endif
