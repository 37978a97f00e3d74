#include "host/expressions/functions.h"

#include <unordered_map>

namespace MCVelscore_850 {

FunctionState::~FunctionState() = default;

const Function* FindFunction(std::string_view name)
{
    static const auto kByName = [] {
        std::unordered_map<std::string_view, const Function*> rows;
        for (const auto topic :
             {ArithmeticFunctions(), DistributionFunctions(), LogicFunctions(), TextFunctions(),
              PatternFunctions(), FormatFunctions(), DateFunctions()}) {
            for (const Function& function : topic) rows.emplace(function.name, &function);
        }
        return rows;
    }();
    const auto found = kByName.find(name);
    return found == kByName.end() ? nullptr : found->second;
}

}  // namespace MCVelscore_850
