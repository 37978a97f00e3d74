#include "engine/tables/plainnumber.h"

#if defined(__x86_64__)
#include <smmintrin.h>
#endif

namespace MCVelscore_850 {

namespace plainnumber {

namespace {

// 2^exponent / 10^power, cut off to a whole number of 64 bits.
struct Reciprocal {
    uint64_t bits;
    int exponent;
};

constexpr auto kReciprocals = [] {
    std::array<Reciprocal, kMostDigits + 1> reciprocals{};
    uint64_t power = 1;
    for (size_t i = 1; i < reciprocals.size(); ++i) {
        power *= 10;
        const int exponent = 63 + static_cast<int>(std::bit_width(power));
        __extension__ using Wide = unsigned __int128;
        // A power of ten doesn't divide one of two, so 2^exponent - 1 has the same quotient.
        reciprocals[i] = {static_cast<uint64_t>((~Wide{0} >> (128 - exponent)) / power), exponent};
    }
    return reciprocals;
}();

}  // namespace

bool DivideByPowerOfTen(uint64_t whole, size_t power, double& quotient)
{
    if (whole == 0 || power == 0) return false;
    const Reciprocal& reciprocal = kReciprocals[power];
    const int zeros = std::countl_zero(whole);
    __extension__ using Wide = unsigned __int128;
    const auto bits = static_cast<uint64_t>((Wide{whole << zeros} * reciprocal.bits) >> 64);
    // The reciprocal is short by more than 0 and less than 1, so the product by less than 2^64:
    // times a power of two the quotient is above `bits` and below bits + 2. Of its bits 53 stay,
    // and both ends round to the same double unless the middle of two is bits + 1.
    const int dropped = 10 + static_cast<int>(bits >> 63);  // of 63 or 64 bits
    const uint64_t middle = uint64_t{1} << (dropped - 1);
    if ((bits & (2 * middle - 1)) == middle - 1) return false;
    const auto significand = static_cast<double>((bits + middle) >> dropped);
    // 2^-n, exactly: the exponent of a double stands above 52 bits.
    const int n = reciprocal.exponent - 64 + zeros - dropped;
    quotient = significand * std::bit_cast<double>(static_cast<uint64_t>(1023 - n) << 52);
    return true;
}

bool ReadLong(std::string_view text, bool negative, char decimal, double& number)
{
    const size_t size = text.size();
    if (size > kMostDigits + 1) return false;
    const char* const begin = text.data();
    return ReadWords<3>(
        {DigitsOf(LoadEightBytes(begin)) << (8 * (24 - size)),
         DigitsOf(LoadEightBytes(begin + size - 16)), DigitsOf(LoadEightBytes(begin + size - 8))},
        size, negative, decimal, number);
}

void ReadTextsPortably(const std::string_view* texts, size_t stride, size_t count, char decimal,
                       double* numbers, uint64_t* unread)
{
    for (size_t i = 0; i < count; ++i, texts += stride) {
        if (ReadPlainNumberInRoom(*texts, decimal, numbers[i])) continue;
        unread[i / 64] |= uint64_t{1} << (i % 64);
    }
}

#if defined(__x86_64__)

bool HasSse41() { return __builtin_cpu_supports("sse4.1"); }

#define VELSCORE_SSE41 __attribute__((target("sse4.1")))

namespace {

// By decimals; in the second half negative ones, since dividing by them sets the sign.
constexpr double kSignedPowers[32] = {1e0,  1e1,  1e2,   1e3,   1e4,   1e5,   1e6,   1e7,
                                      1e8,  1e9,  1e10,  1e11,  1e12,  1e13,  1e14,  1e15,
                                      -1e0, -1e1, -1e2,  -1e3,  -1e4,  -1e5,  -1e6,  -1e7,
                                      -1e8, -1e9, -1e10, -1e11, -1e12, -1e13, -1e14, -1e15};

// Sixteen bytes from [marked] on are the places of a text of as many characters that stands at the
// end of sixteen; negative ones are before it.
alignas(64) constexpr auto kPlaces = [] {
    std::array<int8_t, 32> places{};
    for (size_t i = 0; i < places.size(); ++i)
        places[i] = static_cast<int8_t>(static_cast<int>(i) - 16);
    return places;
}();

// Sixteen bytes from [decimals] on are -1 at each place before so many last ones.
alignas(32) constexpr auto kBeforeDecimals = [] {
    std::array<int8_t, 32> steps{};
    for (size_t i = 0; i < 16; ++i) steps[i] = -1;
    return steps;
}();

VELSCORE_SSE41 inline __m128i LoadSixteenBytes(const void* bytes)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

// A text of up to 15 characters behind its sign.
struct ShortText {
    __m128i eights;       // its upper and its lower eight digits, as 32-bit numbers
    const double* power;  // to divide by
};

// False for any other text.
VELSCORE_SSE41 inline bool TakeShortText(std::string_view whole, __m128i marks, ShortText& taken)
{
    const size_t sign = *whole.data() == '-' ? 1 : 0;
    const size_t size = whole.size() - sign;
    if (size > 15) return false;
    const __m128i text = LoadSixteenBytes(whole.data() + sign);
    const __m128i digits = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    const __m128i isDigit = _mm_cmpeq_epi8(_mm_min_epu8(digits, _mm_set1_epi8(9)), digits);
    const __m128i isMark = _mm_cmpeq_epi8(text, marks);
    const uint32_t end = uint32_t{1} << size;
    const uint32_t others = ~static_cast<uint32_t>(_mm_movemask_epi8(isDigit)) & (end - 1);
    const uint32_t notMarks = others & ~static_cast<uint32_t>(_mm_movemask_epi8(isMark));
    const uint32_t furtherMarks = others & (others - 1);
    // No digit: nothing, or a mark alone.
    if ((notMarks | furtherMarks) != 0 || others == end - 1) return false;
    // A whole number is one whose mark stands at its end. __builtin_ctz() is for other words than
    // 0, and so a single instruction.
    const auto mark = static_cast<size_t>(__builtin_ctz(others | end));
    const size_t marked = size + (others == 0 ? 1 : 0);
    const size_t decimals = marked - mark - 1;
    // The digits go to the end of sixteen places, those before the mark one further; from a
    // negative place comes a zero.
    const __m128i from = _mm_add_epi8(LoadSixteenBytes(&kPlaces[marked]),
                                      LoadSixteenBytes(&kBeforeDecimals[decimals]));
    // Neighbours are added up: to numbers of two digits, of four, of eight.
    __m128i sums = _mm_shuffle_epi8(digits, from);
    sums = _mm_maddubs_epi16(sums, _mm_set1_epi16(0x010A));
    sums = _mm_madd_epi16(sums, _mm_set1_epi32(0x00010064));
    sums = _mm_packus_epi32(sums, sums);
    taken.eights = _mm_madd_epi16(sums, _mm_set1_epi32(0x00012710));
    taken.power = &kSignedPowers[16 * sign + decimals];
    return true;
}

}  // namespace

VELSCORE_SSE41 void ReadTextsBySse41(const std::string_view* texts, size_t stride, size_t count,
                                     char decimal, double* numbers, uint64_t* unread)
{
    const __m128i marks = _mm_set1_epi8(decimal);
    const auto leaveToOther = [&](size_t first, size_t number) {
        uint64_t left = 0;
        ReadTextsPortably(texts + first * stride, stride, number, decimal, numbers + first, &left);
        unread[first / 64] |= left << (first % 64);
    };
    const size_t pairs = count - count % 2;
    for (size_t i = 0; i < pairs; i += 2) {
        const std::string_view* const text = texts + i * stride;
        ShortText first;
        ShortText second;
        if (!TakeShortText(text[0], marks, first) || !TakeShortText(text[stride], marks, second))
            [[unlikely]] {
            leaveToOther(i, 2);
            continue;
        }
        // Of up to 15 digits: every step but the division is exact.
        const __m128i eights = _mm_unpacklo_epi32(first.eights, second.eights);
        const __m128d upper = _mm_cvtepi32_pd(eights);
        const __m128d lower = _mm_cvtepi32_pd(_mm_unpackhi_epi64(eights, eights));
        const __m128d all = _mm_add_pd(_mm_mul_pd(upper, _mm_set1_pd(kTenTo8)), lower);
        const __m128d powers = _mm_loadh_pd(_mm_load_sd(first.power), second.power);
        _mm_storeu_pd(numbers + i, _mm_div_pd(all, powers));
    }
    if (pairs < count) leaveToOther(pairs, 1);
}

#undef VELSCORE_SSE41

#endif

}  // namespace plainnumber

void ReadPlainNumbersInRoom(const std::string_view* texts, size_t stride, size_t count,
                            char decimal, double* numbers, uint64_t* unread)
{
#if defined(__x86_64__)
    static const bool kHasSse41 = plainnumber::HasSse41();
    if (kHasSse41) {
        plainnumber::ReadTextsBySse41(texts, stride, count, decimal, numbers, unread);
        return;
    }
#endif
    plainnumber::ReadTextsPortably(texts, stride, count, decimal, numbers, unread);
}

}  // namespace MCVelscore_850
