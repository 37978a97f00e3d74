#include "engine/documents/audit/mending.h"

#include <algorithm>
#include <unordered_set>

#include <fmt/format.h>

#include "engine/messages/shorttext.h"

namespace MCVelscore_850 {

namespace {

using Action = Mend::Action;
using Doms = std::unordered_set<const xercesc::DOMElement*>;

bool Erases(const OpenMend& open) { return open.mend.action == Action::EraseElement; }

std::string RenameAttribute(const OpenMend& open)
{
    const std::string& text = open.mend.text;
    // Of two with that name nobody knows which one is meant.
    if (!open.element.Has(open.attribute) || open.element.Has(text)) return {};
    const std::string value = open.element.Text(open.attribute);
    open.element.RemoveAttribute(open.attribute);
    open.element.SetText(text, value);
    return fmt::format("{} is now {}", ShortText(open.attribute), text);
}

std::string RenameElement(const OpenMend& open)
{
    const std::string before = open.element.Tag();
    if (before == open.mend.text) return {};
    open.element.Rename(open.mend.text);
    return fmt::format("{} is now {}", ShortText(before), open.mend.text);
}

std::string SetAttribute(const OpenMend& open)
{
    const std::string before = open.element.Text(open.attribute);
    if (before == open.mend.text) return {};
    open.element.SetText(open.attribute, open.mend.text);
    return fmt::format("{} is now \"{}\", not \"{}\"", open.attribute, ShortText(open.mend.text),
                       ShortText(before));
}

// What the mend did, in words; empty where it can't be done after all.
std::string Apply(OpenMend& open)
{
    switch (open.mend.action) {
        case Action::RenameAttribute: return RenameAttribute(open);
        case Action::RenameElement: return RenameElement(open);
        case Action::SetAttribute: return SetAttribute(open);
        case Action::EraseElement: {
            const std::string tag = open.element.Tag();
            open.element.Erase();
            return fmt::format("{} is taken out", tag);
        }
        case Action::None: break;
    }
    return {};
}

bool LiesWithin(Element element, const Doms& doms)
{
    for (; element; element = element.Parent()) {
        if (doms.contains(element.Dom())) return true;
    }
    return false;
}

}  // namespace

std::vector<Mended> ApplyMends(std::vector<OpenMend> mends)
{
    Doms going;
    for (const OpenMend& open : mends) {
        if (Erases(open)) going.insert(open.element.Dom());
    }
    // Each element goes once, and with it what it holds.
    Doms seen;
    std::erase_if(mends, [&](const OpenMend& open) {
        return Erases(open) ? LiesWithin(open.element.Parent(), going) ||
                                  !seen.insert(open.element.Dom()).second
                            : LiesWithin(open.element, going);
    });
    std::stable_partition(mends.begin(), mends.end(),
                          [](const OpenMend& open) { return !Erases(open); });
    std::vector<Mended> mended;
    for (OpenMend& open : mends) {
        DocumentPlace place = open.element.Place();
        std::string what = Apply(open);
        if (!what.empty()) mended.push_back({open.rule, std::move(place), std::move(what)});
    }
    return mended;
}

}  // namespace MCVelscore_850
