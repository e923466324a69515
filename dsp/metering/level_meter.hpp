#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "foundation/interval_timer.hpp"
#include "foundation/property.hpp"
#include "wave/level_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// A meter bar. The audio thread scans a block for its extreme and hands over one value and one count of
/// samples, without a lock; hold, fall and clip latch run on the reader's side, in samples, so that the bar
/// falls at the same rate however often it is read. Without audio it falls by wall clock.
///
/// One thread computes and sets properties, one other thread reads.
class LevelMeter final : public wave::Source, public wave::LevelSource, public PropertyOwner {
public:
    enum LevelDomain : int { Amplitude, Decibel, PowerDomain };

    explicit LevelMeter(wave::Environment& owner,
                        SteadyIntervalTimer::Clock clock = &SteadyIntervalTimer::monotonicMilliseconds);

    // LevelSource
    Detection detection() const override { return static_cast<Detection>(detectionMode.value()); }
    float value(Info info) override;
    void resetPeak() override { peakResetRequested_.store(true, std::memory_order_release); }
    void resetMeasurement() override {}

    void reset() override;

    wave::Producer* source = nullptr;  ///< without one the meter rests

    Property<int> detectionMode;
    Property<bool> clipIndicator;  ///< the peak reading latches once it passes 0 dB
    Property<float> holdTime;      ///< seconds, of the fast reading
    Property<float> staleTime;     ///< ms; with no audio for longer, the meter falls by wall clock
    Property<int> inputDomain;
    Property<float> maximum;  ///< limits of every reading, in the output domain
    Property<float> minimum;
    Property<int> outputDomain;
    Property<float> peakHoldTime;  ///< seconds, of the peak reading
    Property<float> peakFall;      ///< output units per second, after the hold
    Property<float> fall;

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    /// What a reader needs of the properties. Written on the audio side, read on the other.
    struct Settings {
        std::atomic<int> detection{Maximum};
        std::atomic<bool> clipIndicator{true};
        std::atomic<bool> toDecibel{true};
        std::atomic<bool> fromPower{false};
        std::atomic<float> rest{0.0f};  ///< the reading of silence
        std::atomic<float> seed{0.0f};  ///< the same in the input domain
        std::atomic<float> maximum{0.0f};
        std::atomic<float> minimum{0.0f};
        std::atomic<float> staleTime{0.0f};
        std::atomic<float> sampleRate{0.0f};
        std::array<std::atomic<float>, 2> slope{};  ///< of readings 0 and 1, per sample, signed
        std::array<std::atomic<int>, 2> hold{};     ///< samples
    };
    struct Reading {
        float value = 0.0f;
        int counter = 0;  ///< samples since the last rise
    };
    struct Slot {
        std::atomic<float> value{0.0f};
        std::atomic<int> count{0};
    };
    struct Handed {
        float value;
        int count;
    };

    static constexpr std::int32_t kEmpty = -1;

    // Audio side.
    void publishSettings();
    VANTA_REALTIME float scan(const float* samples, int count) const;
    VANTA_REALTIME void handOver(float value, int count);

    // Reader's side.
    void takeRequests();
    bool take(Handed& handed);
    void feed(Handed handed);
    void update(int index, Handed handed);
    void fallByClock(std::int64_t elapsedMs);
    bool isAbove(float a, float b) const;
    float extreme(float a, float b) const { return isAbove(a, b) ? a : b; }
    float limited(float x) const;
    void rest(bool everything);

    Settings settings_;
    std::array<Slot, 2> slots_;
    std::atomic<std::int32_t> sequence_{kEmpty};
    std::atomic<bool> resetRequested_{false};
    std::atomic<bool> limitsChanged_{false};
    std::atomic<bool> peakResetRequested_{false};

    std::array<Reading, 3> readings_;
    bool clip_ = false;
    bool stale_ = false;
    float secondPeak_ = 0.0f;
    SteadyIntervalTimer timer_;
};

}  // namespace vanta
