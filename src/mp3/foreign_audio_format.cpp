#include "mp3/foreign_audio_format.h"

#include <cstring>

#include "mp3/id3_tag.h"

namespace tunebox {
namespace {

bool startsWith(std::span<const uint8_t> bytes, std::string_view text, std::size_t at = 0) {
    return bytes.size() >= at + text.size() &&
           std::memcmp(bytes.data() + at, text.data(), text.size()) == 0;
}

// FLAC and ADTS streams may follow ID3v2 tags, as MP3 streams do.
std::span<const uint8_t> afterId3v2Tags(std::span<const uint8_t> bytes) {
    while (bytes.size() >= kId3v2HeaderBytes && startsWith(bytes, "ID3")) {
        const std::size_t size = (bytes[6] & 0x7Fu) << 21 | (bytes[7] & 0x7Fu) << 14 |
                                 (bytes[8] & 0x7Fu) << 7 | (bytes[9] & 0x7Fu);
        if (size + kId3v2HeaderBytes > bytes.size()) {
            return {};
        }
        bytes = bytes.subspan(size + kId3v2HeaderBytes);
    }
    return bytes;
}

// An ADTS header: the 12-bit sync, then the layer bits 00 that MPEG audio
// never uses. Its 13-bit frame length must lead to a second header.
std::size_t adtsFrameLength(std::span<const uint8_t> bytes) {
    if (bytes.size() < 7 || bytes[0] != 0xFF || (bytes[1] & 0xF6) != 0xF0) {
        return 0;
    }
    return (bytes[3] & 0x03u) << 11 | bytes[4] << 3 | bytes[5] >> 5;
}

bool isAdts(std::span<const uint8_t> bytes) {
    const std::size_t length = adtsFrameLength(bytes);
    return length >= 7 && length < bytes.size() && adtsFrameLength(bytes.subspan(length)) != 0;
}

}  // namespace

std::string_view foreignAudioFormat(std::span<const uint8_t> head) {
    if (startsWith(head, "FORM") && (startsWith(head, "AIFF", 8) || startsWith(head, "AIFC", 8))) {
        return "AIFF";
    }
    if (startsWith(head, "OggS")) {
        return "Ogg";
    }
    if (startsWith(head, "ftyp", 4)) {
        return "MP4";
    }
    const auto audio = afterId3v2Tags(head);
    if (startsWith(audio, "fLaC")) {
        return "FLAC";
    }
    return isAdts(audio) ? "ADTS AAC" : "";
}

}  // namespace tunebox
