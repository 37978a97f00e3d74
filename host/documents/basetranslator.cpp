#include "host/documents/basetranslator.h"

#include <algorithm>
#include <array>

#include <xercesc/dom/DOM.hpp>

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

namespace {

// A tag or attribute name as 16-bit text: on the stack where it is ASCII and short, as nearly
// every one is.
class XmlName {
public:
    explicit XmlName(const std::string& name)
    {
        const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
        if (name.size() < short_.size() && std::all_of(name.begin(), name.end(), isAscii)) {
            for (size_t i = 0; i < name.size(); ++i) {
                short_[i] = static_cast<XMLCh>(static_cast<unsigned char>(name[i]));
            }
            short_[name.size()] = 0;
            text_ = short_.data();
        } else {
            long_ = XmlFromUtf8(name);
            text_ = long_.c_str();
        }
    }
    XmlName(const XmlName&) = delete;
    XmlName& operator=(const XmlName&) = delete;
    const XMLCh* Get() const { return text_; }

private:
    std::array<XMLCh, 64> short_;
    std::basic_string<XMLCh> long_;
    const XMLCh* text_;
};

// 16-bit text of a number as narrow text; a character beyond ASCII becomes one that no number has.
class NarrowNumber {
public:
    explicit NarrowNumber(const XMLCh* text)
    {
        size_t length = 0;
        for (; text != nullptr && text[length] != 0; ++length) {
            const XMLCh c = text[length];
            const char narrow = c < 0x80 ? static_cast<char>(c) : '?';
            if (length < short_.size())
                short_[length] = narrow;
            else if (length == short_.size())
                long_.assign(short_.data(), length) += narrow;
            else
                long_ += narrow;
        }
        view_ = length <= short_.size() ? std::string_view(short_.data(), length) : long_;
    }
    NarrowNumber(const NarrowNumber&) = delete;
    NarrowNumber& operator=(const NarrowNumber&) = delete;
    std::string_view Get() const { return view_; }

private:
    std::array<char, 48> short_;
    std::string long_;
    std::string_view view_;
};

// A text as a message shows it, and what holds it.
struct RefusedText {
    std::string text;
    std::string holder;
};

[[noreturn]] void RefuseNumber(NumberText outcome, int notOne, const RefusedText& refused)
{
    Refuse(outcome == NumberText::TooLarge ? kNumberTooLarge : notOne, refused.text.c_str(),
           refused.holder.c_str());
}

// `asWritten` answers the text for the message; it is asked only for a refusal.
template <class AsWritten>
double VerifiedDouble(std::string_view narrow, const AsWritten& asWritten)
{
    double number = 0.0;
    const NumberText outcome = ReadNumber(narrow, number);
    if (outcome != NumberText::Number) RefuseNumber(outcome, kNotANumber, asWritten());
    return number;
}

template <class AsWritten>
int VerifiedInt(std::string_view narrow, const AsWritten& asWritten)
{
    int number = 0;
    const NumberText outcome = ReadInteger(narrow, number);
    if (outcome != NumberText::Number) RefuseNumber(outcome, kNotAnInteger, asWritten());
    return number;
}

// The current element's attributes whose text `isIt`; see HolderOf.
template <class IsIt>
std::string HolderIn(const xercesc::DOMElement* element, const std::string& expected,
                     const IsIt& isIt)
{
    if (element == nullptr) return "text";
    std::string holder;
    const xercesc::DOMNamedNodeMap* attributes = element->getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
        const xercesc::DOMNode* attribute = attributes->item(i);
        if (!isIt(attribute->getNodeValue())) continue;
        holder.append(holder.empty() ? "" : " or ").append(Utf8FromXml(attribute->getNodeName()));
    }
    if (!holder.empty()) return holder;
    return expected.empty() ? Utf8FromXml(element->getTagName()) : expected;
}

[[noreturn]] void RefuseCall() { Refuse(kCallNotAvailable, "ParseFromTree"); }

}  // namespace

BaseTranslator::BaseTranslator() = default;
BaseTranslator::~BaseTranslator() = default;

ScoreModel* BaseTranslator::ParseFromTree(std::istream&, const std::string&) { RefuseCall(); }
ScoreModel* BaseTranslator::ParseFromTree(const std::string&, const std::string&) { RefuseCall(); }
ScoreModel* BaseTranslator::ParseFromTree(xercesc::DOMElement*, ScoreDictionary*, ScoreDictionary*,
                                          const std::string&)
{
    RefuseCall();
}
ScoreModel* BaseTranslator::ParseFromTree(xercesc::DOMElement*, ScoreModel*, const std::string&)
{
    RefuseCall();
}
ScoreModel* BaseTranslator::ParseFromTree(std::istream&, const std::string&, const std::string&)
{
    RefuseCall();
}
ScoreModel* BaseTranslator::ParseFromTree(xercesc::DOMDocument*, ScoreDictionary*,
                                          const std::string&)
{
    RefuseCall();
}

const XMLCh* BaseTranslator::GetAttribute(const xercesc::DOMElement* element,
                                          const std::string& name) const
{
    NoteElement(element);
    const xercesc::DOMAttr* attribute = element->getAttributeNode(XmlName(name).Get());
    return attribute == nullptr ? nullptr : attribute->getValue();
}

const XMLCh* BaseTranslator::GetAttributeForced(const xercesc::DOMElement* element,
                                                const std::string& name) const
{
    const XMLCh* text = GetAttribute(element, name);
    if (text == nullptr) Refuse(kAbsent, name.c_str(), ToString(element->getTagName()).c_str());
    return text;
}

xercesc::DOMElement* BaseTranslator::GetChildByTag(const xercesc::DOMNode* node,
                                                   const std::string& tag) const
{
    const XmlName name(tag);
    for (auto* child = GetFirstChildElt(node); child; child = child->getNextElementSibling()) {
        if (xercesc::XMLString::equals(child->getTagName(), name.Get())) return child;
    }
    return nullptr;
}

xercesc::DOMElement* BaseTranslator::GetChildByTagForced(const xercesc::DOMNode* node,
                                                         const std::string& tag) const
{
    auto* child = GetChildByTag(node, tag);
    if (child == nullptr) {
        if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
            NoteElement(static_cast<const xercesc::DOMElement*>(node));
        }
        Refuse(kAbsent, tag.c_str(), ToString(node->getNodeName()).c_str());
    }
    return child;
}

xercesc::DOMNodeList* BaseTranslator::GetElementsByTagName(const xercesc::DOMElement* element,
                                                           const std::string& tag) const
{
    return element->getElementsByTagName(XmlName(tag).Get());
}

xercesc::DOMElement* BaseTranslator::GetFirstChildElt(const xercesc::DOMNode* node) const
{
    if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
        return static_cast<const xercesc::DOMElement*>(node)->getFirstElementChild();
    }
    auto* child = node->getFirstChild();
    while (child != nullptr && child->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
        child = child->getNextSibling();
    }
    return static_cast<xercesc::DOMElement*>(child);
}

xercesc::DOMElement* BaseTranslator::GetNextSiblingElt(const xercesc::DOMNode* node) const
{
    auto* next = node->getNextSibling();
    while (next != nullptr && next->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
        next = next->getNextSibling();
    }
    return static_cast<xercesc::DOMElement*>(next);
}

bool BaseTranslator::IsEqual(const XMLCh* text, const std::string& tag) const
{
    return text != nullptr && xercesc::XMLString::equals(text, XmlName(tag).Get());
}

std::string BaseTranslator::ToString(const XMLCh* text) const { return Utf8FromXml(text); }
std::string BaseTranslator::ToString(int number) const { return std::to_string(number); }

double BaseTranslator::VerifyDouble(const XMLCh* text, const std::string& expected) const
{
    return VerifiedDouble(NarrowNumber(text).Get(), [&] {
        return RefusedText{Utf8FromXml(text), HolderOf(text, expected)};
    });
}
double BaseTranslator::VerifyDouble(const std::string& text, const std::string& expected) const
{
    return VerifiedDouble(text, [&] { return RefusedText{text, HolderOf(text, expected)}; });
}
int BaseTranslator::VerifyInt(const XMLCh* text) const
{
    return VerifiedInt(NarrowNumber(text).Get(), [&] {
        return RefusedText{Utf8FromXml(text), HolderOf(text)};
    });
}
int BaseTranslator::VerifyInt(const std::string& text) const
{
    return VerifiedInt(text, [&] { return RefusedText{text, HolderOf(text)}; });
}

// The text of an attribute is the tree's own, so that the same text elsewhere is another one.
std::string BaseTranslator::HolderOf(const XMLCh* text, const std::string& expected) const
{
    return HolderIn(current_, expected, [text](const XMLCh* value) { return value == text; });
}
std::string BaseTranslator::HolderOf(const std::string& text, const std::string& expected) const
{
    return HolderIn(current_, expected,
                    [&](const XMLCh* value) { return Transcode(value) == text; });
}

ScoreValue* BaseTranslator::CarefullyMakeVarValue(const ScoreDictVar* var, const XMLCh* text) const
{
    return CarefullyMakeVarValue(var, Transcode(text));
}

ScoreValue* BaseTranslator::CarefullyMakeVarValue(const ScoreDictVar* var,
                                                  const std::string& text) const
{
    if (var == nullptr || text.empty()) return nullptr;
    double number = 0.0;
    switch (var->GetValueType()) {
        case ScoreDictVar::NUMERIC:
            if (ReadNumber(text, number) != NumberText::Number) return nullptr;
            return new NumericValue(number);
        case ScoreDictVar::DATETIME:
            if (!ReadDateTime(text, var->GetDateTimeType(), number)) return nullptr;
            return new DateTimeValue(number);
        default: return var->MakeValue(text);
    }
}

void BaseTranslator::CreateTranscoder(const std::string& encoding)
{
    transcoder_ = std::make_unique<VelTranscoder>(encoding);
}

std::string BaseTranslator::Transcode(const XMLCh* text) const
{
    return transcoder_ ? transcoder_->transcodeTo(text) : Utf8FromXml(text);
}

}  // namespace MCVelscore_850
