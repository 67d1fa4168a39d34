#pragma once
// Someone the player shows every block it fills: after the effect stage and
// the end decision, before the block goes into the ring, so exactly the bytes
// the device will get, with their count and last flag. Called on the filling
// thread (the owner's or the timer's) with the player's lock held: it must
// not call back into the player.

#include <cstdint>

namespace tunebox {

class BlockObserver {
  public:
    virtual void onBlock(const uint8_t* bytes, uint32_t count, uint32_t last) = 0;

  protected:
    ~BlockObserver() = default;
};

}  // namespace tunebox
