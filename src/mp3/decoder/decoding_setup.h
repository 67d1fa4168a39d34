#pragma once
// How the decoder is set up for a stream: rate reduction, channel handling,
// sample size and frequency limit, and what follows from them: the
// subbands that are decoded, the output routine and the output format.

#include <cstddef>
#include <cstdint>

#include "mp3/decoder/frame_output.h"
#include "mp3/decoder/mpeg_header.h"

namespace tunebox {

// Bit 3 of the output mode asks for 8-bit samples, its low two bits for a
// channel handling (see frame_output.h).
inline constexpr int kOutputMode8Bit = 8;
inline constexpr int kDefaultFrequencyLimit = 24000;

struct DecodingOptions {
    int reduction = 0;  // output at the stream's rate >> reduction
    int outputMode = 0;
    int frequencyLimit = kDefaultFrequencyLimit;  // Hz; content above it is dropped
};

// What the decoder delivers for a stream.
struct MpegOutputDescription {
    int channels = 0;
    int sampleRate = 0;
    int bitsPerSample = 16;
    std::size_t samplesPerFrame = 0;  // per channel
    std::size_t pcmBytesPerFrame = 0;
};

struct DecodingSetup {
    int reduction = 0;
    int channelHandling = 0;
    int sampleMultiplier = 1;
    int decodedSubbands = kSubbands;  // lines from 18 x this up are dropped
    FrameOutputRoutine output = nullptr;
    MpegOutputDescription description;
};

// Sets up decoding of the stream whose first frame has `header`
// and `frameLength` (below 2: there is no frame). Returns 1, or 0 for a
// reserved layer or sampling frequency.
int mpegSetUpDecoding(const MpegHeader& header, uint32_t frameLength, int reduction, int outputMode,
                      int frequencyLimit, DecodingSetup& setup);

// The same for a frame the decoder has parsed.
DecodingSetup setUpDecoding(const MpegHeader& header, const DecodingOptions& options);

// The output of a stream decoded with the default options: 16-bit PCM at
// its own rate, one channel for a one-channel stream and two otherwise.
MpegOutputDescription describeOutput(const MpegHeader& header);

}  // namespace tunebox
