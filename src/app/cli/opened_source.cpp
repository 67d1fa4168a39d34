#include "app/cli/opened_source.h"

#include <vector>

#include "mp3/mp3_open.h"
#include "core/wave_format.h"
#include "playback/source_reader.h"
#include "playback/wav_reader.h"

namespace tunebox::cli {
namespace {

// A converter may take in several blocks before its first output; one that
// has given nothing after this many has nothing to give.
constexpr int kProbeBlocks = 64;

}  // namespace

OpenedSource::~OpenedSource() {
    wavCloseSource(file_, source_);
}

bool OpenedSource::open(const std::string& path, std::optional<uint32_t> ownDecoder) {
    wavCloseSource(file_, source_);
    mp3ResetSource(source_);
    if (ownDecoder) {
        source_.ownDecoderFlag = *ownDecoder;
    }
    return wavOpenResetSource(path, file_, length_, source_) == 1;
}

BlockRead OpenedSource::read(uint8_t* destination, uint32_t requested) {
    BlockRead block;
    if (!file_) {
        block.ended = true;
        return block;
    }
    uint32_t end = 0;
    const int result = sourceRead(*file_, destination, requested, block.count, end, source_);
    block.ended = end == 1 || result != 1;
    block.failed = result != 1 && !(block.count == 0 && end == 1);
    return block;
}

bool yieldsAudio(const std::string& path) {
    OpenedSource opened;
    if (!opened.open(path)) {
        return false;
    }
    std::vector<uint8_t> block(kEngineBlockBytes);
    for (int attempt = 0; attempt < kProbeBlocks; ++attempt) {
        const BlockRead read = opened.read(block.data(), kEngineBlockBytes);
        if (read.count > 0 || read.ended) {
            return read.count > 0;
        }
    }
    return false;
}

}  // namespace tunebox::cli
