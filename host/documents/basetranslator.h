#ifndef VELSCORE_HOST_DOCUMENTS_BASETRANSLATOR_H
#define VELSCORE_HOST_DOCUMENTS_BASETRANSLATOR_H

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include <xercesc/util/XercesDefs.hpp>

#include "host/documents/veltranscoder.h"
#include "host/export.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
class DOMNode;
class DOMNodeList;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

class ScoreDictVar;
class ScoreDictionary;
class ScoreModel;
class ScoreValue;

/// A reader of model documents, and the helpers that readers share.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
/// Threads one reader serves one parse at a time.
class VELHOST_API BaseTranslator {
public:
    BaseTranslator();
    BaseTranslator(const BaseTranslator&) = delete;
    BaseTranslator& operator=(const BaseTranslator&) = delete;
    virtual ~BaseTranslator();

    /// Reads a parsed document into a finished model, owned by the caller. `encoding` is the
    /// narrow encoding of the texts that the model keeps; empty is UTF-8. Throws VSException.
    virtual ScoreModel* ParseFromTree(xercesc::DOMDocument* document,
                                      const std::string& encoding) = 0;
    // The other forms refuse with kCallNotAvailable unless a reader fills them.
    virtual ScoreModel* ParseFromTree(std::istream& in, const std::string& encoding);
    virtual ScoreModel* ParseFromTree(const std::string& file, const std::string& encoding);
    virtual ScoreModel* ParseFromTree(xercesc::DOMElement* element, ScoreDictionary* dictionary,
                                      ScoreDictionary* transformations,
                                      const std::string& encoding);
    virtual ScoreModel* ParseFromTree(xercesc::DOMElement* element, ScoreModel* model,
                                      const std::string& encoding);
    virtual ScoreModel* ParseFromTree(std::istream& in, const std::string& encoding,
                                      const std::string& name);
    virtual ScoreModel* ParseFromTree(xercesc::DOMDocument* document, ScoreDictionary* dictionary,
                                      const std::string& encoding);

    // Helpers. They note the element they were last asked about, so that a refusal can say where
    // the reader stood.

    /// The attribute's 16-bit text, null when it is absent; valid as long as the document.
    const XMLCh* GetAttribute(const xercesc::DOMElement* element, const std::string& name) const;
    /// The same; an absent attribute refuses with 260115 (name, the element's tag).
    const XMLCh* GetAttributeForced(const xercesc::DOMElement* element,
                                    const std::string& name) const;
    /// The first child element of that tag, null when there is none.
    xercesc::DOMElement* GetChildByTag(const xercesc::DOMNode* node, const std::string& tag) const;
    /// The same; an absent child refuses with 260115 (tag, the parent's tag).
    xercesc::DOMElement* GetChildByTagForced(const xercesc::DOMNode* node,
                                             const std::string& tag) const;
    /// All descendants of that tag, in document order.
    xercesc::DOMNodeList* GetElementsByTagName(const xercesc::DOMElement* element,
                                               const std::string& tag) const;
    xercesc::DOMElement* GetFirstChildElt(const xercesc::DOMNode* node) const;
    xercesc::DOMElement* GetNextSiblingElt(const xercesc::DOMNode* node) const;
    /// Exact comparison; a null equals nothing.
    bool IsEqual(const XMLCh* text, const std::string& tag) const;
    /// 16-bit text as UTF-8, for messages; empty for null.
    std::string ToString(const XMLCh* text) const;
    std::string ToString(int number) const;
    /// The number that the text spells. Refuses with kNotANumber or kNumberTooLarge; both name what
    /// holds the text: an attribute of the element last looked at, else the one that was `expected`
    /// there, else that element.
    double VerifyDouble(const XMLCh* text, const std::string& expected = {}) const;
    double VerifyDouble(const std::string& text, const std::string& expected = {}) const;
    /// The int that the text spells. Refuses with kNotAnInteger or kNumberTooLarge, likewise.
    int VerifyInt(const XMLCh* text) const;
    int VerifyInt(const std::string& text) const;
    /// A new value of the variable's type, owned by the caller; null when the variable is null or
    /// the text is empty or can't be read as that type.
    ScoreValue* CarefullyMakeVarValue(const ScoreDictVar* var, const XMLCh* text) const;
    ScoreValue* CarefullyMakeVarValue(const ScoreDictVar* var, const std::string& text) const;
    /// Makes the transcoder for the texts that a model keeps.
    void CreateTranscoder(const std::string& encoding);
    /// Says that the reader looks at this element.
    void NoteElement(const xercesc::DOMElement* element) const { current_ = element; }

protected:
    /// The text in the narrow encoding, empty for null. UTF-8 until CreateTranscoder was called.
    std::string Transcode(const XMLCh* text) const;
    const VelTranscoder* GetTranscoder() const { return transcoder_.get(); }
    /// The element that the reader last looked at, null before the first.
    const xercesc::DOMElement* CurrentElement() const { return current_; }
    void ForgetCurrentElement() const { current_ = nullptr; }
    /// What a message calls the holder of a text: the attribute of the current element that has it,
    /// several with "or" between them, else the one that was `expected`, else the element's tag;
    /// "text" before the first element.
    std::string HolderOf(const std::string& text, const std::string& expected = {}) const;

private:
    std::string HolderOf(const XMLCh* text, const std::string& expected = {}) const;

    std::unique_ptr<VelTranscoder> transcoder_;
    mutable const xercesc::DOMElement* current_ = nullptr;
};

/// True for null and for an empty text: the readers treat both alike wherever they test.
inline bool IsBlank(const XMLCh* text) { return text == nullptr || *text == 0; }

}  // namespace MCVelscore_850

#endif
