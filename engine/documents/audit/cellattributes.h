#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_CELLATTRIBUTES_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_CELLATTRIBUTES_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "engine/documents/element.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

/// The names of some attributes as the tree holds them.
template <size_t N>
struct AttributeNames {
    template <class... Names>
    explicit AttributeNames(const Names&... each) : names{XmlFromUtf8(each)...}
    {}

    std::array<std::basic_string<XMLCh>, N> names;
};
template <class... Names>
AttributeNames(const Names&...) -> AttributeNames<sizeof...(Names)>;

/// Reads those attributes of one cell after another, each in one walk over what it has. A document
/// may have hundreds of thousands of cells, which have the same attributes: a name is looked up
/// where the cell before had another one in its place, and known by its place in the tree's pool
/// of names otherwise.
///
/// Owner   the names, which are borrowed, and the tree outlive it.
template <size_t N>
class AttributeReader {
public:
    explicit AttributeReader(const AttributeNames<N>& wanted) : wanted_(&wanted) {}

    /// Their texts, in the order of the names; absent ones are empty.
    std::array<Element::RawText, N> Of(Element element)
    {
        std::array<Element::RawText, N + 1> texts;  // the last one is of all other attributes
        size_t place = 0;
        element.ForEachAttribute([&](Element::RawText name, Element::RawText text) {
            if (place == met_.size()) met_.emplace_back();
            Met& met = met_[place++];
            if (met.name != name.data()) met = {name.data(), NumberOf(name)};
            texts[met.number] = text;
        });
        std::array<Element::RawText, N> wanted;
        std::copy_n(texts.begin(), N, wanted.begin());
        return wanted;
    }

private:
    struct Met {
        const XMLCh* name = nullptr;
        size_t number = N;
    };

    size_t NumberOf(Element::RawText name) const
    {
        const auto found = std::find(wanted_->names.begin(), wanted_->names.end(), name);
        return static_cast<size_t>(found - wanted_->names.begin());
    }

    const AttributeNames<N>* wanted_;
    std::vector<Met> met_;  // on the cell before
};

/// The number that a text spells; nothing for any other. Allocates nothing for one of usual length.
std::optional<double> NumberIn(Element::RawText text);

}  // namespace MCVelscore_850

#endif
