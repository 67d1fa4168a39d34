#include "mp3/decoder/frame_crc.h"

namespace tunebox {
namespace {

// Layer I: four allocation bits per subband and channel, one set for both
// channels from the joint-stereo bound up; always whole bytes.
std::size_t protectedBytes(const MpegHeader& header) {
    if (header.layerField != kLayer1) {
        return header.sideInfoBytes();
    }
    constexpr int kSubbands = 32;
    const int sets = header.channels() == 1 ? kSubbands : kSubbands + header.jointStereoBound();
    return static_cast<std::size_t>(sets * 4 / 8);
}

}  // namespace

uint16_t crc16(std::span<const uint8_t> bytes, uint16_t crc) {
    constexpr uint16_t kGenerator = 0x8005;
    for (const uint8_t byte : bytes) {
        crc ^= static_cast<uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000) ? static_cast<uint16_t>((crc << 1) ^ kGenerator)
                                 : static_cast<uint16_t>(crc << 1);
        }
    }
    return crc;
}

bool frameCrcMatches(std::span<const uint8_t> frame, const MpegHeader& header) {
    if (!header.crcProtected()) {
        return true;
    }
    const std::size_t start = kFrameHeaderBytes + kCrcBytes;
    const std::size_t count = protectedBytes(header);
    if (frame.size() < start + count) {
        return false;
    }
    // The sync word and version fields are left out: the check starts at
    // the bit-rate byte.
    const uint16_t crc = crc16(frame.subspan(start, count), crc16(frame.subspan(2, 2)));
    const auto stored = static_cast<uint16_t>(frame[4] << 8 | frame[5]);
    return crc == stored;
}

}  // namespace tunebox
