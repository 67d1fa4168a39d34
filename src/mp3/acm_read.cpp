#include "mp3/acm_read.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/diagnostic_log.h"
#include "mp3/builtin_decoder_feed.h"
#include "mp3/conversion_state.h"

namespace tunebox {

std::atomic<uint64_t> convertedBytesDelivered{0};

namespace {

void logCount(const char* format, long value) {
    char line[128];
    std::snprintf(line, sizeof line, format, value);
    logIfEnabled(line);
}

uint32_t clampLogged(uint32_t value, uint32_t limit, const char* format) {
    if (value > limit) {
        logCount(format, static_cast<long>(value));
        return limit;
    }
    return value;
}

// The placing half of mp3AcmCvtBufSet, also for output that a stage hands
// out without taking input (its tail at the end of the source).
int placeConverted(AcmStage& stage, uint8_t* destination, uint32_t requested, uint32_t& endFlag,
                   uint32_t& produced) {
    const uint32_t used = stage.acmhead.destinationLengthUsed;
    if (used == 0) {
        return 1;
    }
    if (produced + used > requested) {
        const uint32_t over = produced + used - requested;
        uint32_t take = used - over;
        if (take > stage.destinationSize || take > requested) {
            logCount("★mp3AcmCvtBufSet:enp=%ld", static_cast<long>(take));
            take = std::min(stage.destinationSize, requested);
        }
        std::memcpy(destination + produced, stage.destinationBuffer.get(), take);
        const uint32_t kept = clampLogged(over, stage.leftoverSize, "★mp3AcmCvtBufSet:cpy=%ld");
        std::memcpy(stage.leftover.get(), stage.destinationBuffer.get() + take, kept);
        stage.oldbyte = kept;
        produced = requested;
        endFlag = 0;  // bytes remain to be read
        return 0;
    }
    uint32_t placed = used;
    if (placed > stage.destinationSize || placed > requested) {
        logCount("★mp3AcmCvtBufSet:pacm->acmhead.cbDstLengthUsed=%ld", static_cast<long>(placed));
        placed = std::min(stage.destinationSize, requested);
    }
    std::memcpy(destination + produced, stage.destinationBuffer.get(), placed);
    produced += placed;
    return produced > requested ? 0 : 1;
}

// Runs the second stage over what the first produced. Returns 1 to go on.
int feedSecondStage(ConversionState& source, uint8_t* destination, uint32_t requested,
                    uint32_t& endFlag, uint32_t& produced, int& result) {
    AcmStage& first = source.acm;
    AcmStage& second = source.acm2;
    const uint32_t moved = clampLogged(first.acmhead.destinationLengthUsed, second.sourceBufferSize,
                                       "★mp3AcmRead:pinfo->acm.acmhead.cbDstLengthUsed=%ld");
    std::memcpy(second.sourceBuffer.get(), first.destinationBuffer.get(), moved);
    if (moved == 0) {
        return 1;
    }
    second.acmhead.sourceLength = moved;
    if (second.stream->convert(second.acmhead, 0) != kCodecOk) {
        result = 0;
        return 0;
    }
    return mp3AcmCvtBufSet(second, destination, requested, endFlag, produced);
}

// The first stage converts the block in its source buffer: through the
// built-in decoder when that path opened, else through its codec stream.
bool convertFirstStage(ConversionState& source, uint32_t flags) {
    return source.ownDecoderFlag == 1
               ? mp3ConvertMyDecoder(source) == 1
               : source.acm.stream->convert(source.acm.acmhead, flags) == kCodecOk;
}

// Converts an empty block marked as the end, so that what a stage still
// holds comes out. False when nothing came; a failure here only means that
// the bytes left behind were no audio.
bool flushFirstStage(ConversionState& source) {
    source.acm.acmhead.sourceLength = 0;
    return convertFirstStage(source, kCodecConvertEnd) &&
           source.acm.acmhead.destinationLengthUsed > 0;
}

bool flushSecondStage(AcmStage& stage) {
    stage.acmhead.sourceLength = 0;
    return stage.stream->convert(stage.acmhead, kCodecConvertEnd) == kCodecOk &&
           stage.acmhead.destinationLengthUsed > 0;
}

// The file is used up, but the stages still hold output: the built-in
// decoder's last frames in its accumulator, the resampler's delayed tail.
// One step places some of it; returns 1 to go on, 0 when the request is full
// or nothing was left.
int drainStages(ConversionState& source, uint8_t* destination, uint32_t requested,
                uint32_t& endFlag, uint32_t& produced, int& result) {
    const bool firstGave = flushFirstStage(source);
    if (source.conversionStages != 2) {
        return firstGave ? placeConverted(source.acm, destination, requested, endFlag, produced)
                         : 0;
    }
    if (firstGave) {
        return feedSecondStage(source, destination, requested, endFlag, produced, result);
    }
    return flushSecondStage(source.acm2)
               ? placeConverted(source.acm2, destination, requested, endFlag, produced)
               : 0;
}

enum class BlockRead { read, endOfSource, failed };

// Reads the next block of the file into the first stage's source buffer,
// zero-filling a short last block.
BlockRead readBlock(RiffFile& file, ConversionState& source, uint32_t block, uint32_t& endFlag,
                    int& more) {
    AcmStage& first = source.acm;
    const int64_t position = file.seek(0, SEEK_CUR);
    int64_t toRead = block;
    if (position < 0 || source.sourceDataSize < position + block) {
        toRead = position >= 0 && position < source.sourceDataSize
                     ? source.sourceDataSize - position
                     : 0;
        more = 0;
        endFlag = 1;
        if (toRead == 0) {
            return BlockRead::endOfSource;
        }
    }
    toRead = clampLogged(static_cast<uint32_t>(toRead), first.sourceBufferSize,
                         "★mp3AcmRead:rqsize=%ld");
    const int64_t got = file.read(first.sourceBuffer.get(), toRead);
    if (got <= 0) {
        endFlag = 1;
        return got == 0 ? BlockRead::endOfSource : BlockRead::failed;
    }
    if (got != block) {
        more = 0;
        endFlag = 1;
        std::fill(first.sourceBuffer.get() + got, first.sourceBuffer.get() + first.sourceBufferSize,
                  uint8_t{0});
    }
    first.acmhead.sourceLength = static_cast<uint32_t>(got);
    if (source.ownDecoderFlag == 1) {
        mp3NoteMyDecoderBlock(source.mx, position, static_cast<uint32_t>(got));
    }
    return BlockRead::read;
}

}  // namespace

int mp3AcmReadOldBuf(AcmStage& stage, uint8_t* destination, uint32_t requested,
                     uint32_t& produced) {
    if (stage.oldbyte > requested) {
        const uint32_t copied =
            clampLogged(requested, stage.leftoverSize, "★mp3AcmReadOldBuf:inSize=%ld");
        std::memcpy(destination, stage.leftover.get(), copied);
        stage.oldbyte -= requested;
        std::memmove(stage.leftover.get(), stage.leftover.get() + requested, stage.oldbyte);
        produced = requested;
        return 1;
    }
    uint32_t copied = stage.oldbyte;
    if (copied > stage.leftoverSize || copied > requested) {
        logCount("★mp3AcmReadOldBuf:pacm->oldbyte=%ld", static_cast<long>(copied));
        copied = std::min(stage.leftoverSize, requested);
    }
    if (copied > 0) {
        std::memcpy(destination, stage.leftover.get(), copied);
    }
    produced = copied;
    return 0;
}

int mp3AcmCvtBufSet(AcmStage& stage, uint8_t* destination, uint32_t requested, uint32_t& endFlag,
                    uint32_t& produced) {
    if (stage.acmhead.sourceLengthUsed == 0) {
        return 1;
    }
    return placeConverted(stage, destination, requested, endFlag, produced);
}

int mp3AcmRead(RiffFile& file, uint8_t* destination, uint32_t& count, uint32_t requested,
               ConversionState& source, uint32_t& endFlag) {
    endFlag = 0;
    int result = 1;
    uint32_t produced = 0;
    AcmStage& first = source.acm;
    const uint32_t block = acmSourceBlockSize(first);
    const bool twoStages = source.conversionStages == 2;

    if (mp3AcmReadOldBuf(twoStages ? source.acm2 : first, destination, requested, produced) == 1) {
        count = requested;
        return 1;
    }
    first.oldbyte = 0;
    source.acm2.oldbyte = 0;

    for (int more = 1; more == 1;) {
        const bool framesWaiting = source.ownDecoderFlag == 1 && mp3MyDecoderHoldsFrame(source.mx);
        if (framesWaiting) {
            first.acmhead.sourceLength = 0;
        } else if (const BlockRead read = readBlock(file, source, block, endFlag, more);
                   read != BlockRead::read) {
            if (read == BlockRead::failed) {
                break;
            }
            more = drainStages(source, destination, requested, endFlag, produced, result);
            continue;
        }
        if (!convertFirstStage(source, 0)) {
            result = 0;
            break;
        }
        if (!twoStages) {
            more = mp3AcmCvtBufSet(first, destination, requested, endFlag, produced);
        } else if (first.acmhead.sourceLengthUsed != 0) {
            more = feedSecondStage(source, destination, requested, endFlag, produced, result);
        } else {
            more = 1;  // nothing taken yet: on with the next block, or the end
        }
    }
    count = produced;
    convertedBytesDelivered += produced;
    return result;
}

}  // namespace tunebox
