#include "mp3/mpeg_header_walk.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

#include "mp3/mpeg_header_chain.h"

namespace tunebox {
namespace {

constexpr int64_t kBlockBytes = 1 << 20;
// Room for a confirmation's frames: the longest frame of any layer is 2,881
// bytes (Layer II at 384 kbit/s and 32 kHz, or Layer I with padding).
constexpr int64_t kChainBytes = kAgreeingHeaders * 2881;

// A window on the file, refilled one large block at a time.
class BlockWindow {
  public:
    BlockWindow(RiffFile& file, int64_t end) : file_(file), end_(end) {}

    // The bytes from `position` on: at least `want` of them, or all that are
    // left before the end of the audio.
    std::span<const uint8_t> at(int64_t position, int64_t want) {
        const int64_t needed = std::min(position + want, end_);
        if (position < start_ || needed > start_ + static_cast<int64_t>(bytes_.size())) {
            fill(position);
        }
        return std::span<const uint8_t>(bytes_).subspan(
            static_cast<std::size_t>(position - start_));
    }

    bool reachesEnd(std::span<const uint8_t> bytes) const {
        return bytes.data() + bytes.size() == bytes_.data() + bytes_.size() &&
               start_ + static_cast<int64_t>(bytes_.size()) == end_;
    }

  private:
    void fill(int64_t position) {
        start_ = position;
        bytes_.resize(
            static_cast<std::size_t>(std::clamp<int64_t>(end_ - position, 0, kBlockBytes)));
        const int64_t got = file_.seek(position, SEEK_SET) == position
                                ? file_.read(bytes_.data(), static_cast<int64_t>(bytes_.size()))
                                : 0;
        bytes_.resize(static_cast<std::size_t>(std::max<int64_t>(got, 0)));
    }

    RiffFile& file_;
    int64_t end_;
    int64_t start_ = 0;
    std::vector<uint8_t> bytes_;
};

// The next confirmed frame of the stream after `position`, no further than
// `limit`.
std::optional<int64_t> nextConfirmedFrame(BlockWindow& window, int64_t position, int64_t limit,
                                          const MpegHeader& first) {
    const auto bytes = window.at(position, limit - position + kChainBytes);
    const BufferEnd end = window.reachesEnd(bytes) ? BufferEnd::endOfAudio : BufferEnd::moreFollows;
    const auto searched = static_cast<std::size_t>(std::max<int64_t>(limit - position, 0));
    for (std::size_t at = 1; at < std::min(searched, bytes.size()); ++at) {
        MpegHeader header;
        if (mpegParseHeader(bytes.subspan(at), header) && mpegSameStream(first, header) &&
            mpegChainConfirmed(bytes, at, header, end)) {
            return position + static_cast<int64_t>(at);
        }
    }
    return std::nullopt;
}

}  // namespace

MpegFrameWalk mpegWalkFrames(RiffFile& file, int64_t firstFrame, int64_t audioEnd,
                             const MpegHeader& first) {
    MpegFrameWalk walk;
    BlockWindow window(file, audioEnd);
    int64_t position = firstFrame;
    int64_t lastEnd = firstFrame;
    while (position < audioEnd) {
        const auto bytes = window.at(position, kChainBytes);
        MpegHeader header;
        if (mpegParseHeader(bytes, header) && mpegSameStream(first, header)) {
            const auto length = static_cast<uint32_t>(header.frameBytes());
            if (length > bytes.size()) {
                break;
            }
            ++walk.frames;
            walk.samples += header.samplesPerFrame;
            walk.frameBytes += length;
            walk.constantBitRate = walk.constantBitRate && header.bitRate == first.bitRate;
            position += length;
            lastEnd = position;
            continue;
        }
        const auto next = nextConfirmedFrame(window, position,
                                             std::min(lastEnd + kLongestFrameGap, audioEnd), first);
        if (!next) {
            break;
        }
        position = *next;
    }
    return walk;
}

}  // namespace tunebox
