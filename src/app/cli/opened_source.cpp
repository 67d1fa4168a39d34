#include "app/cli/opened_source.h"

#include <vector>

#include "core/wave_format.h"
#include "playback/source_opener.h"

namespace tunebox::cli {
namespace {

// A converter may take in several blocks before its first output; one that
// has given nothing after this many has nothing to give.
constexpr int kProbeBlocks = 64;

}  // namespace

bool OpenedSource::open(const std::string& path, const SourceOptions& options) {
    source_ = wavOpenSource(path, options).source;
    return source_ != nullptr;
}

BlockRead OpenedSource::read(uint8_t* destination, uint32_t requested) {
    BlockRead block;
    if (!source_) {
        block.ended = true;
        return block;
    }
    const SourceBlock read = source_->read(destination, requested);
    block.count = read.count;
    block.ended = read.ended || read.failed;
    // A conversion that fails with nothing left to convert only met the end.
    block.failed = read.failed && !(read.count == 0 && read.ended);
    return block;
}

bool yieldsAudio(const std::string& path, const SourceOptions& options) {
    OpenedSource opened;
    if (!opened.open(path, options)) {
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
