#include <set>
#include <string>
#include <utility>
#include <vector>

#include "engine/documents/adapterrules.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// A field or function by its kind and name: the two kinds don't get in each other's way.
using Definition = std::pair<std::string, std::string>;

Definition DefinitionOf(Element element)
{
    return {element.Tag(), element.Text(Tags::XML_ATT_NAME)};
}

constexpr std::string_view kDefinitions[] = {"DerivedField", "DefineFunction"};

}  // namespace

std::optional<Change> MergeTransformations(Element root)
{
    Element global = root.Child(Tags::XML_ELE_TRANSFORMATION);
    const Element local = ModelElement(root).Child(Tags::XML_ELE_LOCALTRANSFORMATIONS);
    if (!global || !local) return std::nullopt;
    std::set<Definition> known;
    for (const Element child : local.Children()) known.insert(DefinitionOf(child));
    Elements moved;
    for (const Element child : global.Children()) {
        if (!IsOneOf(child.Tag(), kDefinitions) || known.contains(DefinitionOf(child))) continue;
        moved.push_back(child);
    }
    if (moved.empty()) return std::nullopt;
    const DocumentPlace place = local.Place();
    const Element first = local.Children().First();
    for (const Element child : moved) local.Insert(child, first);
    global.Erase();
    std::vector<std::string> names;
    names.reserve(moved.size());
    for (const Element child : moved) names.push_back(DefinitionOf(child).second);
    return Change{place,
                  "TransformationDictionary is merged into LocalTransformations: " + Listed(names)};
}

}  // namespace MCVelscore_850
