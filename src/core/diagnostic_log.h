#pragma once
// The diagnostic log: "tunebox.log", a file of 1001 fixed 256-byte slots.
// Slot 0 carries a 12-byte header {mark 1, next slot 1..1000, record count};
// slots 1..1000 hold one record each: CR LF, a 20-character time stamp and
// the message padded with spaces. It never grows, so it can stay on forever.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tunebox {

inline constexpr std::size_t kLogSlotBytes = 256;
inline constexpr std::size_t kLogStampBytes = 20;
inline constexpr std::size_t kLogMessageBytes = kLogSlotBytes - 2 - kLogStampBytes;  // 234
inline constexpr int32_t kLogLastSlot = 1000;

enum LogResult : int { kLogOk = 0, kLogHeaderFailed = 1, kLogRecordFailed = 3 };

struct LogHeader {
    int32_t mark = 1;
    int32_t nextSlot = 1;
    int32_t count = 0;
};

// Sets the switch and fixes the log path to the current directory's
// "tunebox.log". With the switch on, the header is read (or created) at once.
void logInit(int enabled);

// Writes a record whatever the switch says.
int logAlways(std::string_view message);

// Writes a record only while the switch is on; reports success otherwise.
int logIfEnabled(std::string_view message);

void logSetSwitch(int enabled);

// The path fixed by logInit; empty before it.
std::filesystem::path logPath();

// The message area of a record: at most 234 bytes of UTF-8 without a split
// character, padded with spaces to 234 bytes.
std::string logMessageField(std::string_view message);

}  // namespace tunebox
