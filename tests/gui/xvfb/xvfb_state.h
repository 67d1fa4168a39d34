#pragma once
// Whether the tests have their X server, set once in main.

namespace tunebox::test {

enum class XvfbState { kMissing, kFailed, kRunning };
inline XvfbState xvfbState = XvfbState::kMissing;

}  // namespace tunebox::test
