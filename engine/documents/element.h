#ifndef VELSCORE_ENGINE_DOCUMENTS_ELEMENT_H
#define VELSCORE_ENGINE_DOCUMENTS_ELEMENT_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

#include "host/documents/documentplace.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
class DOMNode;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

class ElementRange;

/// An element of a document's tree: the one way in which the engine reads and rewrites it. A handle
/// that is copied like a pointer; the tree owns the element. Of a null element everything is empty
/// or absent, so that a chain of Child() needs no tests between. Texts are UTF-8; Raw() is the
/// tree's own text, for who compares many. Names of elements are as the document has them, a prefix
/// included, until the adapter has dropped it.
///
/// Threads one thread at a time a tree.
class Element {
public:
    /// A text as the tree holds it.
    using RawText = std::basic_string_view<XMLCh>;

    Element() = default;
    explicit Element(xercesc::DOMElement* dom) : dom_(dom) {}

    explicit operator bool() const { return dom_ != nullptr; }
    friend bool operator==(Element one, Element other) = default;
    xercesc::DOMElement* Dom() const { return dom_; }

    std::string Tag() const;
    bool Is(std::string_view tag) const;
    /// True for a tag such as "p:PMML".
    bool HasPrefix() const;

    /// True for an attribute that is there, an empty one too.
    bool Has(std::string_view attribute) const;
    /// The attribute's text; empty when it is absent.
    std::string Text(std::string_view attribute) const;
    RawText Raw(std::string_view attribute) const;
    /// The attribute's number; nothing where it is absent or no number.
    std::optional<double> Number(std::string_view attribute) const;
    /// All text within the element.
    std::string Content() const;
    /// Calls `each(name, text)`, both raw, for every attribute in the tree's order.
    template <class Each>
    void ForEachAttribute(Each each) const
    {
        const size_t count = AttributeCount();
        for (size_t i = 0; i < count; ++i) {
            const auto [name, text] = AttributeAt(i);
            each(name, text);
        }
    }

    Element Parent() const;
    Element NextSibling() const;
    Element PreviousSibling() const;
    /// The first child of that tag.
    Element Child(std::string_view tag) const;
    ElementRange Children() const;
    /// Those of that tag; it is borrowed.
    ElementRange Children(std::string_view tag) const;

    /// Path, line and column. Counts siblings: for messages, not for walks.
    DocumentPlace Place() const;

    void SetText(std::string_view attribute, std::string_view text) const;
    void RemoveAttribute(std::string_view attribute) const;
    /// A new last child, in its parent's namespace.
    Element Append(std::string_view tag) const;
    /// Puts an element of the same tree, from wherever it stands, before that child; last where
    /// that is null.
    void Insert(Element child, Element before) const;
    void SetContent(std::string_view text) const;
    /// The element gets another tag, in no namespace.
    void Rename(std::string_view tag) const;
    /// Takes the element, with all within, out of the tree and frees it; the handle is null then.
    void Erase();

private:
    size_t AttributeCount() const;
    std::pair<RawText, RawText> AttributeAt(size_t index) const;

    xercesc::DOMElement* dom_ = nullptr;
};

/// Children of an element, for a range-based for. What is erased meanwhile must not be the current
/// one.
class ElementRange {
public:
    class Iterator {
    public:
        using value_type = Element;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::input_iterator_tag;
        using pointer = const Element*;
        using reference = Element;

        Iterator(Element element, std::string_view tag) : element_(element), tag_(tag) { Settle(); }
        Element operator*() const { return element_; }
        Iterator& operator++()
        {
            AskAhead();
            element_ = element_.NextSibling();
            Settle();
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return element_ == other.element_; }

    private:
        void Settle()
        {
            while (element_ && !tag_.empty() && !element_.Is(tag_)) {
                element_ = element_.NextSibling();
            }
        }
        // A walk over the cells of a large matrix waits for memory more than for anything else.
        // They lie one behind the other, about as far apart as the last two: those a few places
        // ahead are asked for in time.
        void AskAhead()
        {
            constexpr size_t kPlaces = 6;
            constexpr size_t kFarthest = 2048;
            constexpr size_t kLine = 64;
            const auto here = reinterpret_cast<uintptr_t>(element_.Dom());
            const size_t stride = here - last_;  // a large number where it lies before the last
            last_ = here;
            if (stride > kFarthest) return;
            for (uintptr_t line = here + kPlaces * stride; line < here + (kPlaces + 1) * stride;
                 line += kLine) {
                // NOLINTNEXTLINE(performance-no-int-to-ptr)
                __builtin_prefetch(reinterpret_cast<const void*>(line));
            }
        }

        Element element_;
        std::string_view tag_;
        uintptr_t last_ = 0;
    };

    ElementRange(Element first, std::string_view tag) : first_(first), tag_(tag) {}
    Iterator begin() const { return {first_, tag_}; }
    Iterator end() const { return {Element(), tag_}; }
    /// Null when there is none.
    Element First() const { return *begin(); }
    bool Empty() const { return !First(); }
    /// All of them, so that each may be moved or erased meanwhile.
    std::vector<Element> List() const { return {begin(), end()}; }

private:
    Element first_;
    std::string_view tag_;  // empty for all
};

using Elements = std::vector<Element>;

/// Refuse, with the place of the element.
template <class... Args>
[[noreturn]] void RefuseAt(Element element, int code, Args... args)
{
    RefuseAt(element.Dom(), code, args...);
}

}  // namespace MCVelscore_850

#endif
