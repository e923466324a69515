#pragma once

#include <memory>
#include <vector>

#include "dsp/detector/rms_filter.hpp"
#include "dsp/metering/level_meter.hpp"
#include "dsp/metering/loudness_meter.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "wave/producer.hpp"

namespace vanta::bench {

/// All meters of a stereo limiter, fed directly: loudness, and of each channel true peak, RMS and two bars.
class MeterRig {
public:
    static constexpr int kBlock = 256;

    /// Plays the two channels, in whole blocks, round and round. They outlive the rig.
    MeterRig(const std::vector<std::vector<float>>& signal, double sampleRate, bool withTruePeak)
        : signal_(signal) {
        environment_.setSampleRate(static_cast<float>(sampleRate));
        for (int c = 0; c < 2; ++c) {
            channels_.push_back(std::make_unique<Channel>(environment_, style_));
            channels_.back()->exposer.enabled = withTruePeak;
            channels_.back()->exposer.detail = sr::TruePeakExposer::Highest;
            loudness_.setChannel(c, c == 0 ? 0x21E : 0x41E, channels_.back()->weighting);
        }
    }

    void run() {
        if (at_ == signal_[0].size()) at_ = 0;
        for (std::size_t c = 0; c < 2; ++c) channels_[c]->input.setBuffer(signal_[c].data() + at_, kBlock);
        at_ += kBlock;
        environment_.advanceTick();
        environment_.run(kBlock, 0);
    }

    float look() {
        float sum = 0.0f;
        for (auto& channel : channels_)
            sum += channel->peak.value(wave::LevelSource::Current) +
                   channel->level.value(wave::LevelSource::Current);
        for (int i = 0; i < LoudnessMeter::SourceCount; ++i) {
            sum += loudness_.source(static_cast<LoudnessMeter::SourceIndex>(i))
                       .value(wave::LevelSource::Current);
        }
        return sum;
    }

private:
    struct Channel {
        Channel(wave::Environment& owner, sr::TruePeakExposer::Style& style)
            : input(owner),
              weighting(owner),
              exposer(owner, style),
              rms(owner, 2000.0f),
              peak(owner),
              level(owner) {
            weighting.source = exposer.source = &input;
            rms.source = &weighting.weighted();
            rms.window.parameter().setRange(0.0f, 2000.0f);
            rms.window.parameter().setValue(400.0f, 0.0f);
            peak.source = &exposer;
            level.source = &rms;
            level.inputDomain = LevelMeter::PowerDomain;
        }
        wave::Input input;
        LoudnessMeter::ChannelFilter weighting;
        sr::TruePeakExposer exposer;
        RMSFilter rms;
        LevelMeter peak;
        LevelMeter level;
    };

    const std::vector<std::vector<float>>& signal_;
    wave::Environment environment_{kBlock};
    LoudnessMeter loudness_{environment_};
    sr::TruePeakExposer::Style style_{environment_};
    std::vector<std::unique_ptr<Channel>> channels_;
    std::size_t at_ = 0;
};

}  // namespace vanta::bench
