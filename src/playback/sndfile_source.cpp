#include "playback/sndfile_source.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/format_plausibility.h"
#include "platform/native_length.h"

namespace tunebox {
namespace {

constexpr int64_t kBlockFrames = 4096;
constexpr uint32_t kMostReadChannels = 2;

// What the reader delivers; the opener has refused more than two channels.
WaveFormat pcm16Format(const SndfileFacts& facts) {
    WaveFormat format;
    format.formatTag = kFormatPcm;
    format.channels = static_cast<uint16_t>(facts.channels);
    format.samplesPerSec = facts.sampleRate;
    format.bitsPerSample = 16;
    format.blockAlign = static_cast<uint16_t>(format.channels * 2);
    format.avgBytesPerSec = format.blockAlign * format.samplesPerSec;
    return format;
}

// The frames the file really yields. A header's count is trusted when its
// last frame can be read; a cut or damaged file (libsndfile reads a
// truncated FLAC file up to the cut and then stops short) is counted
// through instead, so that the length never promises what is not there.
// The count runs on a fresh reader, and another one then serves the
// source: the failed seek may have left the first one stuck.
int64_t decodableFrames(const std::string& path, std::unique_ptr<SndfileReader>& reader) {
    const int64_t claimed = reader->facts().frames;
    std::array<uint8_t, 2 * kMostReadChannels> last{};
    if (claimed > 0 && reader->seekFrame(claimed - 1) && reader->readFrames(last.data(), 1) == 1 &&
        reader->seekFrame(0)) {
        return claimed;
    }
    std::string error;
    reader = SndfileReader::open(path, error);
    if (!reader) {
        return 0;
    }
    std::vector<uint8_t> block(static_cast<std::size_t>(kBlockFrames) * 2 * kMostReadChannels);
    int64_t frames = 0;
    for (int64_t got = 1; got > 0; frames += got) {
        got = reader->readFrames(block.data(), kBlockFrames);
    }
    reader = SndfileReader::open(path, error);
    return reader ? frames : 0;
}

// The playing time of `frames` at `rate` in native-PCM bytes, whole frames
// rounded to the nearest.
double nativeBytesOf(int64_t frames, uint32_t rate) {
    return std::floor(static_cast<double>(frames) * kNativeSampleRate / rate + 0.5) *
           kNativeFrameBytes;
}

std::string kindText(AudioFileKind kind) {
    return std::string(audioFileKindName(kind));
}

}  // namespace

SourceOpening SndfileSource::open(const std::string& path, AudioFileKind kind) {
    std::string error;
    auto reader = SndfileReader::open(path, error);
    if (!reader) {
        return {nullptr, kindText(kind) + " file cannot be read (" + error + ")"};
    }
    const SndfileFacts facts = reader->facts();
    if (facts.channels > kMostReadChannels) {
        return {nullptr, kindText(kind) + " file with " + std::to_string(facts.channels) +
                             " channels is not supported (1 or 2)"};
    }
    if (std::string implausible = implausibleFormatReason(pcm16Format(facts));
        !implausible.empty()) {
        return {nullptr, implausible};
    }
    const int64_t frames = decodableFrames(path, reader);
    if (frames <= 0) {
        return {nullptr, kindText(kind) + " file holds no audio that can be decoded"};
    }
    const double nativeBytes = nativeBytesOf(frames, facts.sampleRate);
    const std::optional<uint32_t> length = fittingNativeLength(nativeBytes);
    if (!length) {
        return {nullptr, tooLongReason(nativeBytes)};
    }
    auto source = std::make_unique<SndfileSource>(std::move(reader), kind, *length);
    if (!source->isNative() && !source->openConverter()) {
        return {nullptr, kindText(kind) + " file's format cannot be converted"};
    }
    return {std::move(source), {}};
}

SndfileSource::SndfileSource(std::unique_ptr<SndfileReader> reader, AudioFileKind kind,
                             uint32_t length)
    : reader_(std::move(reader)),
      kind_(kind),
      format_(pcm16Format(reader_->facts())),
      length_(length) {}

bool SndfileSource::isNative() const {
    return sameFormat(format_, kNativeFormat);
}

bool SndfileSource::openConverter() {
    std::array<uint8_t, kCodecMaxFormatBytes> record{};
    storeWaveFormat(format_, record);
    return codecStreamOpen(converter_, record, kNativeFormat) == kCodecOk;
}

bool SndfileSource::refill() {
    decoded_.resize(static_cast<std::size_t>(kBlockFrames) * format_.blockAlign);
    const int64_t frames = reader_->readFrames(decoded_.data(), kBlockFrames);
    const auto bytes = static_cast<uint32_t>(frames) * format_.blockAlign;
    pendingAt_ = 0;
    if (!converter_) {
        pending_.assign(decoded_.begin(), decoded_.begin() + bytes);
        drained_ = frames == 0;
        return true;
    }
    CodecStreamHeader header;
    header.source = decoded_.data();
    header.sourceLength = bytes;
    pending_.resize(converter_->destinationSizeFor(bytes));
    header.destination = pending_.data();
    header.destinationLength = static_cast<uint32_t>(pending_.size());
    // Once the file has given everything the resampler hands out its tail.
    const uint32_t flags = frames == 0 ? kCodecConvertEnd : 0;
    if (converter_->convert(header, flags) != kCodecOk) {
        pending_.clear();
        return false;
    }
    pending_.resize(header.destinationLengthUsed);
    drained_ = frames == 0 && pending_.empty();
    return true;
}

SourceBlock SndfileSource::read(uint8_t* destination, uint32_t requested) {
    SourceBlock block;
    const uint32_t wanted = std::min(requested, length_ - std::min(delivered_, length_));
    while (block.count < wanted) {
        if (pendingAt_ < pending_.size()) {
            const auto take = static_cast<uint32_t>(
                std::min<std::size_t>(wanted - block.count, pending_.size() - pendingAt_));
            std::memcpy(destination + block.count, pending_.data() + pendingAt_, take);
            pendingAt_ += take;
            block.count += take;
        } else if (drained_) {
            break;
        } else if (!refill()) {
            block.failed = true;
            break;
        }
    }
    delivered_ += block.count;
    block.ended = block.count < requested;
    return block;
}

bool SndfileSource::seek(uint32_t position, uint32_t /*permyriad*/) {
    const uint32_t nativeFrame = std::min(position, length_) / kNativeFrameBytes;
    const auto frame = static_cast<int64_t>(std::floor(
        static_cast<double>(nativeFrame) * format_.samplesPerSec / kNativeSampleRate + 0.5));
    if (!reader_->seekFrame(frame)) {
        return false;
    }
    delivered_ = nativeFrame * kNativeFrameBytes;
    pending_.clear();
    pendingAt_ = 0;
    drained_ = false;
    // A resampler keeps the samples around its position; a fresh one starts
    // from the new place.
    return isNative() || openConverter();
}

SourceDescription SndfileSource::describe() const {
    SourceDescription description;
    description.format = format_;
    description.converted = !isNative();
    description.resampled = format_.samplesPerSec != kNativeSampleRate;
    description.coded = CodedFileFacts{kindText(kind_), reader_->facts().codec, reader_->tags()};
    return description;
}

}  // namespace tunebox
