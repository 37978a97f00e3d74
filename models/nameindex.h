#ifndef VELSCORE_MODELS_NAMEINDEX_H
#define VELSCORE_MODELS_NAMEINDEX_H

#include <map>
#include <string>

namespace MCVelscore_850 {

/// The index of a name in a registry of a model; -1, which every table takes for out of range, for
/// an unknown one.
inline int IndexOf(const std::map<std::string, int>& names, const std::string& name)
{
    const auto found = names.find(name);
    return found == names.end() ? -1 : found->second;
}

}  // namespace MCVelscore_850

#endif
