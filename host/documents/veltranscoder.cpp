#include "host/documents/veltranscoder.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

namespace {

constexpr XMLSize_t kBlock = 4096;

void AppendUtf8(char32_t c, std::string& out)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }

}  // namespace

struct VelTranscoder::Converter {
    std::unique_ptr<xercesc::XMLTranscoder> transcoder;
};

VelTranscoder::VelTranscoder(const std::string& encoding)
{
    if (encoding.empty() || encoding == "UTF-8" || encoding == "utf-8") return;
    xercesc::XMLTransService::Codes failure = xercesc::XMLTransService::Ok;
    auto* made = xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
        encoding.c_str(), failure, kBlock, xercesc::XMLPlatformUtils::fgMemoryManager);
    if (made == nullptr || failure != xercesc::XMLTransService::Ok) {
        delete made;
        Refuse(kUnknownEncoding, encoding.c_str());
    }
    converter_ = std::make_unique<Converter>();
    converter_->transcoder.reset(made);
}

VelTranscoder::~VelTranscoder() = default;

std::string VelTranscoder::transcodeTo(const XMLCh* text) const
{
    if (text == nullptr) return {};
    if (!converter_) return Utf8FromXml(text);
    std::string out;
    XMLSize_t left = xercesc::XMLString::stringLen(text);
    XMLByte block[kBlock];
    while (left > 0) {
        XMLSize_t eaten = 0;
        const XMLSize_t made = converter_->transcoder->transcodeTo(
            text, left, block, kBlock, eaten, xercesc::XMLTranscoder::UnRep_RepChar);
        if (eaten == 0) break;
        out.append(reinterpret_cast<const char*>(block), made);
        text += eaten;
        left -= eaten;
    }
    return out;
}

std::string Utf8FromXml(const XMLCh* text)
{
    std::string out;
    if (text == nullptr) return out;
    for (; *text != 0; ++text) {
        char32_t c = *text;
        if (IsHighSurrogate(c) && IsLowSurrogate(text[1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[1]) - 0xDC00);
            ++text;
        } else if (IsHighSurrogate(c) || IsLowSurrogate(c)) {
            c = kReplacement;
        }
        AppendUtf8(c, out);
    }
    return out;
}

std::basic_string<XMLCh> XmlFromUtf8(std::string_view text)
{
    std::basic_string<XMLCh> out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        char32_t c = lead < 0x80 ? lead : lead & (0xFFU >> (length + 1));
        bool good = (lead < 0x80 || lead >= 0xC2) && lead < 0xF5 && i + length <= text.size();
        for (size_t k = 1; good && k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            good = (next & 0xC0) == 0x80;
            c = (c << 6) | (next & 0x3F);
        }
        // Longer than needed, or half of a pair: no character either.
        constexpr char32_t kFirstOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
        good = good && c >= kFirstOfLength[length] && !IsHighSurrogate(c) && !IsLowSurrogate(c);
        if (!good || c > 0x10FFFF) {
            out += static_cast<XMLCh>(kReplacement);
            ++i;
            continue;
        }
        if (c >= 0x10000) {
            out += static_cast<XMLCh>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<XMLCh>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            out += static_cast<XMLCh>(c);
        }
        i += length;
    }
    return out;
}

}  // namespace MCVelscore_850
