#include "dsp/metering/level_meter.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/numbers.hpp"
#include "kernel/scan.hpp"

namespace vanta {

namespace {

enum { kFast, kPeak, kAbsolute };

/// Long before this a reading has come to rest; a count of samples still holds it.
constexpr std::int64_t kLongestFallMs = 60'000;

int saturatedSum(int a, int b) {
    return a > std::numeric_limits<int>::max() - b ? std::numeric_limits<int>::max() : a + b;
}

}  // namespace

LevelMeter::LevelMeter(wave::Environment& owner, SteadyIntervalTimer::Clock clock)
    : Source(owner, wave::OwnBlock::No),
      detectionMode(this, Maximum),
      clipIndicator(this, true),
      holdTime(this, 0.05f),
      staleTime(this, 100.0f),
      inputDomain(this, Amplitude),
      maximum(this, 6.0f),
      minimum(this, -90.0f),
      outputDomain(this, Decibel),
      peakHoldTime(this, 2.0f),
      peakFall(this, 15.0f),
      fall(this, 150.0f),
      timer_(clock) {
    publishSettings();
    rest(true);
    readings_[kPeak].counter = settings_.hold[kPeak] + 1;
    makeResettable();
    setScheduled(wave::Environment::kBackGroup);
}

void LevelMeter::publishSettings() {
    const float rate = environment().sampleRate();
    const bool up = detectionMode == Maximum;
    const float restLevel = up ? minimum : maximum;
    const bool converts = inputDomain != Decibel && outputDomain == Decibel;
    double seedLevel = restLevel;
    if (converts) {
        seedLevel = gainFromDb(restLevel);
        if (inputDomain == PowerDomain) seedLevel *= seedLevel;
    }
    settings_.detection = detectionMode.value();
    settings_.clipIndicator = clipIndicator.value();
    settings_.toDecibel = converts;
    settings_.fromPower = inputDomain == PowerDomain;
    settings_.rest = restLevel;
    settings_.seed = static_cast<float>(seedLevel);
    settings_.maximum = maximum.value();
    settings_.minimum = minimum.value();
    settings_.staleTime = staleTime.value();
    settings_.sampleRate = rate;
    const float direction = up ? -1.0f : 1.0f;
    settings_.slope[kFast] = direction * fall / rate;
    settings_.slope[kPeak] = direction * peakFall / rate;
    settings_.hold[kFast] = samplesInSeconds(holdTime, rate);
    settings_.hold[kPeak] = samplesInSeconds(peakHoldTime, rate);
}

void LevelMeter::propertyChanged(AbstractProperty& property) {
    publishSettings();
    if (&property == &detectionMode || &property == &inputDomain || &property == &outputDomain) {
        reset();
    } else if (&property == &minimum || &property == &maximum) {
        limitsChanged_.store(true, std::memory_order_release);
    }
}

// The readings belong to the reader: it clears them at its next visit.
void LevelMeter::reset() {
    publishSettings();
    sequence_.store(kEmpty, std::memory_order_release);
    resetRequested_.store(true, std::memory_order_release);
}

void LevelMeter::produce(wave::BasicBlock<float>*, int samples, int) {
    publishSilence();
    if (!source) return;
    const float* in = source->pullData(samples);
    handOver(scan(in, source->isConstant() ? 1 : samples), samples);
}

float LevelMeter::scan(const float* samples, int count) const {
    const auto n = static_cast<std::size_t>(count);
    const bool magnitudes = inputDomain == Amplitude && outputDomain != Amplitude;
    const float seed = settings_.seed.load(std::memory_order_relaxed);
    if (detectionMode == Maximum) {
        return std::max(seed,
                        magnitudes ? kernel::highestMagnitude(samples, n) : kernel::highest(samples, n));
    }
    return std::min(seed, magnitudes ? kernel::lowestMagnitude(samples, n) : kernel::lowest(samples, n));
}

// A reader that stays away loses no peak and no time: what it has not taken is merged into the newer slot.
void LevelMeter::handOver(float value, int count) {
    std::int32_t read = sequence_.load(std::memory_order_acquire);
    for (;;) {
        const std::int32_t next = read == std::numeric_limits<std::int32_t>::max() ? 1 : read + 1;
        Slot& slot = slots_[static_cast<std::size_t>(next & 1)];
        float merged = value;
        int total = count;
        if (read != kEmpty) {
            const Slot& older = slots_[static_cast<std::size_t>(read & 1)];
            const float waiting = older.value.load(std::memory_order_relaxed);
            merged = (detectionMode == Maximum) == (waiting > value) ? waiting : value;
            total = saturatedSum(older.count.load(std::memory_order_relaxed), count);
        }
        slot.value.store(merged, std::memory_order_relaxed);
        slot.count.store(total, std::memory_order_relaxed);
        if (sequence_.compare_exchange_weak(read, next, std::memory_order_acq_rel)) return;
    }
}

bool LevelMeter::take(Handed& handed) {
    std::int32_t read = sequence_.load(std::memory_order_acquire);
    while (read != kEmpty) {
        const Slot& slot = slots_[static_cast<std::size_t>(read & 1)];
        handed = {slot.value.load(std::memory_order_relaxed), slot.count.load(std::memory_order_relaxed)};
        if (sequence_.compare_exchange_weak(read, kEmpty, std::memory_order_acq_rel)) return true;
    }
    return false;
}

float LevelMeter::value(Info info) {
    takeRequests();
    Handed handed{};
    if (take(handed)) {
        feed(handed);
        stale_ = false;
    } else {
        fallByClock(timer_.elapsed());
    }
    return info <= Extreme ? readings_[static_cast<std::size_t>(info)].value : settings_.rest.load();
}

void LevelMeter::takeRequests() {
    if (resetRequested_.exchange(false, std::memory_order_acquire)) rest(false);
    if (limitsChanged_.exchange(false, std::memory_order_acquire)) {
        for (Reading& reading : readings_) reading.value = limited(reading.value);
    }
    if (peakResetRequested_.exchange(false, std::memory_order_acquire)) {
        clip_ = false;
        readings_[kPeak].counter = settings_.hold[kPeak] + 1;
        readings_[kAbsolute].value = secondPeak_ = settings_.rest;
    }
}

void LevelMeter::rest(bool everything) {
    const float restLevel = settings_.rest;
    secondPeak_ = readings_[kFast].value = restLevel;
    for (Reading& reading : readings_) reading.counter = 0;
    if (clip_ && !everything) return;
    readings_[kPeak].value = readings_[kAbsolute].value = restLevel;
}

void LevelMeter::fallByClock(std::int64_t elapsedMs) {
    // Two host blocks may lie between two hand-overs of a stream that runs.
    const float rate = settings_.sampleRate;
    const float blockMs = 2000.0f * static_cast<float>(environment().hostBlockSamples()) / rate;
    if (static_cast<float>(elapsedMs) <= std::max(settings_.staleTime.load(), blockMs) &&
        (!stale_ || elapsedMs < 1)) {
        return;
    }
    const float restLevel = settings_.rest;
    if (readings_[kFast].value != restLevel || readings_[kPeak].value != restLevel) {
        const auto fallMs = static_cast<double>(std::min(elapsedMs, kLongestFallMs));
        feed({settings_.seed, samplesInMs(fallMs, rate)});
    }
    stale_ = true;
}

void LevelMeter::feed(Handed handed) {
    if (settings_.toDecibel) {
        const double amplitude = settings_.fromPower ? std::sqrt(std::max(handed.value, 0.0f)) : handed.value;
        handed.value = static_cast<float>(dbFromGain(amplitude));
    }
    for (int i = 0; i < static_cast<int>(readings_.size()); ++i) update(i, handed);
    timer_.reset();
}

bool LevelMeter::isAbove(float a, float b) const {
    return settings_.detection == Maximum ? a > b : a < b;
}

// While an owner moves both limits they may cross for a moment.
float LevelMeter::limited(float x) const {
    return std::max(std::min(x, settings_.maximum.load()), settings_.minimum.load());
}

void LevelMeter::update(int index, Handed handed) {
    Reading& reading = readings_[static_cast<std::size_t>(index)];
    const auto [x, count] = handed;
    reading.counter = saturatedSum(reading.counter, count);
    if (index == kPeak && x > 0.0f && settings_.clipIndicator && settings_.detection == Maximum &&
        settings_.maximum > 0.0f) {
        clip_ = true;
    }
    const bool canFall = index == kFast || (index == kPeak && !clip_);
    if (canFall && static_cast<float>(count) > settings_.sampleRate) {
        // Over a second at once: nothing that stood before is true any more, but what came is.
        reading.value = settings_.rest;
        if (index == kPeak) secondPeak_ = settings_.rest;
    }
    if (isAbove(x, reading.value)) {
        reading.value = limited(x);
        reading.counter = 0;
        return;
    }
    if (!canFall) return;
    const auto place = static_cast<std::size_t>(index);
    const int hold = settings_.hold[place];
    if (reading.counter > hold) {
        float fallen = extreme(settings_.slope[place] * static_cast<float>(count) + reading.value, x);
        if (index == kPeak && isAbove(secondPeak_, fallen)) {
            // What stayed a little below the peak is held in its turn.
            reading.counter = 0;
            fallen = secondPeak_;
            secondPeak_ = settings_.rest;
        }
        reading.value = limited(fallen);
    } else if (index == kPeak && reading.counter > hold / 2 && reading.counter < hold) {
        secondPeak_ = extreme(secondPeak_, x);
    }
}

}  // namespace vanta
