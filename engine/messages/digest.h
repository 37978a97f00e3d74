#ifndef VELSCORE_ENGINE_MESSAGES_DIGEST_H
#define VELSCORE_ENGINE_MESSAGES_DIGEST_H

#include <string>
#include <string_view>

namespace MCVelscore_850 {

/// The SHA-256 of the bytes (FIPS 180-4), in 64 hexadecimal digits of small letters.
std::string Sha256Of(std::string_view bytes);

}  // namespace MCVelscore_850

#endif
