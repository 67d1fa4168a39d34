#include "mp3/decoder/mpeg_audio_decoder.h"

#include <algorithm>

#include "mp3/decoder/frame_crc.h"
#include "mp3/decoder/huffman_decoder.h"
#include "mp3/decoder/layer3_side_info.h"
#include "mp3/decoder/requantizer.h"
#include "mp3/decoder/scale_factor_bands.h"
#include "mp3/decoder/spectrum_reorder.h"
#include "mp3/decoder/stereo_processor.h"
#include "mp3/decoder/subband_frame.h"

namespace tunebox {
namespace {

// main_data_begin reaches back at most 511 bytes.
constexpr std::size_t kReservoirBytes = 511;

// The end of the non-zero lines once short blocks are reordered: lines
// move only within their band, so a band's end bounds them.
int reorderedLineEnd(const GranuleChannelInfo& info, const ScaleFactorBands& bands, int codedEnd) {
    if (!info.shortBlocks()) {
        return codedEnd;
    }
    for (int band = 0; band < kShortBands; ++band) {
        if (3 * bands.shortBounds[band + 1] >= codedEnd) {
            return 3 * bands.shortBounds[band + 1];
        }
    }
    return kGranuleLines;
}

}  // namespace

struct MpegAudioDecoder::Work {
    Layer3SideInfo sideInfo;
    BitReader reader;
    std::array<QuantizedSpectrum, 2> quantized{};
    std::array<int, 2> nonZeroEnd{};
    std::array<Spectrum, 2> spectra{};
    FrameSubbands subbandSamples{};
};

MpegAudioDecoder::MpegAudioDecoder() : work_(std::make_unique<Work>()) {
    reservoir_.reserve(4096);
    mainData_.reserve(4096);
}

MpegAudioDecoder::~MpegAudioDecoder() = default;

void MpegAudioDecoder::reset() {
    reservoir_.clear();
    factors_ = {};
    for (auto& bank : filterBanks_) {
        bank.reset();
    }
    for (auto& synthesis : synthesis_) {
        synthesis.reset();
    }
}

void MpegAudioDecoder::configure(const DecodingOptions& options) {
    options_ = options;
    // The filter banks keep only the subbands the synthesis reads, which
    // the reduction sets.
    for (auto& bank : filterBanks_) {
        bank.reset();
    }
    for (auto& synthesis : synthesis_) {
        synthesis.reset();
    }
}

bool MpegAudioDecoder::takeMainData(std::span<const uint8_t> frameMainData, int mainDataBegin) {
    const auto back = static_cast<std::size_t>(mainDataBegin);
    const bool available = reservoir_.size() >= back;
    if (available) {
        mainData_.assign(reservoir_.end() - static_cast<std::ptrdiff_t>(back), reservoir_.end());
        mainData_.insert(mainData_.end(), frameMainData.begin(), frameMainData.end());
    }
    keepInReservoir(frameMainData);
    return available;
}

void MpegAudioDecoder::keepInReservoir(std::span<const uint8_t> frameMainData) {
    reservoir_.insert(reservoir_.end(), frameMainData.begin(), frameMainData.end());
    if (reservoir_.size() > kReservoirBytes) {
        reservoir_.erase(reservoir_.begin(),
                         reservoir_.end() - static_cast<std::ptrdiff_t>(kReservoirBytes));
    }
}

int MpegAudioDecoder::decodeFrame(std::span<const uint8_t> frame, std::span<uint8_t> out,
                                  std::size_t& bytesWritten) {
    bytesWritten = 0;
    MpegHeader header;
    if (!(mpegParseHeader(frame, header) && mpegDecodableLayer(header)) ||
        frame.size() < header.frameBytes()) {
        return 0;
    }
    const DecodingSetup setup = setUpDecoding(header, options_);
    if (out.size() < setup.description.pcmBytesPerFrame) {
        return 0;
    }
    const auto whole = frame.first(header.frameBytes());
    const int runs = header.isLayer3() ? decodeLayer3(whole, header, setup)
                                       : decodeLayer1Or2(whole, header, setup);
    if (runs < 0) {
        return 0;
    }
    if (runs > 0) {
        const int slots = header.isLayer3() ? kSlotsPerGranule : subbandFrameRuns(header).slots;
        bytesWritten = setup.output({runs, &work_->subbandSamples, &synthesis_, out, slots});
    }
    return 1;
}

int MpegAudioDecoder::decodeLayer1Or2(std::span<const uint8_t> frame, const MpegHeader& header,
                                      const DecodingSetup& setup) {
    const std::size_t dataStart = kFrameHeaderBytes + (header.crcProtected() ? kCrcBytes : 0);
    if (frame.size() <= dataStart) {
        return -1;
    }
    // Layer II's check covers a bit count that is not whole bytes; it is
    // not checked.
    if (header.layerField == kLayer1 && !frameCrcMatches(frame, header)) {
        ++crcMismatches_;
    }
    BitReader reader(frame.subspan(dataStart));
    if (!readSubbandFrame(reader, header, setup.decodedSubbands, work_->subbandSamples)) {
        return -1;
    }
    header_ = header;
    setup_ = setup;
    return subbandFrameRuns(header).runs;
}

int MpegAudioDecoder::decodeLayer3(std::span<const uint8_t> frame, const MpegHeader& header,
                                   const DecodingSetup& setup) {
    const std::size_t sideStart = kFrameHeaderBytes + (header.crcProtected() ? kCrcBytes : 0);
    const std::size_t mainStart = sideStart + header.sideInfoBytes();
    if (frame.size() < mainStart) {
        return -1;
    }
    if (!frameCrcMatches(frame, header)) {
        ++crcMismatches_;
    }
    Work& work = *work_;
    BitReader sideReader(frame.subspan(sideStart, header.sideInfoBytes()));
    const std::span<const uint8_t> frameMainData = frame.subspan(mainStart);
    if (!readSideInfo(sideReader, header, work.sideInfo)) {
        // Later frames may still reach back into this one's main data.
        keepInReservoir(frameMainData);
        return -1;
    }
    header_ = header;
    setup_ = setup;
    if (!takeMainData(frameMainData, work.sideInfo.mainDataBegin)) {
        return 0;
    }
    work.reader = BitReader(mainData_);
    for (int gr = 0; gr < header.granules(); ++gr) {
        decodeGranule(gr);
    }
    return header.granules();
}

int MpegAudioDecoder::decodeFrame(std::span<const uint8_t> frame, std::span<int16_t> pcm,
                                  std::size_t& written) {
    written = 0;
    if (options_.outputMode & kOutputMode8Bit) {
        return 0;
    }
    std::size_t bytes = 0;
    const int result = decodeFrame(
        frame, {reinterpret_cast<uint8_t*>(pcm.data()), pcm.size() * sizeof(int16_t)}, bytes);
    written = bytes / sizeof(int16_t);
    return result;
}

void MpegAudioDecoder::decodeGranule(int granule) {
    Work& work = *work_;
    const int channels = header_.channels();
    const ScaleFactorBands& bands = scaleFactorBands(header_.rateTableIndex());
    for (int ch = 0; ch < channels; ++ch) {
        const GranuleChannelInfo& info = work.sideInfo.granule[granule][ch];
        const std::size_t part2Start = work.reader.position();
        if (header_.isMpeg1()) {
            readScaleFactorsMpeg1(work.reader, info, work.sideInfo.scfsi[ch], granule,
                                  factors_[ch]);
        } else {
            readScaleFactorsMpeg2(work.reader, info, ch == 1 && header_.intensityStereo(),
                                  factors_[ch]);
        }
        const std::size_t part23End = part2Start + static_cast<std::size_t>(info.part23Length);
        // Intensity stereo finds its bands from where the right channel's
        // lines end, so that channel is always decoded whole. Short blocks
        // are still in coded order here: the limit goes to a band's end.
        const bool wholeChannel = ch == 1 && header_.intensityStereo();
        const int lineLimit =
            wholeChannel ? kGranuleLines
                         : reorderedLineEnd(info, bands, setup_.decodedSubbands * kSlotsPerGranule);
        work.nonZeroEnd[ch] =
            decodeHuffmanSpectrum(work.reader, info, part23End, lineLimit, work.quantized[ch]);
        work.reader.seek(part23End);
        requantize(
            {work.quantized[ch], work.nonZeroEnd[ch], info, factors_[ch], bands, header_.isMpeg1()},
            work.spectra[ch]);
    }
    if (header_.channelMode == kJointStereo) {
        // Mid/side and intensity coding give each side the other's lines.
        work.nonZeroEnd[0] = work.nonZeroEnd[1] = std::max(work.nonZeroEnd[0], work.nonZeroEnd[1]);
        processJointStereo(
            {header_, work.sideInfo.granule[granule][1], factors_[1], bands, work.nonZeroEnd[0]},
            work.spectra[0], work.spectra[1]);
    }
    const int limitLines = setup_.decodedSubbands * kSlotsPerGranule;
    for (int ch = 0; ch < channels; ++ch) {
        const GranuleChannelInfo& info = work.sideInfo.granule[granule][ch];
        Spectrum& spectrum = work.spectra[ch];
        reorderShortBlocks(info, bands, spectrum);
        int lineEnd = reorderedLineEnd(info, bands, work.nonZeroEnd[ch]);
        if (lineEnd > limitLines) {
            std::fill(spectrum.begin() + limitLines, spectrum.end(), 0.0f);
            lineEnd = limitLines;
        }
        // No butterfly across the limit either, so nothing leaks above it.
        const int subbands = std::min(subbandsInUse(lineEnd), setup_.decodedSubbands);
        reduceAliasing(info, subbands, spectrum);
        filterBanks_[ch].process(spectrum, info, subbands, kSubbands >> setup_.reduction,
                                 work.subbandSamples[granule][ch]);
    }
}

template <typename Sample>
std::size_t MpegAudioDecoder::decodeStreamInto(std::span<const uint8_t> bytes,
                                               std::vector<Sample>& out) {
    std::size_t decoded = 0;
    std::size_t position = 0;
    std::array<Sample, kMaxFrameBytes / sizeof(Sample)> frameOutput;
    while (position + kFrameHeaderBytes <= bytes.size()) {
        const auto rest = bytes.subspan(position);
        MpegHeader header;
        if (!(mpegParseHeader(rest, header) && mpegDecodableLayer(header)) ||
            header.frameBytes() > rest.size()) {
            ++position;
            continue;
        }
        std::size_t written = 0;
        if (decodeFrame(rest.first(header.frameBytes()), frameOutput, written)) {
            ++decoded;
            out.insert(out.end(), frameOutput.begin(),
                       frameOutput.begin() + static_cast<std::ptrdiff_t>(written));
        }
        position += header.frameBytes();
    }
    return decoded;
}

std::size_t MpegAudioDecoder::decodeStream(std::span<const uint8_t> bytes,
                                           std::vector<uint8_t>& out) {
    return decodeStreamInto(bytes, out);
}

std::size_t MpegAudioDecoder::decodeStream(std::span<const uint8_t> bytes,
                                           std::vector<int16_t>& pcm) {
    return decodeStreamInto(bytes, pcm);
}

}  // namespace tunebox
