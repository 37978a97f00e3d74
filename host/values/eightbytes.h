#ifndef VELSCORE_HOST_VALUES_EIGHTBYTES_H
#define VELSCORE_HOST_VALUES_EIGHTBYTES_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace MCVelscore_850 {

/// Eight bytes of a text as one word, so that arithmetic treats them all at once. The first byte is
/// the lowest of the word on every machine.
inline uint64_t LoadEightBytes(const char* bytes)
{
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

/// Four bytes, in the lower half of the word.
inline uint64_t LoadFourBytes(const char* bytes)
{
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
    return word;
}

/// Writes the word as eight bytes of a text, the lowest first.
inline void StoreEightBytes(uint64_t word, char* bytes)
{
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    std::memcpy(bytes, &word, sizeof word);
}

/// The word that has this byte eight times.
constexpr uint64_t EightTimes(unsigned char byte) { return 0x0101010101010101U * byte; }

}  // namespace MCVelscore_850

#endif
