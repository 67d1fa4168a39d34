#pragma once
// The manual delay as the user types it.

#include <cstdint>
#include <string>

namespace tunebox {

// Read like "%ld": an optional sign and leading digits; anything else, or
// nothing, is 0.
int32_t parseDelayText(const std::string& text);

}  // namespace tunebox
