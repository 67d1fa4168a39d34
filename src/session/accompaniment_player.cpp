#include "session/accompaniment_player.h"

#include "core/wave_format.h"
#include "platform/unavailable_audio.h"
#include "playback/block_observer.h"

namespace tunebox {
namespace {

// Three reads of 13 sectors fill one engine block.
constexpr uint8_t kSectorsPerRead = 13;
static_assert(kEngineBlockBytes == 3 * kSectorsPerRead * kSectorBytes);

class BlockCollector final : public BlockObserver {
  public:
    void onBlock(const uint8_t* bytes, uint32_t count, uint32_t last) override {
        if (!ended_) {
            played_.insert(played_.end(), bytes, bytes + count);
            ended_ = last == 1;
        }
        ++blocks_;
    }
    bool ended() const { return ended_; }
    uint32_t blocks() const { return blocks_; }
    std::vector<uint8_t> take() { return std::move(played_); }

  private:
    std::vector<uint8_t> played_;
    bool ended_ = false;
    uint32_t blocks_ = 0;
};

}  // namespace

void setUpAccompanimentPlayer(WaveCtl& player, const TrackEntry& track) {
    player.wavSetGeometry(kEngineBlockCount, kSectorsPerRead);
    applyPreset(player, track);
}

// Each change is given just before the block it applied from, as the take's
// player was given it between two fills; the stage is there from the start,
// as it was for a key that was to move.
std::optional<std::vector<uint8_t>> renderAccompaniment(const TrackEntry& track, uint32_t start,
                                                        const SourceOptions& options,
                                                        const KeyTempoChanges& changes) {
    UnavailableAudio noDevice("rendered without a device");
    BlockCollector collector;
    WaveCtl player(noDevice, &collector);
    player.setSourceOptions(options);
    TrackEntry played = track;
    played.keyTempoMayMove = track.keyTempoMayMove || !changes.empty();
    setUpAccompanimentPlayer(player, played);
    if (player.wavOpenFile(track.path, start, track.length) != 1) {
        return std::nullopt;
    }
    auto next = changes.begin();
    do {
        for (; next != changes.end() && next->block <= collector.blocks(); ++next) {
            player.wavSetKeyTempo(next->keyTempo);
        }
    } while (!collector.ended() && player.wavRenderNext() == 1);
    player.wavStop();
    return collector.take();
}

}  // namespace tunebox
