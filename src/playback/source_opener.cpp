#include "playback/source_opener.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>
#include <vector>

#include "mp3/conversion_state.h"
#include "mp3/mp3_open.h"
#include "playback/converted_source.h"
#include "playback/direct_source.h"
#include "playback/sndfile_source.h"
#include "playback/wav_reader.h"

namespace tunebox {
namespace {

std::unique_ptr<ConversionState> freshState(const SourceOptions& options) {
    auto state = std::make_unique<ConversionState>();
    state->ownDecoderFlag = options.builtinDecoderFirst ? 1 : 0;
    return state;
}

SourceOpening openWave(const std::string& path, const SourceOptions& options) {
    auto state = freshState(options);
    RiffHandle file;
    uint32_t length = 0;
    if (wavExamineWaveFile(path, file, length, *state) != WavOpenStatus::opened) {
        return {nullptr, state->refusal};
    }
    state->outputLength = length;
    if (isConverting(*state)) {
        return {std::make_unique<ConvertedSource>(std::move(file), std::move(state), length), {}};
    }
    return {std::make_unique<DirectSource>(std::move(file), state->outputFormat,
                                           state->sourceDataSize, length),
            {}};
}

SourceOpening openMp3(const std::string& path, const SourceOptions& options) {
    auto state = freshState(options);
    RiffHandle file;
    uint32_t length = 0;
    if (mp3OpenFile(path, file, length, *state) != 1) {
        return {nullptr, state->refusal};
    }
    state->outputLength = length;
    return {std::make_unique<ConvertedSource>(std::move(file), std::move(state), length), {}};
}

// Only files whose first bytes name a kind libsndfile reads are handed to
// it: it reads MP3 and raw data too, and would take them from the openers
// that know them better.
SourceOpening openSndfile(const std::string& path, const SourceOptions& /*options*/) {
    const AudioFileKind kind = audioFileKind(readFileHead(path));
    if (!isSndfileKind(kind)) {
        return {};
    }
    return SndfileSource::open(path, kind);
}

// In order of trust: a WAVE file refused for its format or length is not
// tried as MP3, since its samples could pass for MPEG frames and play as
// noise; nor is a file that begins as FLAC, Ogg, AIFF and the like.
constexpr std::array kOpeners{&openWave, &openSndfile, &openMp3};

}  // namespace

std::vector<uint8_t> readFileHead(const std::string& path) {
    std::vector<uint8_t> head(kFileKindHeadBytes);
    std::ifstream in(path, std::ios::binary);
    in.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0)));
    return head;
}

SourceOpening wavOpenSource(const std::string& path, const SourceOptions& options) {
    SourceOpening opening;
    for (const auto opener : kOpeners) {
        opening = opener(path, options);
        if (opening.source || !opening.refusal.empty()) {
            break;
        }
    }
    return opening;
}

}  // namespace tunebox
