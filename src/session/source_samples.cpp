#include "session/source_samples.h"

#include <vector>

#include "core/wave_format.h"
#include "playback/source_opener.h"

namespace tunebox {

std::string forEachSourceBlock(const std::string& path, const SourceOptions& options,
                               const SampleConsumer& consume) {
    const SourceOpening opening = wavOpenSource(path, options);
    if (!opening.source) {
        return opening.refusal.empty() ? "cannot be read as audio" : opening.refusal;
    }
    // Native PCM is little-endian 16-bit, as the samples are in memory here.
    std::vector<int16_t> block(kEngineBlockBytes / 2);
    for (;;) {
        const SourceBlock got =
            opening.source->read(reinterpret_cast<uint8_t*>(block.data()), kEngineBlockBytes);
        if (got.failed) {
            return "the audio could not be decoded to its end";
        }
        const std::span<const int16_t> samples(block.data(), got.count / kNativeFrameBytes * 2);
        if (!samples.empty()) {
            if (std::string problem = consume(samples); !problem.empty()) {
                return problem;
            }
        }
        if (got.ended || got.count == 0) {
            return {};
        }
    }
}

}  // namespace tunebox
