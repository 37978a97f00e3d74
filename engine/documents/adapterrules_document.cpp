#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/adapterrules.h"
#include "engine/documents/names.h"
#include "engine/documents/vocabulary.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kPmmlNamespace = "http://www.dmg.org/PMML";
constexpr std::string_view kXmlns = "xmlns";

// Which prefixes stand for PMML, asked for each element that has one.
class Prefixes {
public:
    explicit Prefixes(Element root)
        : rootPrefix_(PrefixOf(root.Tag())),
          // The root's name alone says what it is, unless its namespace says otherwise.
          rootIsPmml_(IsPmmlNamespace(NamespaceOf(root, rootPrefix_).value_or(kPmmlNamespace)))
    {}

    bool ArePmml(Element element, const std::string& prefix) const
    {
        if (prefix == rootPrefix_) return rootIsPmml_;
        return IsPmmlNamespace(NamespaceOf(element, prefix).value_or(""));
    }

private:
    const std::string rootPrefix_;
    const bool rootIsPmml_;
};

struct Dropped {
    size_t count = 0;
    bool undeclared = false;
    Element first;
    std::vector<std::string> prefixes;
};

// The guard bounds the depth, and with it this recursion.
void DropPrefixes(Element element, const Prefixes& prefixes, Dropped& dropped)
{
    if (element.HasPrefix()) {
        const std::string name = element.Tag();
        const std::string prefix(PrefixOf(name));
        if (prefixes.ArePmml(element, prefix)) {
            element.Rename(LocalNameOf(name));
            if (dropped.count++ == 0) {
                dropped.first = element;
                dropped.undeclared = !NamespaceOf(element, prefix);
            }
            auto& known = dropped.prefixes;
            if (std::find(known.begin(), known.end(), prefix) == known.end()) {
                known.push_back(prefix);
            }
        }
    }
    for (const Element child : element.Children()) DropPrefixes(child, prefixes, dropped);
}

bool IsNumeral(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

std::optional<Change> DropNamespacePrefix(Element root)
{
    Dropped dropped;
    DropPrefixes(root, Prefixes(root), dropped);
    if (dropped.count == 0) return std::nullopt;
    return Change{dropped.first.Place(), "prefix " + Listed(dropped.prefixes) + " dropped from " +
                                             std::to_string(dropped.count) +
                                             (dropped.count == 1 ? " element" : " elements") +
                                             (dropped.undeclared ? "; nothing declares it" : "")};
}

std::optional<Change> TakeVersionFromNamespace(Element root)
{
    if (!root.Text(Tags::XML_ATT_VERSION).empty()) return std::nullopt;
    std::string version;
    root.ForEachAttribute([&](Element::RawText rawName, Element::RawText uri) {
        const std::string name = Utf8FromXml(rawName.data());
        if (!version.empty() || (name != kXmlns && PrefixOf(name) != kXmlns)) return;
        version = VersionInNamespace(Utf8FromXml(uri.data()));
    });
    if (version.empty()) return std::nullopt;
    root.SetText(Tags::XML_ATT_VERSION, version);
    return Change{root.Place(), "no version: \"" + version + "\" is taken from the namespace"};
}

std::optional<Change> ShortenVersion(Element root)
{
    const std::string text = root.Text(Tags::XML_ATT_VERSION);
    std::string_view rest = text;
    size_t parts = 0;
    size_t shortLength = 0;
    for (;;) {
        const size_t dot = rest.find('.');
        if (!IsNumeral(rest.substr(0, dot))) return std::nullopt;
        if (++parts == 2 && dot != std::string_view::npos) {
            shortLength = text.size() - rest.size() + dot;
        }
        if (dot == std::string_view::npos) break;
        rest.remove_prefix(dot + 1);
    }
    if (parts < 3) return std::nullopt;
    const std::string version = text.substr(0, shortLength);
    root.SetText(Tags::XML_ATT_VERSION, version);
    return Change{root.Place(), "version \"" + text + "\" is read as \"" + version + "\""};
}

}  // namespace MCVelscore_850
