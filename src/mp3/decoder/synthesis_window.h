#pragma once
// The polyphase synthesis window D[0..511] of the standard.

#include <array>

namespace tunebox {

const std::array<double, 512>& synthesisWindow();

}  // namespace tunebox
