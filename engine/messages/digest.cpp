#include "engine/messages/digest.h"

#include <cstdint>

#include <sha2.h>

namespace MCVelscore_850 {

std::string Sha256Of(std::string_view bytes)
{
    char text[SHA256_DIGEST_STRING_LENGTH];
    SHA256Data(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), text);
    return text;
}

}  // namespace MCVelscore_850
