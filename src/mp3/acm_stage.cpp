#include "mp3/acm_stage.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/diagnostic_log.h"
#include "core/heap.h"
#include "core/little_endian.h"

namespace tunebox {
namespace {

constexpr std::size_t kBlockSizeOffset = 24;
constexpr uint32_t kPcmBlockFrames = 2048;
// The second stage's block size is stored in 16 bits, so a stage's
// destination buffer (twice its destination size) must stay below 64 KiB.
constexpr uint32_t kLargestDestinationSize = 32760;

void logFormat(const WaveFormat& format) {
    char line[160];
    std::snprintf(line, sizeof line,
                  "cbSize:%d wFormatTag:%d nChannels:%d nAvgBytesPerSec:%d wBitsPerSample:%d "
                  "nBlockAlign:%d  nSamplesPerSec:%d",
                  format.extraSize, format.formatTag, format.channels,
                  static_cast<int>(format.avgBytesPerSec), format.bitsPerSample, format.blockAlign,
                  static_cast<int>(format.samplesPerSec));
    logIfEnabled(line);
}

void logStageFormats(const AcmStage& stage) {
    logFormat(parseWaveFormat({stage.sourceFormat.get(), kCodecMaxFormatBytes}));
    logFormat(acmDestinationFormat(stage));
}

std::string hexLine(const char* format, uint32_t a, uint32_t b = 0) {
    char line[160];
    std::snprintf(line, sizeof line, format, a, b);
    return line;
}

}  // namespace

uint32_t acmSourceBlockSize(const AcmStage& stage) {
    if (!stage.sourceFormat) {
        return 0;
    }
    const uint32_t carried = loadLe16(stage.sourceFormat.get() + kBlockSizeOffset);
    if (carried != 0) {
        return carried;
    }
    const WaveFormat format = parseWaveFormat({stage.sourceFormat.get(), kCodecMaxFormatBytes});
    return format.blockAlign * kPcmBlockFrames;
}

WaveFormat acmDestinationFormat(const AcmStage& stage) {
    if (!stage.destinationFormat) {
        return {};
    }
    return parseWaveFormat({stage.destinationFormat.get(), kCodecMaxFormatBytes});
}

int mp3GetAcmFormatMem(AcmStage& stage) {
    stage.destinationFormat = heapAllocZeroed<uint8_t>(kCodecMaxFormatBytes);
    if (!stage.destinationFormat) {
        return 0;
    }
    stage.sourceFormat = heapAllocZeroed<uint8_t>(kCodecMaxFormatBytes);
    if (!stage.sourceFormat) {
        stage.destinationFormat.reset();
        return 0;
    }
    return 1;
}

int mp3GetAcmBufferMem(AcmStage& stage) {
    const uint32_t block = acmSourceBlockSize(stage);
    const uint32_t frame = std::max<uint32_t>(acmDestinationFormat(stage).blockAlign, 1);
    const uint32_t size =
        std::min(stage.stream->destinationSizeFor(block), kLargestDestinationSize / frame * frame);
    stage.sourceBuffer = heapAllocZeroed<uint8_t>(block);
    stage.destinationBuffer = heapAllocZeroed<uint8_t>(2 * size);
    stage.leftover = heapAllocZeroed<uint8_t>(4 * size);
    if (block == 0 || !stage.sourceBuffer || !stage.destinationBuffer || !stage.leftover) {
        return 0;
    }
    stage.sourceBufferSize = block;
    stage.destinationSize = 2 * size;
    stage.leftoverSize = 4 * size;
    stage.oldbyte = 0;
    return 1;
}

int mp3PrepareAcmHeader(AcmStage& stage) {
    if (!stage.sourceBuffer || !stage.destinationBuffer) {
        return 0;
    }
    stage.acmhead = CodecStreamHeader{};
    stage.acmhead.source = stage.sourceBuffer.get();
    stage.acmhead.sourceLength = stage.sourceBufferSize;
    stage.acmhead.destination = stage.destinationBuffer.get();
    stage.acmhead.destinationLength = stage.destinationSize;
    stage.headerPrepared = true;
    return 1;
}

int mp3GetAcmOpen(AcmStage& stage, std::span<const uint8_t> sourceFormat,
                  const WaveFormat& destination, uint32_t flags) {
    if (mp3GetAcmFormatMem(stage) != 1) {
        logIfEnabled("★mp3GetAcmFormatMem失敗:mp3GetAcmOpen:");
        return 0;
    }
    std::memcpy(stage.sourceFormat.get(), sourceFormat.data(),
                std::min<std::size_t>(sourceFormat.size(), kCodecMaxFormatBytes));
    storeWaveFormat(destination, {stage.destinationFormat.get(), kCodecMaxFormatBytes});
    logStageFormats(stage);

    const std::span<const uint8_t> source(stage.sourceFormat.get(), kCodecMaxFormatBytes);
    WaveFormat suggested = destination;
    const uint32_t suggestResult = codecFormatSuggest(source, suggested, flags);
    if (suggestResult != kCodecOk) {
        logIfEnabled(hexLine("★acmFormatSuggest失敗:mp3OpenSeekMp3File:%xh dwflag:%xh",
                             suggestResult, flags));
        logStageFormats(stage);
        return 0;
    }
    storeWaveFormat(suggested, {stage.destinationFormat.get(), kCodecMaxFormatBytes});
    const uint32_t openResult = codecStreamOpen(stage.stream, source, suggested);
    if (openResult != kCodecOk) {
        logIfEnabled(hexLine("★acmStreamOpen失敗:mp3OpenSeekMp3File:%xh", openResult));
        return 0;
    }
    logIfEnabled(stage.stream->driverShortName());
    if (mp3GetAcmBufferMem(stage) != 1) {
        logIfEnabled("★mp3GetAcmBufferMem失敗:mp3OpenSeekMp3File");
        return 0;
    }
    if (mp3PrepareAcmHeader(stage) != 1) {
        logIfEnabled("★mp3PrepareAcmHeader失敗:mp3OpenSeekMp3File");
        return 0;
    }
    return 1;
}

int mp3GetMyDecBufferMem(AcmStage& stage, uint32_t sizeA, uint32_t sizeB) {
    stage.sourceBuffer = heapAllocZeroed<uint8_t>(10 * sizeA);
    stage.destinationBuffer = heapAllocZeroed<uint8_t>(2 * sizeB);
    stage.leftover = heapAllocZeroed<uint8_t>(2 * sizeB);
    if (!stage.sourceBuffer || !stage.destinationBuffer || !stage.leftover) {
        return 0;
    }
    stage.sourceBufferSize = 10 * sizeA;
    stage.destinationSize = 2 * sizeB;
    stage.leftoverSize = 2 * sizeB;
    stage.oldbyte = 0;
    return 1;
}

void acmStageRelease(AcmStage& stage) {
    stage = AcmStage{};
}

}  // namespace tunebox
