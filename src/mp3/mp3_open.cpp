#include "mp3/mp3_open.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "core/diagnostic_log.h"
#include "core/little_endian.h"
#include "mp3/conversion_state.h"
#include "mp3/decoder/xing_tag.h"
#include "mp3/first_frame.h"
#include "mp3/mpeg_header_walk.h"
#include "platform/format_plausibility.h"
#include "platform/native_length.h"

namespace tunebox {
namespace {

constexpr std::size_t kStageBlockSizeOffset = 24;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, FileCloser>;

// The samples' playing time in native-PCM bytes, in double precision: a
// hostile header can claim more than a 32-bit length holds, and such a
// length is refused, never wrapped.
double lengthFromSamples(uint64_t samples, const MpegHeader& header) {
    return static_cast<double>(samples) / header.sampleRate * kNativeBytesPerSecond;
}

uint32_t averageKbps(uint64_t bytes, uint64_t samples, const MpegHeader& header) {
    if (samples == 0) {
        return header.bitRate;
    }
    const double seconds = static_cast<double>(samples) / header.sampleRate;
    return static_cast<uint32_t>(static_cast<double>(bytes) * 8 / seconds / 1000 + 0.5);
}

// The length counted by the "Xing"/"Info" frame. An encoder's delay and
// padding are left out, as a gapless decoder leaves them out: what is heard
// is the audio that went into the encoder.
double lengthFromXing(const XingTag& xing, const MpegHeader& header) {
    const uint64_t coded = static_cast<uint64_t>(xing.frames) * header.samplesPerFrame;
    const uint64_t gap = xing.gapless ? uint64_t{xing.encoderDelay} + xing.encoderPadding : 0;
    return lengthFromSamples(coded > gap ? coded - gap : coded, header);
}

// Works out the length and the average bit rate from the frame count the
// first frame carries, else from walking the frames. A walk counts the frames'
// samples rather than timing the bytes at the first frame's rate, so that a
// variable rate, junk between frames or a cut last frame give the length a
// decoder plays. The average over a counted stream includes the tag's own
// frame, as other players show it; an "Info" stream keeps its one rate.
double measureStream(RiffFile& file, int64_t firstFrame, int64_t audioEnd,
                     std::span<const uint8_t> frame, Mp3StreamFacts& facts) {
    const MpegHeader& header = facts.firstHeader;
    facts.xing = XingTag{};
    readXingTag(frame, facts.xing);
    if (facts.xing.frames != 0) {
        const uint64_t bytes = facts.xing.streamBytes != 0
                                   ? facts.xing.streamBytes
                                   : static_cast<uint64_t>(audioEnd - firstFrame);
        facts.averageBitRate =
            facts.xing.constantBitRate
                ? header.bitRate
                : averageKbps(bytes, uint64_t{facts.xing.frames} * header.samplesPerFrame, header);
        return lengthFromXing(facts.xing, header);
    }
    const MpegFrameWalk walk = mpegWalkFrames(file, firstFrame, audioEnd, header);
    facts.averageBitRate =
        walk.constantBitRate ? header.bitRate : averageKbps(walk.frameBytes, walk.samples, header);
    return lengthFromSamples(walk.samples, header);
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

// Where the audio ends: the file's end, or an ID3v1 tag's start.
int64_t audioEndOf(RiffFile& file, const ConversionState& source) {
    const int64_t size = file.seek(0, SEEK_END);
    return source.id3v1Flag == 1 ? size - static_cast<int64_t>(kId3v1Bytes) : size;
}

// Opens the built-in decoder or a codec stream as the first stage. Returns
// which opened (1 built-in, 0 codec) through `ownDecoder`; false for neither.
bool openFirstStage(ConversionState& source, std::span<const uint8_t> sourceFormat,
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

void mp3ReleaseSource(ConversionState& source) {
    source.mx = BuiltinDecoderState{};
    acmStageRelease(source.acm);
    acmStageRelease(source.acm2);
}

int mp3SelectDecoder(ConversionState& source, std::span<const uint8_t> sourceFormat,
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
                       ConversionState& source, uint32_t startOffset) {
    file = RiffFile::openForRead(path);
    if (!file) {
        logIfEnabled("★ﾌｧｲﾙｵｰﾌﾟﾝ失敗:mp3OpenSeekMp3File");
        return 0;
    }
    const int64_t audioEnd = audioEndOf(*file, source);
    std::vector<uint8_t> head(kFirstFrameSearchBytes);
    const int64_t got = file->seek(startOffset, SEEK_SET) < 0
                            ? -1
                            : file->read(head.data(), kFirstFrameSearchBytes);
    if (got <= 0) {
        file.reset();
        logIfEnabled("★ﾌｧｲﾙread失敗:mp3OpenSeekMp3File");
        return 0;
    }
    const int64_t audioInHead = std::clamp<int64_t>(audioEnd - startOffset, 0, got);
    head.resize(static_cast<std::size_t>(audioInHead));
    const BufferEnd end =
        startOffset + audioInHead == audioEnd ? BufferEnd::endOfAudio : BufferEnd::moreFollows;
    MpegLayer3Format format;
    MpegHeader header;
    uint32_t frameOffset = 0;
    if (mp3GetHeader(head, format, header, frameOffset, end) != 1) {
        file.reset();
        logIfEnabled("★mp3GetHeader失敗:mp3OpenSeekMp3File");
        return 0;
    }
    const int64_t firstFrame = static_cast<int64_t>(startOffset) + frameOffset;
    const auto frame = std::span<const uint8_t>(head).subspan(frameOffset);
    source.mp3Facts.firstHeader = header;
    const double nativeBytes = measureStream(*file, firstFrame, audioEnd, frame, source.mp3Facts);
    source.refusal = refusalOf(format.wave, nativeBytes);
    if (!source.refusal.empty()) {
        file.reset();
        return 0;
    }
    length = fittingNativeLength(nativeBytes).value_or(0);
    file->seek(firstFrame, SEEK_SET);
    source.outputLength = length;
    const auto record = encodeLayer3Format(format);
    std::copy(record.begin(), record.end(), source.sourceFormat.begin());
    source.outputFormat = format.wave;

    // The decoders see the stream from the confirmed frame on, so that they
    // start where the opener did rather than at a sync word in junk before it.
    if (mp3SelectDecoder(source, source.sourceFormat, kNativeFormat, frame) != 1) {
        mp3ReleaseSource(source);
        file.reset();
        return 0;
    }
    return 1;
}

int mp3OpenFile(const std::string& path, RiffHandle& file, uint32_t& length,
                ConversionState& source) {
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

int mp3SeekPermyriad(RiffFile& file, uint32_t position, ConversionState& source) {
    source.acm.oldbyte = 0;
    source.acm2.oldbyte = 0;
    source.mx.cvtsize = 0;
    const auto offset = static_cast<int64_t>(source.sourceBytesBound * (position / 10000.0) + 0.5);
    return file.seek(offset, SEEK_SET) >= 0 ? 1 : 0;
}

}  // namespace tunebox
