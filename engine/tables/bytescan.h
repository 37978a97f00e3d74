#ifndef VELSCORE_ENGINE_TABLES_BYTESCAN_H
#define VELSCORE_ENGINE_TABLES_BYTESCAN_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace MCVelscore_850 {

/// Bytes that are looked at together. Whoever scans a text keeps so many readable bytes behind it.
inline constexpr size_t kScanWidth = 16;

/// The same of a scan that looks at more of them: a bit a byte fills a word.
inline constexpr size_t kWideScan = 4 * kScanWidth;

/// Finds some bytes among the next kScanWidth ones.
template <size_t N>
class ByteScan {
public:
    explicit ByteScan(const std::array<char, N>& bytes) : bytes_(bytes)
    {
#if defined(__SSE2__)
        for (size_t i = 0; i < N; ++i) wide_[i] = _mm_set1_epi8(bytes[i]);
#endif
    }

    /// A bit for each of the bytes at `place`, the first one's lowest: set where it is searched.
    uint32_t At(const char* place) const
    {
#if defined(__SSE2__)
        return static_cast<uint32_t>(_mm_movemask_epi8(Matches(place)));
#else
        uint32_t found = 0;
        for (size_t i = 0; i < kScanWidth; ++i) {
            for (const char byte : bytes_) {
                if (place[i] == byte) found |= uint32_t{1} << i;
            }
        }
        return found;
#endif
    }

    /// The same of the next kWideScan ones.
    uint64_t AtWide(const char* place) const
    {
        uint64_t found = 0;
        for (size_t i = 0; i < kWideScan; i += kScanWidth) found |= uint64_t{At(place + i)} << i;
        return found;
    }

    /// The first place in [begin, end) that is searched, `end` where none is.
    const char* Find(const char* begin, const char* end) const
    {
        for (; begin < end; begin += kScanWidth) {
            const uint32_t found = At(begin);
            if (found == 0) continue;
            const char* const place = begin + std::countr_zero(found);
            return place < end ? place : end;
        }
        return end;
    }

    /// How many of them are in [begin, end).
    size_t Count(const char* begin, const char* end) const
    {
        size_t count = 0;
#if defined(__SSE2__)
        const __m128i zero = _mm_setzero_si128();
        while (static_cast<size_t>(end - begin) >= kScanWidth) {
            // Each byte counts its own, as far as it can.
            const size_t steps = std::min(static_cast<size_t>(end - begin) / kScanWidth, kByteMost);
            __m128i counts = zero;
            for (size_t i = 0; i < steps; ++i, begin += kScanWidth) {
                counts = _mm_sub_epi8(counts, Matches(begin));
            }
            const __m128i sums = _mm_sad_epu8(counts, zero);
            count += static_cast<size_t>(_mm_cvtsi128_si64(sums)) +
                     static_cast<size_t>(_mm_extract_epi16(sums, 4));
        }
#endif
        for (; begin < end; ++begin) {
            for (const char byte : bytes_) count += *begin == byte ? 1 : 0;
        }
        return count;
    }

private:
    static constexpr size_t kByteMost = 255;

#if defined(__SSE2__)
    // All bits of the bytes that are searched.
    __m128i Matches(const char* place) const
    {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(place));
        __m128i found = _mm_cmpeq_epi8(text, wide_[0]);
        for (size_t i = 1; i < N; ++i) {
            found = _mm_or_si128(found, _mm_cmpeq_epi8(text, wide_[i]));
        }
        return found;
    }
#endif

    std::array<char, N> bytes_;
#if defined(__SSE2__)
    __m128i wide_[N];
#endif
};

}  // namespace MCVelscore_850

#endif
