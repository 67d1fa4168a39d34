#include "mp3/audio_file_kind.h"

#include <array>
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

// Wave64 and ASF open with a 16-byte GUID rather than a four-letter code.
constexpr std::string_view kWave64Riff{"riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00", 16};
constexpr std::string_view kAsfHeader{
    "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", 16};
constexpr std::string_view kEbmlMagic{"\x1A\x45\xDF\xA3", 4};

AudioFileKind containerKind(std::span<const uint8_t> head) {
    if (startsWith(head, "FORM") && (startsWith(head, "AIFF", 8) || startsWith(head, "AIFC", 8))) {
        return AudioFileKind::aiff;
    }
    if (startsWith(head, "OggS")) {
        return AudioFileKind::ogg;
    }
    if (startsWith(head, "caff")) {
        return AudioFileKind::caf;
    }
    if (startsWith(head, kWave64Riff)) {
        return AudioFileKind::wave64;
    }
    if ((startsWith(head, "RF64") || startsWith(head, "BW64")) && startsWith(head, "WAVE", 8)) {
        return AudioFileKind::rf64;
    }
    if (startsWith(head, "RIFF") && startsWith(head, "AVI ", 8)) {
        return AudioFileKind::avi;
    }
    if (startsWith(head, "ftyp", 4)) {
        return AudioFileKind::mp4;
    }
    if (startsWith(head, kAsfHeader)) {
        return AudioFileKind::asf;
    }
    if (startsWith(head, kEbmlMagic)) {
        return AudioFileKind::matroska;
    }
    return AudioFileKind::unknown;
}

}  // namespace

AudioFileKind audioFileKind(std::span<const uint8_t> head) {
    const AudioFileKind container = containerKind(head);
    if (container != AudioFileKind::unknown) {
        return container;
    }
    const auto audio = afterId3v2Tags(head);
    if (startsWith(audio, "fLaC")) {
        return AudioFileKind::flac;
    }
    return isAdts(audio) ? AudioFileKind::adtsAac : AudioFileKind::unknown;
}

bool isSndfileKind(AudioFileKind kind) {
    switch (kind) {
        case AudioFileKind::flac:
        case AudioFileKind::ogg:
        case AudioFileKind::aiff:
        case AudioFileKind::caf:
        case AudioFileKind::wave64:
        case AudioFileKind::rf64:
            return true;
        default:
            return false;
    }
}

std::string_view audioFileKindName(AudioFileKind kind) {
    switch (kind) {
        case AudioFileKind::flac:
            return "FLAC";
        case AudioFileKind::ogg:
            return "Ogg";
        case AudioFileKind::aiff:
            return "AIFF";
        case AudioFileKind::caf:
            return "CAF";
        case AudioFileKind::wave64:
            return "Wave64";
        case AudioFileKind::rf64:
            return "RF64";
        case AudioFileKind::mp4:
            return "MP4";
        case AudioFileKind::adtsAac:
            return "ADTS AAC";
        case AudioFileKind::asf:
            return "WMA/ASF";
        case AudioFileKind::matroska:
            return "Matroska/WebM";
        case AudioFileKind::avi:
            return "AVI";
        case AudioFileKind::unknown:
            break;
    }
    return "";
}

}  // namespace tunebox
