#include "playback/converted_source.h"

#include <utility>

#include "mp3/acm_read.h"
#include "mp3/id3_v1_fields.h"
#include "mp3/mp3_open.h"

namespace tunebox {
namespace {

std::optional<Id3Tag> tagsOf(const ConversionState& state) {
    if (state.id3v2Flag == 0 && state.id3v1Flag == 0) {
        return std::nullopt;
    }
    Id3Tag tag = state.id3v2Flag == 1 ? state.id3Tag : Id3Tag{};
    if (state.id3v1Flag == 1) {
        id3FillFromV1(tag, state.id3v1);
    }
    return tag;
}

}  // namespace

ConvertedSource::ConvertedSource(RiffHandle file, std::unique_ptr<ConversionState> state,
                                 uint32_t length)
    : file_(std::move(file)), state_(std::move(state)), length_(length) {}

ConvertedSource::~ConvertedSource() {
    file_.reset();
    mp3ReleaseSource(*state_);
}

SourceBlock ConvertedSource::read(uint8_t* destination, uint32_t requested) {
    SourceBlock block;
    uint32_t endFlag = 0;
    block.failed = mp3AcmRead(*file_, destination, block.count, requested, *state_, endFlag) != 1;
    block.ended = endFlag == 1;
    return block;
}

bool ConvertedSource::seek(uint32_t /*position*/, uint32_t permyriad) {
    return mp3SeekPermyriad(*file_, permyriad, *state_) == 1;
}

SourceDescription ConvertedSource::describe() const {
    SourceDescription description;
    description.format = state_->outputFormat;
    description.converted = true;
    description.builtinDecoder = state_->ownDecoderFlag == 1;
    description.resampled = state_->conversionStages == 2;
    description.lostFrames = state_->mx.lostFrames;
    // Only the MP3 opener reads a first frame header; MPEG data in a WAVE
    // file carries its facts in the format chunk.
    if (state_->mp3Facts.firstHeader.sampleRate != 0) {
        description.mp3 = state_->mp3Facts;
    }
    description.tags = tagsOf(*state_);
    return description;
}

std::optional<WaveFormat> ConvertedSource::keepDecoderOutput() {
    state_->conversionStages = 1;
    return acmDestinationFormat(state_->acm);
}

}  // namespace tunebox
