#include "engine/tables/plainnumber.h"

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

}  // namespace plainnumber

void ReadPlainNumbersInRoom(const std::string_view* texts, size_t stride, size_t count,
                            char decimal, double* numbers, uint64_t* unread)
{
    for (size_t i = 0; i < count; ++i, texts += stride) {
        if (ReadPlainNumberInRoom(*texts, decimal, numbers[i])) continue;
        unread[i / 64] |= uint64_t{1} << (i % 64);
    }
}

}  // namespace MCVelscore_850
