#include "playback/direct_source.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace tunebox {

int wavReadDirect(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
                  uint32_t& endOfSource) {
    const int64_t got = file.read(destination, requested);
    count = got < 0 ? 0 : static_cast<uint32_t>(got);
    if (count < requested) {
        endOfSource = 1;
    }
    return count > 0 ? 1 : 0;
}

int wavSeekDirect(RiffFile& file, uint32_t position) {
    return file.seek(position, SEEK_SET) >= 0 ? 1 : 0;
}

DirectSource::DirectSource(RiffHandle file, const WaveFormat& format, uint32_t dataEnd,
                           uint32_t length)
    : file_(std::move(file)), format_(format), dataEnd_(dataEnd), length_(length) {}

SourceBlock DirectSource::read(uint8_t* destination, uint32_t requested) {
    const int64_t position = file_->seek(0, SEEK_CUR);
    const int64_t left = position < 0 ? 0 : std::max<int64_t>(dataEnd_ - position, 0);
    const auto allowed = static_cast<uint32_t>(std::min<int64_t>(requested, left));
    SourceBlock block;
    uint32_t endOfSource = 0;
    // A read that brings nothing has met the end or an error; both end it.
    static_cast<void>(wavReadDirect(*file_, destination, allowed, block.count, endOfSource));
    block.ended = endOfSource == 1 || allowed < requested;
    return block;
}

bool DirectSource::seek(uint32_t position, uint32_t /*permyriad*/) {
    return wavSeekDirect(*file_, position) == 1;
}

SourceDescription DirectSource::describe() const {
    SourceDescription description;
    description.format = format_;
    return description;
}

}  // namespace tunebox
