#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "dsp/metering/k_filter.hpp"
#include "dsp/metering/loudness_gate.hpp"
#include "dsp/mixer.hpp"
#include "dsp/rms_filter.hpp"
#include "foundation/interval_timer.hpp"
#include "wave/level_source.hpp"

namespace vanta {

/// Loudness of the whole programme after ITU-R BS.1770-4 and EBU R128: Momentary, Short Term and Integrated,
/// and the loudness range. All work runs on the audio thread, which is one thread; one other thread reads.
class LoudnessMeter final : public wave::Source, public PropertyOwner {
public:
    static constexpr int kMaxChannels = 10;
    enum SourceIndex { MomentarySource, ShortTermSource, IntegratedSource, SourceCount };

    class ChannelFilter;
    class LoudnessSource;

    explicit LoudnessMeter(wave::Environment& owner,
                           SteadyIntervalTimer::Clock clock = &SteadyIntervalTimer::monotonicMilliseconds);
    ~LoudnessMeter() override;

    /// Set-up: enters a channel with the weight that its speaker's angle has. `typeWord` is that of the
    /// channel layout: angle in bits 0 to 7, 0x400 for the right side, 0x1000 for LFE.
    void setChannel(int index, int typeWord, ChannelFilter& filter);
    LoudnessSource& source(SourceIndex index) { return *sources[index]; }
    /// The weighted sum of the channels' mean squares over 400 ms and over 3 s, for whoever follows them to
    /// the sample. To be pulled in the block in which they are read.
    wave::Producer& momentaryPower() { return mixerMomentary; }
    wave::Producer& shortTermPower() { return mixerShortTerm; }
    /// What the measurement has gathered of them. On the thread that runs the blocks.
    const LoudnessGate& momentaryGate() const { return gateMomentary; }
    const LoudnessGate& shortTermGate() const { return gateShortTerm; }

    /// Asks for a fresh measurement, which begins with the next block; readers see none until then. Any
    /// thread.
    void requestReset() { resetRequested.store(true, std::memory_order_release); }
    /// Starts over at once. Between blocks.
    void reset() override;

    Property<int> precision;   ///< decimals of the figures; negative: not rounded
    Property<bool> enabled;    ///< false pauses the measurement
    Property<bool> autoReset;  ///< rest and forget while nobody fetches meter data

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    VANTA_REALTIME void clear();
    VANTA_REALTIME void takeRequests();
    VANTA_REALTIME void measure(int samples);
    VANTA_REALTIME void updateIntegrated();
    VANTA_REALTIME void updateRange();
    VANTA_REALTIME int firstSound(const float* block, int samples) const;
    float rounded(double meanSquare) const;

    LoudnessGate gateMomentary;
    Mixer mixerMomentary;
    LoudnessGate gateShortTerm;
    Mixer mixerShortTerm;
    std::vector<ChannelFilter*> filters;
    std::array<std::unique_ptr<LoudnessSource>, SourceCount> sources;
    bool waiting = true;               ///< for the first sound
    std::atomic<bool> newData{false};  ///< a block was measured since the last read
    std::atomic<bool> resetRequested{false};
    std::atomic<bool> measuring{true};  ///< `enabled`, for the reader
    SteadyIntervalTimer timer;          ///< the reader's
};

/// Weights one channel and takes its sliding mean squares. Publishes that of 400 ms.
class LoudnessMeter::ChannelFilter final : public wave::Filter {
public:
    explicit ChannelFilter(wave::Environment& owner);

    /// The K-weighted signal.
    wave::Producer& weighted() { return weighting; }
    wave::Producer& shortTerm() { return threeSeconds; }
    /// Forgets the signal without designing anew.
    VANTA_REALTIME void clear();

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    wave::InputForwarder input;
    KFilter weighting;
    RMSFilter fourHundredMs;
    RMSFilter threeSeconds;
};

/// What an interface reads of one time scale. Sources 0 and 1 give the current level, the highest of the last
/// two seconds and the highest since the reset; source 2 gives the Integrated loudness, the range and its low
/// end.
class LoudnessMeter::LoudnessSource final : public LevelSource {
public:
    LoudnessSource(LoudnessMeter& owner, int sourceIndex);

    Detection detection() const override { return Maximum; }
    float value(Info info) override;
    void resetPeak() override { peakResetRequested.store(true, std::memory_order_release); }
    void resetMeasurement() override;

    // Audio thread.
    VANTA_REALTIME void clear();
    VANTA_REALTIME void clearPeaks();
    VANTA_REALTIME void takeRequests();
    VANTA_REALTIME void take(const float* block, int samples);
    VANTA_REALTIME void set(Info info, float level) { at(info).store(level, std::memory_order_relaxed); }
    VANTA_REALTIME float get(Info info) const {
        return values[static_cast<std::size_t>(info)].load(std::memory_order_relaxed);
    }

private:
    std::atomic<float>& at(Info info) { return values[static_cast<std::size_t>(info)]; }
    float runningDown(Info info, int elapsedMs) const;

    LoudnessMeter& meter;
    int index;
    std::array<std::atomic<float>, InfoCount> values;
    int counter = 0;  ///< samples since the two-second peak last rose
    std::atomic<bool> peakResetRequested{false};
};

}  // namespace vanta
