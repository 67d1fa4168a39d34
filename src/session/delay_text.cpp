#include "session/delay_text.h"

#include <cstdlib>

namespace tunebox {

int32_t parseDelayText(const std::string& text) {
    return static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

}  // namespace tunebox
