#pragma once
// The accompaniment player of a recording: a WaveCtl that also puts a copy of
// every block it fills (after the effect stage, with its byte count and last
// flag, exactly as the device gets it) into its MixBuf ring. The capture
// engine takes those blocks with get() on its own thread and pairs them with
// wavGetDevicePosition() to line the voice up with what was heard.

#include "core/ling_buffer.h"
#include "playback/wave_ctl.h"

namespace tunebox {

class MixingWaveCtl final : public WaveCtl {
  public:
    MixingWaveCtl() = default;
    // Stops first, so that no tick fills into a ring that is going away.
    ~MixingWaveCtl() override;

    // The copy ring. Allocate it (allocateMixBuf with the player's buffer
    // size and count) before wavOpenFile; a ring that was never allocated
    // refuses every block, and each refusal is logged.
    LingBuffer& mixBuf() { return mixBuf_; }

  protected:
    int prefill() override;
    int fillOne() override;

  private:
    static void write1Buf(WaveCtl& player, const uint8_t* bytes, uint32_t count, uint32_t last);

    LingBuffer mixBuf_;
};

}  // namespace tunebox
