#pragma once

#include <algorithm>
#include <vector>

#include "limiter/vanta_processor.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {

struct Setting {
    int style = 5;
    int oversampling = 0;  ///< index: 0 to 5 for 1x to 32x
    bool truePeak = false;
    float sampleRate = 44100.0f;
    ChannelLayout layout = kStereoLayout;
    float gainDb = 9.0f;
};

/// A limiter at work on bursts of pink noise, which keep every part of it busy.
class LimiterRig {
public:
    explicit LimiterRig(const Setting& setting) : processor(setting.layout) {
        processor.setSampleRate(setting.sampleRate);
        processor.style.setValue(static_cast<float>(setting.style), kFromHost);
        processor.oversampling.setValue(static_cast<float>(setting.oversampling), kFromHost);
        processor.truePeakLimiting.setValue(setting.truePeak ? 1.0f : 0.0f, kFromHost);
        processor.gain.setValue(setting.gainDb, kFromHost);
        const auto frames = static_cast<std::size_t>(setting.sampleRate * 2.0f);
        for (int c = 0; c < channelCount(setting.layout); ++c) {
            input.push_back(test::pinkNoise(1000u + static_cast<unsigned>(c), frames, 0.25));
            for (std::size_t i = 0; i < frames; ++i) {
                const float phase = static_cast<float>(i % 11025) / 11025.0f;
                input.back()[i] *= 0.2f + 0.8f * (1.0f - phase) * (1.0f - phase);
            }
        }
        output.assign(input.size(), std::vector<float>(kLargestBlock));
    }

    int frames() const { return static_cast<int>(input[0].size()); }

    /// The next block, over and over the same two seconds.
    void run(int samples) {
        if (position + samples > frames()) position = 0;
        const float* in[kMaxChannels];
        float* out[kMaxChannels];
        for (std::size_t c = 0; c < input.size(); ++c) {
            in[c] = input[c].data() + position;
            out[c] = output[c].data();
        }
        const int channels = static_cast<int>(input.size());
        processor.processBlock(in, channels, out, channels, samples);
        position += samples;
    }

    VantaProcessor processor;

private:
    static constexpr std::size_t kLargestBlock = 8192;
    std::vector<std::vector<float>> input;
    std::vector<std::vector<float>> output;
    int position = 0;
};

}  // namespace vanta::bench
