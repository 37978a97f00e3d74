#ifndef VELSCORE_HOST_DOCUMENTS_VELTRANSCODER_H
#define VELSCORE_HOST_DOCUMENTS_VELTRANSCODER_H

#include <memory>
#include <string>
#include <string_view>

#include <xercesc/util/XercesDefs.hpp>

#include "host/export.h"

namespace MCVelscore_850 {

/// Turns the parser's 16-bit text into a narrow encoding: UTF-8 for the empty name and "UTF-8",
/// otherwise any that the parser knows.
class VELHOST_API VelTranscoder {
public:
    /// Refuses with kUnknownEncoding.
    explicit VelTranscoder(const std::string& encoding);
    VelTranscoder(const VelTranscoder&) = delete;
    VelTranscoder& operator=(const VelTranscoder&) = delete;
    ~VelTranscoder();

    /// The text in the narrow encoding; empty for null. A character that the encoding lacks
    /// becomes its replacement character.
    std::string transcodeTo(const XMLCh* text) const;

private:
    struct Converter;
    std::unique_ptr<Converter> converter_;  // null for UTF-8
};

/// 16-bit text as UTF-8; empty for null.
VELHOST_API std::string Utf8FromXml(const XMLCh* text);
/// UTF-8 as 16-bit text, without the end mark; bytes that are no UTF-8 become U+FFFD.
VELHOST_API std::basic_string<XMLCh> XmlFromUtf8(std::string_view text);

}  // namespace MCVelscore_850

#endif
