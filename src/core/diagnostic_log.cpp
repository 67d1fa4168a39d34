#include "core/diagnostic_log.h"

#include <time.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>

namespace tunebox {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

struct LogState {
    std::mutex mutex;  // two writers at once would lose a header update
    std::filesystem::path path;
    LogHeader header;
    int enabled = 0;
};

LogState& state() {
    static LogState instance;
    return instance;
}

std::array<char, 12> encodeHeader(const LogHeader& header) {
    std::array<char, 12> bytes{};
    const int32_t fields[3] = {header.mark, header.nextSlot, header.count};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto value = static_cast<uint32_t>(fields[i]);
        for (std::size_t b = 0; b < 4; ++b) {
            bytes[i * 4 + b] = static_cast<char>((value >> (8 * b)) & 0xFF);
        }
    }
    return bytes;
}

LogHeader decodeHeader(const std::array<unsigned char, 12>& bytes) {
    int32_t fields[3];
    for (std::size_t i = 0; i < 3; ++i) {
        uint32_t value = 0;
        for (std::size_t b = 0; b < 4; ++b) {
            value |= static_cast<uint32_t>(bytes[i * 4 + b]) << (8 * b);
        }
        fields[i] = static_cast<int32_t>(value);
    }
    return {fields[0], fields[1], fields[2]};
}

bool writeHeader(std::FILE* file, const LogHeader& header) {
    const auto bytes = encodeHeader(header);
    return std::fseek(file, 0, SEEK_SET) == 0 &&
           std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

// Reads the header, creating the file with {1, 1, 0} when it is missing.
bool readHeader(LogState& log) {
    if (log.path.empty()) {
        return false;
    }
    File file(std::fopen(log.path.c_str(), "rb"));
    if (!file) {
        std::error_code error;
        if (std::filesystem::exists(log.path, error)) {
            return false;
        }
        File created(std::fopen(log.path.c_str(), "wb"));
        if (!created || !writeHeader(created.get(), LogHeader{})) {
            return false;
        }
        log.header = LogHeader{};
        return true;
    }
    std::array<unsigned char, 12> bytes{};
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
        return false;
    }
    log.header = decodeHeader(bytes);
    return true;
}

std::string timeStamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[kLogStampBytes + 1] = {};
    std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S ", &local);
    std::string stamp(text);
    stamp.resize(kLogStampBytes, ' ');
    return stamp;
}

int writeRecord(LogState& log, std::string_view message) {
    if (!readHeader(log)) {
        return kLogHeaderFailed;
    }
    const int32_t newCount = log.header.count < 1001 ? log.header.count + 1 : 1000;
    const int32_t newNext = log.header.nextSlot < kLogLastSlot ? log.header.nextSlot + 1 : 1;

    const std::string record = "\r\n" + timeStamp() + logMessageField(message);
    File file(std::fopen(log.path.c_str(), "r+b"));
    if (!file) {
        return kLogRecordFailed;
    }
    const long offset = static_cast<long>(log.header.nextSlot) * static_cast<long>(kLogSlotBytes);
    if (std::fseek(file.get(), offset, SEEK_SET) != 0 ||
        std::fwrite(record.data(), 1, record.size(), file.get()) != record.size()) {
        return kLogRecordFailed;
    }
    log.header.nextSlot = newNext;
    log.header.count = newCount;
    if (!writeHeader(file.get(), log.header) || std::fflush(file.get()) != 0) {
        return kLogHeaderFailed;
    }
    return kLogOk;
}

}  // namespace

std::string logMessageField(std::string_view message) {
    std::size_t cut = std::min(message.size(), kLogMessageBytes);
    if (cut < message.size()) {
        // Never leave half a UTF-8 character: back off over continuation bytes.
        while (cut > 0 && (static_cast<unsigned char>(message[cut]) & 0xC0) == 0x80) {
            --cut;
        }
    }
    std::string field(message.substr(0, cut));
    field.resize(kLogMessageBytes, ' ');
    return field;
}

void logInit(int enabled) {
    LogState& log = state();
    const std::lock_guard lock(log.mutex);
    log.enabled = enabled;
    std::error_code error;
    const auto directory = std::filesystem::current_path(error);
    log.path = error ? std::filesystem::path{} : directory / "tunebox.log";
    if (enabled != 0) {
        readHeader(log);
    }
}

int logAlways(std::string_view message) {
    LogState& log = state();
    const std::lock_guard lock(log.mutex);
    return writeRecord(log, message);
}

int logIfEnabled(std::string_view message) {
    LogState& log = state();
    const std::lock_guard lock(log.mutex);
    if (log.enabled == 0) {
        return kLogOk;
    }
    return writeRecord(log, message);
}

void logSetSwitch(int enabled) {
    LogState& log = state();
    const std::lock_guard lock(log.mutex);
    log.enabled = enabled;
}

std::filesystem::path logPath() {
    LogState& log = state();
    const std::lock_guard lock(log.mutex);
    return log.path;
}

}  // namespace tunebox
