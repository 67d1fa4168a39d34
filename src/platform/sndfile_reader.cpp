#include "platform/sndfile_reader.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "core/little_endian.h"

namespace tunebox {
namespace {

struct TagKind {
    int id;
    const char* name;
};

constexpr std::array kTagKinds{
    TagKind{SF_STR_TITLE, "title"},       TagKind{SF_STR_ARTIST, "artist"},
    TagKind{SF_STR_ALBUM, "album"},       TagKind{SF_STR_DATE, "date"},
    TagKind{SF_STR_GENRE, "genre"},       TagKind{SF_STR_TRACKNUMBER, "track"},
    TagKind{SF_STR_COMMENT, "comment"},   TagKind{SF_STR_COPYRIGHT, "copyright"},
    TagKind{SF_STR_SOFTWARE, "software"}, TagKind{SF_STR_LICENSE, "license"},
};

std::string subtypeName(int format) {
    SF_FORMAT_INFO info{};
    info.format = format & SF_FORMAT_SUBMASK;
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) != 0 || info.name == nullptr) {
        return "unknown encoding";
    }
    return info.name;
}

// Full scale is 32,768 both ways, as libsndfile normalises integer samples,
// so 16-bit data comes back exactly as it was stored.
int16_t toSample(float value) {
    const float scaled = std::nearbyint(value * 32768.0F);
    return static_cast<int16_t>(std::clamp(scaled, -32768.0F, 32767.0F));
}

}  // namespace

struct SndfileReader::Handle {
    SNDFILE* file = nullptr;
    ~Handle() {
        if (file != nullptr) {
            sf_close(file);
        }
    }
};

SndfileReader::SndfileReader(std::unique_ptr<Handle> handle, SndfileFacts facts)
    : handle_(std::move(handle)), facts_(std::move(facts)) {}

SndfileReader::~SndfileReader() = default;

std::unique_ptr<SndfileReader> SndfileReader::open(const std::string& path, std::string& error) {
    SF_INFO info{};
    auto handle = std::make_unique<Handle>();
    handle->file = sf_open(path.c_str(), SFM_READ, &info);
    if (handle->file == nullptr) {
        error = sf_strerror(nullptr);
        // The phrase goes inside a sentence of ours.
        while (!error.empty() && (error.back() == '.' || error.back() == ' ')) {
            error.pop_back();
        }
        return nullptr;
    }
    if (info.channels <= 0 || info.samplerate <= 0) {
        error = "no audio stream";
        return nullptr;
    }
    SndfileFacts facts;
    facts.codec = subtypeName(info.format);
    facts.sampleRate = static_cast<uint32_t>(info.samplerate);
    facts.channels = static_cast<uint32_t>(info.channels);
    facts.frames = info.frames;
    return std::unique_ptr<SndfileReader>(new SndfileReader(std::move(handle), std::move(facts)));
}

std::vector<SndfileTag> SndfileReader::tags() const {
    std::vector<SndfileTag> found;
    for (const TagKind& kind : kTagKinds) {
        const char* value = sf_get_string(handle_->file, kind.id);
        if (value != nullptr && *value != '\0') {
            found.push_back({kind.name, value});
        }
    }
    return found;
}

int64_t SndfileReader::readFrames(uint8_t* destination, int64_t frames) {
    const auto samples = static_cast<std::size_t>(frames) * facts_.channels;
    if (floats_.size() < samples) {
        floats_.resize(samples);
    }
    const sf_count_t got = sf_readf_float(handle_->file, floats_.data(), frames);
    if (got <= 0) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(got) * facts_.channels;
    for (std::size_t i = 0; i < count; ++i) {
        storeLe16(destination + 2 * i, static_cast<uint16_t>(toSample(floats_[i])));
    }
    return got;
}

bool SndfileReader::seekFrame(int64_t frame) {
    return sf_seek(handle_->file, frame, SEEK_SET) == frame;
}

}  // namespace tunebox
