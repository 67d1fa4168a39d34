#include "mp3/first_frame.h"

#include "core/little_endian.h"
#include "mp3/mpeg_header_chain.h"

namespace tunebox {
std::array<uint8_t, 32> encodeLayer3Format(const MpegLayer3Format& format) {
    std::array<uint8_t, 32> bytes{};
    storeWaveFormat(format.wave, bytes);
    storeLe16(&bytes[18], format.id);
    storeLe32(&bytes[20], format.flags);
    storeLe16(&bytes[24], format.blockSize);
    storeLe16(&bytes[26], format.framesPerBlock);
    storeLe16(&bytes[28], format.codecDelay);
    return bytes;
}

int mp3GetHeader(std::span<const uint8_t> buffer, MpegLayer3Format& format, MpegHeader& header,
                 uint32_t& frameOffset, BufferEnd end) {
    // A sync word alone turns up about every few thousand bytes of any data,
    // so a lone header would take noise for a stream. A frame counts only when
    // the frames after it, each at its predecessor's computed length, agree.
    std::size_t at = 0;
    MpegHeader found;
    for (;; ++at) {
        if (buffer.size() < 4 || at >= buffer.size() - 3) {
            return 0;
        }
        if (mpegParseHeader(buffer.subspan(at), found) &&
            mpegChainConfirmed(buffer, at, found, end)) {
            break;
        }
    }
    frameOffset = static_cast<uint32_t>(at);
    header = found;
    format = MpegLayer3Format{};
    format.wave.channels = static_cast<uint16_t>(header.channels());
    // Bits per second, not bytes: the opener computes lengths from the bit
    // rate, and the converter sizes its blocks from the block size instead.
    format.wave.avgBytesPerSec = header.bitRate * 1000;
    format.wave.samplesPerSec = header.sampleRate;
    format.blockSize = static_cast<uint16_t>(header.frameBytes());
    format.flags = header.padding != 0 ? 1 : 2;
    return 1;
}

}  // namespace tunebox
