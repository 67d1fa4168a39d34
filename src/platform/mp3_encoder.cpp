#include "platform/mp3_encoder.h"

#include <lame/lame.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "core/wave_format.h"

namespace tunebox {
namespace {

struct LameCloser {
    void operator()(lame_global_flags* flags) const { lame_close(flags); }
};
using LameHandle = std::unique_ptr<lame_global_flags, LameCloser>;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// LAME's documented worst case for one call: 1.25 × samples + 7200 bytes.
std::size_t outputBound(std::size_t frames) {
    return frames + frames / 4 + 7200;
}

// ID3v2 text frames take UTF-16 with a byte-order mark through LAME's API.
std::vector<unsigned short> utf16WithBom(const std::string& utf8) {
    std::vector<unsigned short> text{0xFEFF};
    for (std::size_t at = 0; at < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[at]);
        const int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        char32_t point = extra == 0 ? lead : lead & (0x3F >> extra);
        ++at;
        for (int i = 0; i < extra && at < utf8.size(); ++i, ++at) {
            point = (point << 6) | (static_cast<unsigned char>(utf8[at]) & 0x3F);
        }
        if (point >= 0x10000) {
            point -= 0x10000;
            text.push_back(static_cast<unsigned short>(0xD800 + (point >> 10)));
            text.push_back(static_cast<unsigned short>(0xDC00 + (point & 0x3FF)));
        } else {
            text.push_back(static_cast<unsigned short>(point));
        }
    }
    text.push_back(0);
    return text;
}

void setText(lame_global_flags* flags, const char* frame, const std::string& value) {
    if (!value.empty()) {
        id3tag_set_textinfo_utf16(flags, frame, utf16WithBom(value).data());
    }
}

void applyTags(lame_global_flags* flags, const ExportTags& tags) {
    id3tag_init(flags);
    // ID3v1 cannot hold a title's UTF-8 and cuts it at 30 bytes.
    id3tag_v2_only(flags);
    setText(flags, "TIT2", tags.title);
    setText(flags, "TPE1", tags.artist);
    // ID3v2.3 keeps the year alone; the rest of the date has no frame there.
    id3tag_set_year(flags, tags.date.substr(0, 4).c_str());
}

class Mp3Encoder final : public AudioEncoder {
  public:
    Mp3Encoder(LameHandle lame, FileHandle file, long audioStart)
        : lame_(std::move(lame)), file_(std::move(file)), audioStart_(audioStart) {}

    std::string write(std::span<const int16_t> samples) override {
        const std::size_t frames = samples.size() / 2;
        if (frames == 0) {
            return {};
        }
        encoded_.resize(outputBound(frames));
        // LAME's interleaved entry point takes a non-const pointer but only reads.
        const int made = lame_encode_buffer_interleaved(
            lame_.get(), const_cast<short*>(samples.data()), static_cast<int>(frames),
            encoded_.data(), static_cast<int>(encoded_.size()));
        return store(made);
    }

    std::string finish() override {
        encoded_.resize(outputBound(0));
        if (std::string problem = store(
                lame_encode_flush(lame_.get(), encoded_.data(), static_cast<int>(encoded_.size())));
            !problem.empty()) {
            return problem;
        }
        // The info frame was written as a placeholder; now the frame count,
        // the delay and the padding are known.
        const std::size_t tagBytes =
            lame_get_lametag_frame(lame_.get(), encoded_.data(), encoded_.size());
        if (std::fseek(file_.get(), audioStart_, SEEK_SET) != 0) {
            return std::strerror(errno);
        }
        if (std::string problem = writeBytes(tagBytes); !problem.empty()) {
            return problem;
        }
        if (std::fclose(file_.release()) != 0) {
            return std::strerror(errno);
        }
        return {};
    }

  private:
    std::string store(int made) {
        if (made < 0) {
            return "the MP3 encoder failed (LAME error " + std::to_string(made) + ")";
        }
        return writeBytes(static_cast<std::size_t>(made));
    }

    std::string writeBytes(std::size_t count) {
        if (count > 0 && std::fwrite(encoded_.data(), 1, count, file_.get()) != count) {
            return std::strerror(errno);
        }
        return {};
    }

    LameHandle lame_;
    FileHandle file_;
    long audioStart_;  // where the first frame, LAME's info tag, begins
    std::vector<unsigned char> encoded_;
};

LameHandle configuredLame(const EncoderSettings& settings) {
    LameHandle lame(lame_init());
    if (!lame) {
        return nullptr;
    }
    lame_set_in_samplerate(lame.get(), static_cast<int>(kNativeSampleRate));
    lame_set_num_channels(lame.get(), 2);
    lame_set_VBR(lame.get(), vbr_default);
    lame_set_VBR_quality(lame.get(), static_cast<float>(settings.quality));
    lame_set_bWriteVbrTag(lame.get(), 1);
    // The ID3v2 tag is written here, so that its length is known when the
    // info frame behind it is filled in at the end.
    lame_set_write_id3tag_automatic(lame.get(), 0);
    applyTags(lame.get(), settings.tags);
    if (lame_init_params(lame.get()) < 0) {
        return nullptr;
    }
    return lame;
}

}  // namespace

std::unique_ptr<AudioEncoder> openMp3Encoder(const std::string& path,
                                             const EncoderSettings& settings, std::string& error) {
    LameHandle lame = configuredLame(settings);
    if (!lame) {
        error = "the MP3 encoder cannot be set up";
        return nullptr;
    }
    FileHandle file(std::fopen(path.c_str(), "wb"));
    if (!file) {
        error = std::strerror(errno);
        return nullptr;
    }
    std::vector<unsigned char> tag(lame_get_id3v2_tag(lame.get(), nullptr, 0));
    const std::size_t tagBytes = lame_get_id3v2_tag(lame.get(), tag.data(), tag.size());
    if (tagBytes > 0 && std::fwrite(tag.data(), 1, tagBytes, file.get()) != tagBytes) {
        error = std::strerror(errno);
        return nullptr;
    }
    return std::make_unique<Mp3Encoder>(std::move(lame), std::move(file),
                                        static_cast<long>(tagBytes));
}

}  // namespace tunebox
