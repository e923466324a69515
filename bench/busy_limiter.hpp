#pragma once

#include <algorithm>
#include <vector>

#include "limiter/processor/vanta_processor.hpp"
#include "limiter/styles/style_names.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {

struct Setting {
    LimitingStyle style = LimitingStyle::Modern;
    int oversampling = 0;  ///< index: 0 to 5 for 1x to 32x
    bool truePeak = false;
    float sampleRate = 44100.0f;
    ChannelLayout layout = kStereoLayout;
    float gainDb = 9.0f;
    float level = 1.0f;  ///< of the input; 0 is silence
};

/// A limiter at work on bursts of pink noise, which keep every part of it busy.
class BusyLimiter {
public:
    explicit BusyLimiter(const Setting& setting) : processor(setting.layout) {
        processor.prepare(setting.sampleRate);
        processor.style.setMapped(setting.style);
        processor.oversampling.setValue(static_cast<float>(setting.oversampling), kFromHost);
        processor.truePeakLimiting.setValue(setting.truePeak ? 1.0f : 0.0f, kFromHost);
        processor.gain.setValue(setting.gainDb, kFromHost);
        const auto frames = static_cast<std::size_t>(setting.sampleRate * 2.0f);
        for (int c = 0; c < channelCount(setting.layout); ++c) {
            input_.push_back(test::pinkNoise(1000u + static_cast<unsigned>(c), frames, 0.25));
            for (std::size_t i = 0; i < frames; ++i) {
                const float phase = static_cast<float>(i % 11025) / 11025.0f;
                input_.back()[i] *= setting.level * (0.2f + 0.8f * (1.0f - phase) * (1.0f - phase));
            }
        }
        output_.assign(input_.size(), std::vector<float>(kLargestBlock));
    }

    int frames() const { return static_cast<int>(input_[0].size()); }

    /// The next block, over and over the same two seconds.
    void run(int samples) {
        if (position_ + samples > frames()) position_ = 0;
        const float* in[kMaxChannels];
        float* out[kMaxChannels];
        for (std::size_t c = 0; c < input_.size(); ++c) {
            in[c] = input_[c].data() + position_;
            out[c] = output_[c].data();
        }
        const int channels = static_cast<int>(input_.size());
        processor.processBlock(in, channels, out, channels, samples);
        position_ += samples;
    }

    VantaProcessor processor;

private:
    static constexpr std::size_t kLargestBlock = 8192;
    std::vector<std::vector<float>> input_;
    std::vector<std::vector<float>> output_;
    int position_ = 0;
};

}  // namespace vanta::bench
