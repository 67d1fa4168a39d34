#include "mp3/mp3_open.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "app/diagnostic_log.h"
#include "app/settings.h"
#include "mp3/mpeg_header.h"
#include "platform/format_plausibility.h"
#include "platform/little_endian.h"
#include "platform/native_length.h"
#include "playback/audio_source.h"

namespace tunebox {
namespace {

constexpr std::size_t kXingLook = 1024;
constexpr uint32_t kXingFramesPresent = 0x01;
constexpr std::size_t kStageBlockSizeOffset = 24;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, FileCloser>;

uint32_t loadBe32(const uint8_t* bytes) {
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

// The frame count of a "Xing" or "Info" frame; 0 when there is none. The
// file is left where it was.
uint32_t xingFrameCount(RiffFile& file, const MpegLayer3Format& format) {
    const int64_t start = file.seek(0, SEEK_CUR);
    std::array<uint8_t, kXingLook> bytes{};
    const int64_t got = file.read(bytes.data(), std::min<int64_t>(format.blockSize, kXingLook));
    file.seek(start, SEEK_SET);
    for (int64_t i = 0; i + 4 < got; ++i) {
        const bool tag =
            std::memcmp(&bytes[i], "Xing", 4) == 0 || std::memcmp(&bytes[i], "Info", 4) == 0;
        if (!tag) {
            continue;
        }
        if (i + 12 > got || (bytes[i + 7] & kXingFramesPresent) == 0) {
            return 0;
        }
        return loadBe32(&bytes[i + 8]);
    }
    return 0;
}

// The frames' playing time in native-PCM bytes. The sample count is worked
// out in 64 bits: a 32-bit count wraps at about 27 hours of audio and would
// turn a long file into a short one.
double lengthFromFrames(uint32_t frames, const MpegHeader& header) {
    const uint64_t samples = uint64_t{frames} * header.samplesPerFrame;
    return static_cast<double>(samples) / header.sampleRate * kNativeBytesPerSecond;
}

double lengthFromBitRate(const AudioSource& source, const MpegHeader& header,
                         uint32_t frameOffset) {
    int64_t audioBytes = static_cast<int64_t>(source.sourceBytesBound) - frameOffset;
    if (header.padding != 0) {
        audioBytes -= 2;
    }
    return static_cast<double>(std::max<int64_t>(audioBytes, 0)) * (1411.2 / header.bitRate);
}

// Why a stream of `format` playing `nativeBytes` cannot be opened; empty
// when it can.
std::string refusalOf(const WaveFormat& format, double nativeBytes) {
    std::string reason = implausibleFormatReason(format);
    if (reason.empty() && !fittingNativeLength(nativeBytes)) {
        reason = tooLongReason(nativeBytes);
    }
    return reason;
}

// Opens the built-in decoder or a codec stream as the first stage. Returns
// which opened (1 built-in, 0 codec) through `ownDecoder`; false for neither.
bool openFirstStage(AudioSource& source, std::span<const uint8_t> sourceFormat,
                    const WaveFormat& nativeFormat, std::span<const uint8_t> firstBytes,
                    uint32_t& ownDecoder) {
    const auto openBuiltin = [&] { return mp3OpenMyDecoder(source, firstBytes) == 1; };
    const auto openCodec = [&] {
        return mp3GetAcmOpen(source.acm, sourceFormat, nativeFormat, kSuggestFormatTag) == 1;
    };
    const bool preferBuiltin = ownDecoder == 1;
    if (preferBuiltin ? openBuiltin() : openCodec()) {
        return true;
    }
    acmStageRelease(source.acm);
    source.mx = BuiltinDecoderState{};
    if (preferBuiltin ? openCodec() : openBuiltin()) {
        ownDecoder = preferBuiltin ? 0 : 1;
        return true;
    }
    return false;
}

}  // namespace

void mp3ResetSource(AudioSource& source) {
    audioSourceReset(source);
    source.ownDecoderFlag = readDecoderChoice() == 1 ? 1 : 0;
}

void mp3ReleaseSource(AudioSource& source) {
    source.mx = BuiltinDecoderState{};
    acmStageRelease(source.acm);
    acmStageRelease(source.acm2);
}

int mp3SelectDecoder(AudioSource& source, std::span<const uint8_t> sourceFormat,
                     const WaveFormat& nativeFormat, std::span<const uint8_t> firstBytes) {
    if (!openFirstStage(source, sourceFormat, nativeFormat, firstBytes, source.ownDecoderFlag)) {
        return 0;
    }
    source.conversionStages = 1;
    const WaveFormat firstOutput = acmDestinationFormat(source.acm);
    if (sameFormat(firstOutput, nativeFormat)) {
        return 1;
    }
    std::array<uint8_t, kCodecMaxFormatBytes> secondSource{};
    storeWaveFormat(firstOutput, secondSource);
    storeLe16(&secondSource[kStageBlockSizeOffset],
              static_cast<uint16_t>(source.acm.destinationSize));
    const uint32_t flags = kSuggestFormatTag | kSuggestChannels | kSuggestSamplesPerSec;
    if (mp3GetAcmOpen(source.acm2, secondSource, nativeFormat, flags) != 1) {
        return 0;
    }
    source.conversionStages = 2;
    return sameFormat(acmDestinationFormat(source.acm2), nativeFormat) ? 1 : 0;
}

int mp3OpenSeekMp3File(const std::string& path, RiffHandle& file, uint32_t& length,
                       AudioSource& source, uint32_t startOffset) {
    file = RiffFile::openForRead(path);
    if (!file) {
        logIfEnabled("★ﾌｧｲﾙｵｰﾌﾟﾝ失敗:mp3OpenSeekMp3File");
        return 0;
    }
    std::vector<uint8_t> head(kFirstFrameSearchBytes);
    const int64_t got = file->seek(startOffset, SEEK_SET) < 0
                            ? -1
                            : file->read(head.data(), kFirstFrameSearchBytes);
    if (got <= 0) {
        file.reset();
        logIfEnabled("★ﾌｧｲﾙread失敗:mp3OpenSeekMp3File");
        return 0;
    }
    head.resize(static_cast<std::size_t>(got));
    MpegLayer3Format format;
    MpegHeader header;
    uint32_t frameOffset = 0;
    if (mp3GetHeader(head, format, header, frameOffset) != 1) {
        file.reset();
        logIfEnabled("★mp3GetHeader失敗:mp3OpenSeekMp3File");
        return 0;
    }
    file->seek(static_cast<int64_t>(startOffset) + frameOffset, SEEK_SET);

    source.xingFrames = xingFrameCount(*file, format);
    source.mpegHeader = header;
    const double nativeBytes = source.xingFrames != 0
                                   ? lengthFromFrames(source.xingFrames, header)
                                   : lengthFromBitRate(source, header, frameOffset);
    source.refusal = refusalOf(format.wave, nativeBytes);
    if (!source.refusal.empty()) {
        file.reset();
        return 0;
    }
    length = fittingNativeLength(nativeBytes).value_or(0);
    source.outputLength = length;
    const auto record = encodeLayer3Format(format);
    std::copy(record.begin(), record.end(), source.sourceFormat.begin());
    source.outputFormat = format.wave;

    if (mp3SelectDecoder(source, source.sourceFormat, kNativeFormat, head) != 1) {
        mp3ReleaseSource(source);
        file.reset();
        return 0;
    }
    source.conversionFlag = 1;
    return 1;
}

int mp3OpenFile(const std::string& path, RiffHandle& file, uint32_t& length, AudioSource& source) {
    Stream stream(std::fopen(path.c_str(), "rb"));
    if (!stream) {
        logIfEnabled("★mp3ﾌｧｲﾙｵｰﾌﾟﾝ失敗:" + path);
        return 0;
    }
    std::fseek(stream.get(), 0, SEEK_END);
    const long size = std::ftell(stream.get());
    std::fseek(stream.get(), 0, SEEK_SET);
    source.sourceBytesBound = size > 0 ? static_cast<uint32_t>(size) : 0;
    source.sourceDataSize = source.sourceBytesBound;

    if (mp3GetId3v1(source.id3v1, stream.get()) == 1) {
        source.sourceBytesBound -= static_cast<uint32_t>(kId3v1Bytes);
        source.id3v1Flag = 1;
    }
    Id3Tag tag;
    uint32_t tagBytes = 0;
    const bool hasId3v2 = mp3GetId3v2(tag, tagBytes, stream.get()) == 1;
    stream.reset();
    if (!hasId3v2) {
        return mp3OpenSeekMp3File(path, file, length, source, 0);
    }
    source.sourceBytesBound -= std::min(tagBytes, source.sourceBytesBound);
    int result = mp3OpenSeekMp3File(path, file, length, source, tagBytes);
    if (result != 1) {
        result = mp3OpenSeekMp3File(path, file, length, source, 0);
    }
    source.id3v2Flag = 1;
    source.id3Tag = std::move(tag);
    return result;
}

int mp3SeekPermyriad(RiffFile& file, uint32_t position, AudioSource& source) {
    source.acm.oldbyte = 0;
    source.acm2.oldbyte = 0;
    source.mx.cvtsize = 0;
    const auto offset = static_cast<int64_t>(source.sourceBytesBound * (position / 10000.0) + 0.5);
    return file.seek(offset, SEEK_SET) >= 0 ? 1 : 0;
}

}  // namespace tunebox
