#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "dsp/detector/rms_filter.hpp"
#include "dsp/metering/k_filter.hpp"
#include "dsp/metering/loudness_gate.hpp"
#include "dsp/mixer/mixer.hpp"
#include "foundation/channel_layout.hpp"
#include "foundation/interval_timer.hpp"
#include "wave/level_source.hpp"
#include "wave/stream_watch.hpp"

namespace vanta {

/// Loudness of the whole programme after ITU-R BS.1770-4 and EBU R128: Momentary, Short Term and Integrated,
/// and the loudness range. All work runs on the audio thread, which is one thread; one other thread reads.
///
/// A measurement outlives resets of the graph around it, which restart the weighting alone; it stands still
/// while no blocks come. `reset`, `requestReset` and another sample rate start it over.
class LoudnessMeter final : public wave::Source, public PropertyOwner {
public:
    enum SourceIndex { MomentarySource, ShortTermSource, IntegratedSource, SourceCount };

    class ChannelFilter;
    class LoudnessSource;

    explicit LoudnessMeter(wave::Environment& owner,
                           SteadyIntervalTimer::Clock clock = &SteadyIntervalTimer::monotonicMilliseconds);
    ~LoudnessMeter() override;

    /// Set-up: enters a channel with the weight that its speaker's angle has. `typeWord` is that of the
    /// channel layout (`channelTypes`). The filter's windows are part of the measurement from then on.
    void setChannel(int index, int typeWord, ChannelFilter& filter);
    LoudnessSource& source(SourceIndex index) { return *sources_[index]; }
    /// The weighted sum of the channels' mean squares over 400 ms and over 3 s, for meters that follow them
    /// to the sample. To be pulled in the block in which they are read.
    wave::Producer& momentaryPower() { return mixerMomentary_; }
    wave::Producer& shortTermPower() { return mixerShortTerm_; }
    /// What the measurement has gathered of them. On the thread that runs the blocks.
    const LoudnessGate& momentaryGate() const { return gateMomentary_; }
    const LoudnessGate& shortTermGate() const { return gateShortTerm_; }

    /// Asks for a fresh measurement, which begins with the next block; readers see none until then. Any
    /// thread.
    void requestReset() { resetRequested_.store(true, std::memory_order_release); }
    /// Starts over at once.
    void reset() override;

    Property<int> precision;   ///< decimals of the figures; negative: not rounded
    Property<bool> enabled;    ///< false pauses the measurement
    Property<bool> autoReset;  ///< rest and forget while nobody fetches meter data
    /// After a missed block: samples that the path in front needs to fill with signal again, which are not
    /// measured. They count in whole blocks.
    Property<int> warmUpSamples;

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    VANTA_REALTIME void takeRequests();
    VANTA_REALTIME bool isWarmingUp(int samples);
    VANTA_REALTIME void measure(int samples);
    VANTA_REALTIME void updateIntegrated();
    VANTA_REALTIME void updateRange();
    VANTA_REALTIME int firstSound(const float* block, int samples) const;
    float rounded(double meanSquare) const;

    LoudnessGate gateMomentary_;
    Mixer mixerMomentary_;
    LoudnessGate gateShortTerm_;
    Mixer mixerShortTerm_;
    std::vector<ChannelFilter*> filters_;
    std::array<std::unique_ptr<LoudnessSource>, SourceCount> sources_;
    bool waiting_ = true;  ///< for the first sound
    int warmUpLeft_ = 0;
    wave::StreamWatch stream_;
    std::atomic<bool> newData_{false};  ///< a block was measured since the last read
    std::atomic<bool> resetRequested_{false};
    std::atomic<bool> measuring_{true};    ///< `enabled`, for the reader
    std::atomic<float> sampleRate_{0.0f};  ///< Hz, for the reader
    SteadyIntervalTimer timer_;            ///< the reader's
};

/// Weights one channel and takes its sliding mean squares. Publishes that of 400 ms.
class LoudnessMeter::ChannelFilter final : public wave::Filter {
public:
    explicit ChannelFilter(wave::Environment& owner);

    /// The K-weighted signal.
    wave::Producer& weighted() { return weighting_; }
    wave::Producer& shortTerm() { return threeSeconds_; }
    /// Resets of the graph spare the windows.
    void keepWindows();
    void reset() override;

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    wave::InputForwarder input_;
    KFilter weighting_;
    RMSFilter fourHundredMs_;
    RMSFilter threeSeconds_;
};

/// What an interface reads of one time scale. Sources 0 and 1 give the current level, the highest of the last
/// two seconds and the highest since the reset; source 2 gives the Integrated loudness, the range and its low
/// end.
class LoudnessMeter::LoudnessSource final : public wave::LevelSource {
public:
    LoudnessSource(LoudnessMeter& meter, int index);

    Detection detection() const override { return Maximum; }
    float value(Info info) override;
    void resetPeak() override { peakResetRequested_.store(true, std::memory_order_release); }
    void resetMeasurement() override;

    // Audio thread.
    VANTA_REALTIME void clear();
    VANTA_REALTIME void clearPeaks();
    VANTA_REALTIME void takeRequests();
    VANTA_REALTIME void take(const float* block, int samples);
    VANTA_REALTIME void set(Info info, float level) { at(info).store(level, std::memory_order_relaxed); }
    VANTA_REALTIME float get(Info info) const {
        return values_[static_cast<std::size_t>(info)].load(std::memory_order_relaxed);
    }

private:
    std::atomic<float>& at(Info info) { return values_[static_cast<std::size_t>(info)]; }
    float runningDown(Info info, std::int64_t elapsedMs) const;

    LoudnessMeter& meter_;
    int index_;
    std::array<std::atomic<float>, InfoCount> values_;
    int counter_ = 0;  ///< samples since the two-second peak last rose
    std::atomic<bool> peakResetRequested_{false};
};

}  // namespace vanta
