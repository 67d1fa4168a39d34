#pragma once
// The accompaniment player of a recording: a WaveCtl that shows every block
// it fills to its MixBuf writer, and the feed the capture engine reads the
// copies and the output position from.

#include "platform/audio_backend.h"
#include "playback/mix_buf_writer.h"
#include "playback/playback_feed.h"
#include "playback/wave_ctl.h"

namespace tunebox {

class MixingWaveCtl final : public WaveCtl, public PlaybackFeed {
  public:
    // The player keeps only the writer's address until it first fills.
    explicit MixingWaveCtl(AudioBackend& backend) : WaveCtl(backend, &copies_) {}
    // Stops first, so that no tick fills into a writer that is going away.
    ~MixingWaveCtl() { wavStop(); }
    MixingWaveCtl(const MixingWaveCtl&) = delete;
    MixingWaveCtl& operator=(const MixingWaveCtl&) = delete;

    LingBuffer& mixBuf() override { return copies_.mixBuf(); }
    uint32_t devicePosition() override { return wavGetDevicePosition(); }
    OutputStalls deviceStalls(uint32_t first) override { return wavGetDeviceStalls(first); }
    KeyTempoChanges keyTempoChanges() override { return wavGetKeyTempoChanges(); }

  private:
    MixBufWriter copies_;
};

}  // namespace tunebox
