#include "host/messages/nearword.h"

#include <algorithm>
#include <vector>

namespace MCVelscore_850 {

namespace {

// Longer words are shown shortened anyway, and their table would be large.
constexpr size_t kLongest = 100;

// The bytes of each character in one number.
std::vector<uint32_t> Letters(std::string_view word)
{
    std::vector<uint32_t> letters;
    for (const char c : word) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) == 0x80 && !letters.empty()) {
            letters.back() = letters.back() << 8 | byte;
        } else {
            letters.push_back(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
        }
    }
    return letters;
}

// Damerau and Levenshtein's distance, where no substring is edited twice.
size_t Distance(const std::vector<uint32_t>& one, const std::vector<uint32_t>& other)
{
    const size_t width = other.size() + 1;
    std::vector<size_t> distances((one.size() + 1) * width);
    const auto at = [&](size_t i, size_t j) -> size_t& { return distances[i * width + j]; };
    for (size_t i = 0; i <= one.size(); ++i) at(i, 0) = i;
    for (size_t j = 0; j <= other.size(); ++j) at(0, j) = j;
    for (size_t i = 1; i <= one.size(); ++i) {
        for (size_t j = 1; j <= other.size(); ++j) {
            const size_t change = one[i - 1] == other[j - 1] ? 0 : 1;
            at(i, j) = std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, at(i - 1, j - 1) + change});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
            }
        }
    }
    return distances.back();
}

}  // namespace

size_t WordDistance(std::string_view one, std::string_view other)
{
    return Distance(Letters(one), Letters(other));
}

std::string NearWord(std::string_view word, std::span<const std::string> candidates)
{
    constexpr size_t kShortName = 5;
    const std::vector<uint32_t> letters = Letters(word);
    if (letters.size() > kLongest) return {};
    const std::string* nearest = nullptr;
    size_t least = 0;
    for (const std::string& candidate : candidates) {
        if (candidate == word) return {};
        const std::vector<uint32_t> name = Letters(candidate);
        const size_t most = name.size() <= kShortName ? 1 : 2;
        const size_t longer = std::max(name.size(), letters.size());
        if (longer - std::min(name.size(), letters.size()) > most) continue;
        const size_t distance = Distance(letters, name);
        if (distance > most || distance >= longer) continue;
        if (nearest == nullptr || distance < least) {
            nearest = &candidate;
            least = distance;
        }
    }
    return nearest == nullptr ? std::string() : *nearest;
}

}  // namespace MCVelscore_850
