#pragma once
// Layer I streams written bit by bit, as no encoder at hand makes them: every
// frame draws its allocations, scale factors and samples from a seeded
// generator and fits them into the frame's bit budget, with the padding
// slots, the joint-stereo bound and the check word an encoder would write.

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace tunebox::test {

struct Layer1StreamSpec {
    bool mpeg1 = true;  // else the MPEG-2 low sampling frequencies
    uint32_t sampleRateIndex = 0;
    uint32_t bitRateIndex = 14;
    uint32_t channelMode = 0;  // 0 stereo, 1 joint, 2 dual, 3 single channel
    uint32_t modeExtension = 0;
    bool protect = false;
    int frames = 200;
    int loudestScaleFactor = 12;  // the lowest index drawn: 2^(1 - i/3) at most
    uint32_t seed = 1;
};

class Layer1StreamWriter {
  public:
    explicit Layer1StreamWriter(const Layer1StreamSpec& spec) : spec_(spec), random_(spec.seed) {}

    std::vector<uint8_t> write() {
        for (int frame = 0; frame < spec_.frames; ++frame) {
            writeFrame();
        }
        return bytes_;
    }

  private:
    static constexpr int kSubbands = 32;
    static constexpr int kSlots = 12;

    uint32_t bitRate() const {
        static constexpr std::array<uint32_t, 15> kMpeg1{0,   32,  64,  96,  128, 160, 192, 224,
                                                         256, 288, 320, 352, 384, 416, 448};
        static constexpr std::array<uint32_t, 15> kLowRate{0,   32,  48,  56,  64,  80,  96, 112,
                                                           128, 144, 160, 176, 192, 224, 256};
        return (spec_.mpeg1 ? kMpeg1 : kLowRate)[spec_.bitRateIndex] * 1000;
    }
    uint32_t sampleRate() const {
        static constexpr std::array<uint32_t, 3> kRates{44100, 48000, 32000};
        return kRates[spec_.sampleRateIndex] / (spec_.mpeg1 ? 1 : 2);
    }
    int channels() const { return spec_.channelMode == 3 ? 1 : 2; }
    int bound() const { return spec_.channelMode == 1 ? 4 * (int(spec_.modeExtension) + 1) : 32; }

    void put(uint32_t value, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit) {
            if (bitCount_ % 8 == 0) {
                bytes_.push_back(0);
            }
            const uint32_t set = (value >> bit) & 1;
            bytes_.back() |= static_cast<uint8_t>(set << (7 - bitCount_ % 8));
            ++bitCount_;
            if (checking_) {
                // CRC-16, generator 0x8005, one bit at a time.
                const bool top = ((crc_ >> 15) & 1) != set;
                crc_ = static_cast<uint16_t>(crc_ << 1);
                crc_ ^= top ? 0x8005 : 0;
            }
        }
    }

    // Bytes of the next frame, spreading the fractional slot over padding
    // slots as an encoder does.
    int nextFrameBytes(bool& padded) {
        const uint32_t perFrame = 12 * bitRate();
        paddingDebt_ += perFrame % sampleRate();
        padded = paddingDebt_ >= sampleRate();
        if (padded) {
            paddingDebt_ -= sampleRate();
        }
        return static_cast<int>((perFrame / sampleRate() + (padded ? 1 : 0)) * 4);
    }

    // Allocations drawn at random, then lowered from the top subband down
    // until the frame holds them.
    using Allocation = std::array<std::array<int, kSubbands>, 2>;
    Allocation drawAllocation(int budget) {
        Allocation allocation{};
        std::uniform_int_distribution<int> draw(-3, 14);
        for (int sb = 0; sb < kSubbands; ++sb) {
            for (int ch = 0; ch < channels(); ++ch) {
                allocation[ch][sb] =
                    ch == 1 && sb >= bound() ? allocation[0][sb] : std::max(0, draw(random_));
            }
        }
        while (cost(allocation) > budget) {
            for (int sb = kSubbands - 1; sb >= 0 && cost(allocation) > budget; --sb) {
                for (int ch = 0; ch < channels(); ++ch) {
                    allocation[ch][sb] = std::max(0, allocation[ch][sb] - 1);
                }
            }
        }
        return allocation;
    }

    int cost(const Allocation& allocation) const {
        int bits = 0;
        for (int sb = 0; sb < kSubbands; ++sb) {
            for (int ch = 0; ch < channels(); ++ch) {
                const int a = allocation[ch][sb];
                const bool sharedSamples = ch == 1 && sb >= bound();
                bits += a == 0 ? 0 : 6 + (sharedSamples ? 0 : kSlots * (a + 1));
            }
        }
        return bits;
    }

    void writeFrame() {
        bool padded = false;
        const int frameBytes = nextFrameBytes(padded);
        const std::size_t start = bytes_.size();
        const uint32_t version = spec_.mpeg1 ? 3 : 2;
        put(0xFFE0 | version << 3 | 3 << 1 | (spec_.protect ? 0 : 1), 16);
        checking_ = true;
        crc_ = 0xFFFF;
        put(spec_.bitRateIndex << 4 | spec_.sampleRateIndex << 2 | (padded ? 2 : 0), 8);
        put(spec_.channelMode << 6 | spec_.modeExtension << 4, 8);
        checking_ = false;
        const std::size_t crcAt = bytes_.size();
        if (spec_.protect) {
            put(0, 16);
        }
        const int sharedBands = channels() == 2 ? kSubbands - bound() : 0;
        const int allocationBits = 4 * (channels() * kSubbands - sharedBands);
        const int budget =
            frameBytes * 8 - static_cast<int>(bitCount_ - start * 8) - allocationBits;
        const Allocation allocation = drawAllocation(budget);

        checking_ = spec_.protect;
        for (int sb = 0; sb < kSubbands; ++sb) {
            for (int ch = 0; ch < (sb < bound() ? channels() : 1); ++ch) {
                put(static_cast<uint32_t>(allocation[ch][sb]), 4);
            }
        }
        checking_ = false;
        if (spec_.protect) {
            bytes_[crcAt] = static_cast<uint8_t>(crc_ >> 8);
            bytes_[crcAt + 1] = static_cast<uint8_t>(crc_);
        }
        std::uniform_int_distribution<uint32_t> scale(
            static_cast<uint32_t>(spec_.loudestScaleFactor), 62);
        for (int sb = 0; sb < kSubbands; ++sb) {
            for (int ch = 0; ch < channels(); ++ch) {
                if (allocation[ch][sb] != 0) {
                    put(scale(random_), 6);
                }
            }
        }
        for (int slot = 0; slot < kSlots; ++slot) {
            for (int sb = 0; sb < kSubbands; ++sb) {
                for (int ch = 0; ch < (sb < bound() ? channels() : 1); ++ch) {
                    const int bits = allocation[ch][sb] + 1;
                    if (bits > 1) {
                        // The all-ones code is forbidden.
                        std::uniform_int_distribution<uint32_t> code(0, (1u << bits) - 2);
                        put(code(random_), bits);
                    }
                }
            }
        }
        while (bitCount_ < (start + static_cast<std::size_t>(frameBytes)) * 8) {
            put(0, 1);
        }
    }

    Layer1StreamSpec spec_;
    std::mt19937 random_;
    std::vector<uint8_t> bytes_;
    std::size_t bitCount_ = 0;
    uint32_t paddingDebt_ = 0;
    bool checking_ = false;
    uint16_t crc_ = 0xFFFF;
};

inline std::vector<uint8_t> layer1Stream(const Layer1StreamSpec& spec) {
    return Layer1StreamWriter(spec).write();
}

}  // namespace tunebox::test
