#include "dsp/metering/loudness_meter.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/kernel/scan.hpp"
#include "dsp/metering/loudness.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr float kMomentaryMs = 400.0f;
constexpr float kShortTermMs = 3000.0f;
constexpr int kMomentaryStrides = 4;
constexpr int kShortTermStrides = 30;

constexpr int kLfe = 0x1000;
constexpr int kAngle = 0xFF;
constexpr float kSideWeight = 1.41f;
constexpr int kSideFrom = 60;
constexpr int kSideTo = 120;

constexpr float kSound = 1e-12f;  ///< the mean square that begins a measurement
constexpr double kPeakSeconds = 2.0;
constexpr int kPeakMs = 2000;
constexpr int kStaleMs = 100;

float weightOf(int typeWord) {
    if (typeWord & kLfe) return 0.0f;
    const int angle = typeWord & kAngle;
    return angle >= kSideFrom && angle <= kSideTo ? kSideWeight : 1.0f;
}

}  // namespace

LoudnessMeter::ChannelFilter::ChannelFilter(wave::Environment& owner)
    : Filter(owner, wave::OwnBlock::No),
      input(owner, *this),
      weighting(owner),
      fourHundredMs(owner, kMomentaryMs),
      threeSeconds(owner, kShortTermMs) {
    weighting.source = &input;
    fourHundredMs.source = threeSeconds.source = &weighting;
    fourHundredMs.domain = RMSFilter::Power;
    threeSeconds.domain = RMSFilter::Power;
    fourHundredMs.window.parameter().setRange(0.0f, kMomentaryMs);
    fourHundredMs.window.parameter().setValue(kMomentaryMs, 0.0f);
    threeSeconds.window.parameter().setRange(0.0f, kShortTermMs);
    threeSeconds.window.parameter().setValue(kShortTermMs, 0.0f);
}

void LoudnessMeter::ChannelFilter::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*,
                                           int samples, int) {
    fourHundredMs.pull(samples);
    publish(fourHundredMs);
}

void LoudnessMeter::ChannelFilter::clear() {
    weighting.processor.restart();
    fourHundredMs.clear();
    threeSeconds.clear();
}

LoudnessMeter::LoudnessMeter(wave::Environment& owner, SteadyIntervalTimer::Clock clock)
    : Source(owner, wave::OwnBlock::No),
      precision(this, 1),
      enabled(this, true),
      autoReset(this, false),
      gateMomentary(kMomentaryStrides),
      mixerMomentary(owner, kMaxChannels),
      gateShortTerm(kShortTermStrides),
      mixerShortTerm(owner, kMaxChannels),
      timer(clock) {
    for (int i = 0; i < SourceCount; ++i) {
        sources[static_cast<std::size_t>(i)] = std::make_unique<LoudnessSource>(*this, i);
    }
    // The weight of side channels lies above 1.
    mixerMomentary.widenGainRange();
    mixerShortTerm.widenGainRange();
    clear();
    makeResettable();
    setScheduled(wave::Environment::kBackGroup);
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::setChannel(int index, int typeWord, ChannelFilter& filter) {
    const float weight = weightOf(typeWord);
    mixerMomentary.setInput(index, &filter);
    mixerMomentary.gain(index).parameter().setValue(weight, 0.0f);
    mixerShortTerm.setInput(index, &filter.shortTerm());
    mixerShortTerm.gain(index).parameter().setValue(weight, 0.0f);
    filters.push_back(&filter);
}

void LoudnessMeter::propertyChanged(AbstractProperty& property) {
    if (&property == &enabled) measuring.store(enabled, std::memory_order_relaxed);
}

void LoudnessMeter::reset() {
    clear();
}

void LoudnessMeter::clear() {
    const double rate = environment().sampleRate();
    gateMomentary.reset(rate);
    gateShortTerm.reset(rate);
    waiting = true;
    for (auto& source : sources) source->clear();
    for (ChannelFilter* filter : filters) filter->clear();
}

void LoudnessMeter::takeRequests() {
    if (resetRequested.load(std::memory_order_acquire)) {
        clear();
        resetRequested.store(false, std::memory_order_release);
    }
    for (auto& source : sources) source->takeRequests();
}

void LoudnessMeter::produce(wave::BasicBlock<float>*, int samples, int) {
    publishSilence();
    takeRequests();
    if (autoReset && !environment().meteringActive()) {
        if (!waiting) clear();
        return;
    }
    if (enabled) measure(samples);
}

int LoudnessMeter::firstSound(const float* block, int samples) const {
    return static_cast<int>(
        std::find_if(block, block + samples, [](float x) { return std::abs(x) > kSound; }) - block);
}

void LoudnessMeter::measure(int samples) {
    const float* momentary = mixerMomentary.pullData(samples);
    const float* shortTerm = mixerShortTerm.pullData(samples);
    // Silence in front of the programme counts for nothing.
    const int first = waiting ? firstSound(momentary, samples) : 0;
    if (first == samples) return;
    // The gated figures change ten times a second, and when a measurement begins.
    if (gateMomentary.feed(momentary + first, samples - first) || waiting) updateIntegrated();
    if (gateShortTerm.feed(shortTerm + first, samples - first) || waiting) updateRange();
    sources[MomentarySource]->take(momentary, samples);
    sources[ShortTermSource]->take(shortTerm, samples);
    newData.store(true, std::memory_order_release);
    waiting = false;
}

float LoudnessMeter::rounded(double meanSquare) const {
    return roundedLoudness(loudnessOf(meanSquare), precision);
}

void LoudnessMeter::updateIntegrated() {
    sources[IntegratedSource]->set(LevelSource::Current, rounded(gateMomentary.gatedMeanSquare()));
}

void LoudnessMeter::updateRange() {
    const auto [low, high] = gateShortTerm.range();
    sources[IntegratedSource]->set(LevelSource::Range, high - low);
    sources[IntegratedSource]->set(LevelSource::RangeLow, low);
}

LoudnessMeter::LoudnessSource::LoudnessSource(LoudnessMeter& owner, int sourceIndex)
    : meter(owner), index(sourceIndex) {
    clear();
}

void LoudnessMeter::LoudnessSource::clear() {
    for (auto& value : values) value.store(kNoLoudness, std::memory_order_relaxed);
    counter = 0;
}

void LoudnessMeter::LoudnessSource::clearPeaks() {
    set(Highest, kNoLoudness);
    set(Extreme, kNoLoudness);
}

void LoudnessMeter::LoudnessSource::takeRequests() {
    if (!peakResetRequested.load(std::memory_order_acquire)) return;
    clearPeaks();
    peakResetRequested.store(false, std::memory_order_release);
}

void LoudnessMeter::LoudnessSource::take(const float* block, int samples) {
    const double rate = meter.environment().sampleRate();
    set(Current, meter.rounded(block[samples - 1]));
    const int window = samplesInSeconds(kPeakSeconds, rate);
    counter = std::min(counter + samples, window + 1);
    if (counter > window) set(Highest, kNoLoudness);
    const float peak = meter.rounded(kernel::highest(block, static_cast<std::size_t>(samples)));
    if (peak > get(Highest)) {
        set(Highest, peak);
        counter = 0;
    }
    set(Extreme, std::max(get(Extreme), peak));
}

void LoudnessMeter::LoudnessSource::resetMeasurement() {
    if (index == IntegratedSource) meter.requestReset();
}

float LoudnessMeter::LoudnessSource::value(Info info) {
    if (meter.newData.exchange(false, std::memory_order_acq_rel)) meter.timer.reset();
    if (meter.resetRequested.load(std::memory_order_acquire)) return kNoLoudness;
    const bool isPeak = info == Highest || info == Extreme;
    if (isPeak && peakResetRequested.load(std::memory_order_acquire)) return kNoLoudness;
    const int elapsed = meter.timer.elapsed();
    const float blockMs = 2000.0f * static_cast<float>(meter.environment().hostBlockSamples()) /
                          meter.environment().sampleRate();
    const bool runs = static_cast<float>(elapsed) <= std::max(static_cast<float>(kStaleMs), blockMs);
    if (index == IntegratedSource || info == Extreme || !meter.measuring.load(std::memory_order_relaxed) ||
        runs) {
        return get(info);
    }
    return runningDown(info, elapsed);
}

// After the audio has stopped the window seems to empty.
float LoudnessMeter::LoudnessSource::runningDown(Info info, int elapsedMs) const {
    if (info != Current) return elapsedMs > kPeakMs ? kNoLoudness : get(info);
    const double window = index == ShortTermSource ? kShortTermMs : kMomentaryMs;
    const float level = get(Current);
    if (elapsedMs >= window || level <= kNoLoudness) return kNoLoudness;
    return loudnessOf(meanSquareOf(level) * (1.0 - elapsedMs / window));
}

}  // namespace vanta
