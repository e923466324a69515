#include "dsp/metering/loudness_meter.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/metering/loudness.hpp"
#include "foundation/numbers.hpp"
#include "kernel/scan.hpp"

namespace vanta {

namespace {

constexpr float kMomentaryMs = 400.0f;
constexpr float kShortTermMs = 3000.0f;
constexpr int kMomentaryStrides = 4;
constexpr int kShortTermStrides = 30;

constexpr float kSideWeight = 1.41f;
constexpr int kSideFrom = 60;
constexpr int kSideTo = 120;

constexpr float kSound = 1e-12f;  ///< the mean square that begins a measurement
constexpr double kPeakSeconds = 2.0;
constexpr int kPeakMs = 2000;
constexpr int kStaleMs = 100;

float weightOf(int typeWord) {
    if (typeWord & kLfeChannel) return 0.0f;
    const int angle = typeWord & kAngleMask;
    return angle >= kSideFrom && angle <= kSideTo ? kSideWeight : 1.0f;
}

}  // namespace

LoudnessMeter::ChannelFilter::ChannelFilter(wave::Environment& owner)
    : Filter(owner, wave::OwnBlock::No),
      input_(owner, *this),
      weighting_(owner),
      fourHundredMs_(owner, kMomentaryMs),
      threeSeconds_(owner, kShortTermMs) {
    weighting_.source = &input_;
    fourHundredMs_.source = threeSeconds_.source = &weighting_;
    fourHundredMs_.domain = RMSFilter::Power;
    threeSeconds_.domain = RMSFilter::Power;
    fourHundredMs_.window.parameter().setRange(0.0f, kMomentaryMs);
    fourHundredMs_.window.parameter().setValue(kMomentaryMs, 0.0f);
    threeSeconds_.window.parameter().setRange(0.0f, kShortTermMs);
    threeSeconds_.window.parameter().setValue(kShortTermMs, 0.0f);
}

void LoudnessMeter::ChannelFilter::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*,
                                           int samples, int) {
    fourHundredMs_.pull(samples);
    publish(fourHundredMs_);
}

void LoudnessMeter::ChannelFilter::keepWindows() {
    fourHundredMs_.keepThroughResets();
    threeSeconds_.keepThroughResets();
}

void LoudnessMeter::ChannelFilter::reset() {
    weighting_.processor.restart();
    fourHundredMs_.reset();
    threeSeconds_.reset();
}

LoudnessMeter::LoudnessMeter(wave::Environment& owner, SteadyIntervalTimer::Clock clock)
    : Source(owner, wave::OwnBlock::No),
      precision(this, 1),
      enabled(this, true),
      autoReset(this, false),
      warmUpSamples(nullptr, 0),
      gateMomentary_(kMomentaryStrides),
      mixerMomentary_(owner, kMaxChannels),
      gateShortTerm_(kShortTermStrides),
      mixerShortTerm_(owner, kMaxChannels),
      timer_(clock) {
    for (int i = 0; i < SourceCount; ++i) {
        sources_[static_cast<std::size_t>(i)] = std::make_unique<LoudnessSource>(*this, i);
    }
    // The weight of side channels lies above 1.
    mixerMomentary_.widenGainRange();
    mixerShortTerm_.widenGainRange();
    reset();
    makeResettable();
    keepThroughResets();
    setScheduled(wave::Environment::kBackGroup);
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::setChannel(int index, int typeWord, ChannelFilter& filter) {
    const float weight = weightOf(typeWord);
    mixerMomentary_.setInput(index, &filter);
    mixerMomentary_.gain(index).parameter().setValue(weight, 0.0f);
    mixerShortTerm_.setInput(index, &filter.shortTerm());
    mixerShortTerm_.gain(index).parameter().setValue(weight, 0.0f);
    filter.keepWindows();
    filters_.push_back(&filter);
}

void LoudnessMeter::propertyChanged(AbstractProperty& property) {
    if (&property == &enabled) measuring_.store(enabled, std::memory_order_relaxed);
}

void LoudnessMeter::reset() {
    const double rate = environment().sampleRate();
    sampleRate_.store(environment().sampleRate(), std::memory_order_relaxed);
    gateMomentary_.reset(rate);
    gateShortTerm_.reset(rate);
    waiting_ = true;
    for (auto& source : sources_) source->clear();
    for (ChannelFilter* filter : filters_) filter->reset();
}

void LoudnessMeter::takeRequests() {
    if (resetRequested_.load(std::memory_order_acquire)) {
        reset();
        resetRequested_.store(false, std::memory_order_release);
    }
    for (auto& source : sources_) source->takeRequests();
}

void LoudnessMeter::produce(wave::BasicBlock<float>*, int samples, int) {
    publishSilence();
    takeRequests();
    const bool warmsUp = isWarmingUp(samples);
    if (autoReset && !environment().meteringActive()) {
        if (!waiting_) reset();
        return;
    }
    if (!enabled) return;
    if (!warmsUp) return measure(samples);
    for (ChannelFilter* filter : filters_) filter->weighted().pull(samples);
}

// What a path that was at rest puts out until its signal comes is no silence of the programme.
bool LoudnessMeter::isWarmingUp(int samples) {
    if (!stream_.follows(environment(), samples)) warmUpLeft_ = warmUpSamples;
    if (warmUpLeft_ <= 0) return false;
    warmUpLeft_ -= samples;
    return true;
}

int LoudnessMeter::firstSound(const float* block, int samples) const {
    return static_cast<int>(
        std::find_if(block, block + samples, [](float x) { return std::abs(x) > kSound; }) - block);
}

void LoudnessMeter::measure(int samples) {
    const float* momentary = mixerMomentary_.pullData(samples);
    const float* shortTerm = mixerShortTerm_.pullData(samples);
    // Silence in front of the programme counts for nothing.
    const int first = waiting_ ? firstSound(momentary, samples) : 0;
    if (first == samples) return;
    // The gated figures change ten times a second, and when a measurement begins.
    if (gateMomentary_.feed(momentary + first, samples - first) || waiting_) updateIntegrated();
    if (gateShortTerm_.feed(shortTerm + first, samples - first) || waiting_) updateRange();
    sources_[MomentarySource]->take(momentary, samples);
    sources_[ShortTermSource]->take(shortTerm, samples);
    newData_.store(true, std::memory_order_release);
    waiting_ = false;
}

float LoudnessMeter::rounded(double meanSquare) const {
    return roundedLoudness(loudnessOf(meanSquare), precision);
}

void LoudnessMeter::updateIntegrated() {
    sources_[IntegratedSource]->set(wave::LevelSource::Current, rounded(gateMomentary_.gatedMeanSquare()));
}

void LoudnessMeter::updateRange() {
    const auto [low, high] = gateShortTerm_.range();
    sources_[IntegratedSource]->set(wave::LevelSource::Range, high - low);
    sources_[IntegratedSource]->set(wave::LevelSource::RangeLow, low);
}

LoudnessMeter::LoudnessSource::LoudnessSource(LoudnessMeter& meter, int index)
    : meter_(meter), index_(index) {
    clear();
}

void LoudnessMeter::LoudnessSource::clear() {
    for (auto& value : values_) value.store(kNoLoudness, std::memory_order_relaxed);
    counter_ = 0;
}

void LoudnessMeter::LoudnessSource::clearPeaks() {
    set(Highest, kNoLoudness);
    set(Extreme, kNoLoudness);
}

void LoudnessMeter::LoudnessSource::takeRequests() {
    if (!peakResetRequested_.load(std::memory_order_acquire)) return;
    clearPeaks();
    peakResetRequested_.store(false, std::memory_order_release);
}

void LoudnessMeter::LoudnessSource::take(const float* block, int samples) {
    const double rate = meter_.environment().sampleRate();
    set(Current, meter_.rounded(block[samples - 1]));
    const int window = samplesInSeconds(kPeakSeconds, rate);
    counter_ = std::min(counter_ + samples, window + 1);
    if (counter_ > window) set(Highest, kNoLoudness);
    const float peak = meter_.rounded(kernel::highest(block, static_cast<std::size_t>(samples)));
    if (peak > get(Highest)) {
        set(Highest, peak);
        counter_ = 0;
    }
    set(Extreme, std::max(get(Extreme), peak));
}

void LoudnessMeter::LoudnessSource::resetMeasurement() {
    if (index_ == IntegratedSource) meter_.requestReset();
}

float LoudnessMeter::LoudnessSource::value(Info info) {
    if (meter_.newData_.exchange(false, std::memory_order_acq_rel)) meter_.timer_.reset();
    if (meter_.resetRequested_.load(std::memory_order_acquire)) return kNoLoudness;
    const bool isPeak = info == Highest || info == Extreme;
    if (isPeak && peakResetRequested_.load(std::memory_order_acquire)) return kNoLoudness;
    const std::int64_t elapsed = meter_.timer_.elapsed();
    const float blockMs = 2000.0f * static_cast<float>(meter_.environment().hostBlockSamples()) /
                          meter_.sampleRate_.load(std::memory_order_relaxed);
    const bool runs = static_cast<float>(elapsed) <= std::max(static_cast<float>(kStaleMs), blockMs);
    if (index_ == IntegratedSource || info == Extreme || !meter_.measuring_.load(std::memory_order_relaxed) ||
        runs) {
        return get(info);
    }
    return runningDown(info, elapsed);
}

// After the audio has stopped the window seems to empty.
float LoudnessMeter::LoudnessSource::runningDown(Info info, std::int64_t elapsedMs) const {
    if (info != Current) return elapsedMs > kPeakMs ? kNoLoudness : get(info);
    const double window = index_ == ShortTermSource ? kShortTermMs : kMomentaryMs;
    const float level = get(Current);
    const auto passed = static_cast<double>(elapsedMs);
    if (passed >= window || level <= kNoLoudness) return kNoLoudness;
    return loudnessOf(meanSquareOf(level) * (1.0 - passed / window));
}

}  // namespace vanta
