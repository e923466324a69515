#include "dsp/detector/detector.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/detector/detector_curve.hpp"
#include "foundation/numbers.hpp"
#include "kernel/detector_kernels.hpp"
#include "kernel/level_math.hpp"
#include "kernel/mix.hpp"
#include "kernel/scan.hpp"

namespace vanta {

namespace {

constexpr float kInfiniteRatio = 100.0f;
constexpr float kNoLimitDb = 180.0f;
/// How far below the bend of the curve nothing is certain to happen.
constexpr double kSafeDb = 0.001;

}  // namespace

struct Detector::Control {
    Control(wave::FloatParameterBus& bus, int samples)
        : data(bus.pullData(samples)), constant(bus.isConstant()) {}

    bool isConstantly(float value) const { return constant && nearlyEqual(data[0], value); }

    const float* data;
    bool constant;
};

struct Detector::Controls {
    Controls(Detector& owner, int samples)
        : knee(owner.knee, samples),
          threshold(owner.threshold, samples),
          hysteresis(owner.hysteresis, samples),
          ratio(owner.ratio, samples),
          limit(owner.limit, samples) {}

    kernel::DetectorControls blocks() const { return {knee.data, threshold.data, ratio.data, limit.data}; }
    detector_curve::Point at(std::size_t i) const {
        return {knee.data[i], threshold.data[i], hysteresis.data[i], ratio.data[i], limit.data[i]};
    }

    Control knee, threshold, hysteresis, ratio, limit;
};

Detector::Detector(wave::Environment& owner)
    : Source(owner),
      domain(this, GainChangeDomain::Amplitude),
      purpose(this, Compress),
      kneeStyle(this, Normal),
      knee(owner, 0.0f, 0.0f, 30.0f),
      threshold(owner, 0.0f, -180.0f, 180.0f),
      hysteresis(owner, 0.0f, 0.0f, 30.0f),
      ratio(owner, 1.0f, 1.0f, 100.0f),
      limit(owner, 180.0f, 0.0f, 180.0f) {
    makeResettable();
}

void Detector::produce(wave::BasicBlock<float>* block, int samples, int) {
    const Controls c(*this, samples);
    if (kneeStyle != Clipping && c.ratio.isConstantly(1.0f)) {
        publishNeutral(*block, samples);
        return;
    }
    if (staysBelow(c, samples)) {
        publishSilence();
        return;
    }
    const auto count = static_cast<std::size_t>(samples);
    const float* level = source->pullData(samples);
    float* result = block->data();
    const bool done = kneeStyle == Clipping   ? clip(c, level, result, count)
                      : purpose == ExpandDown ? expandDown(c, level, result, count)
                      : purpose == ExpandUp   ? expandUp(c, level, result, count)
                                              : compress(c, level, result, count);
    if (!done) computeEach(c, level, result, count);
}

void Detector::publishNeutral(wave::BasicBlock<float>& out, int samples) {
    if (purpose == Compress || domain != GainChangeDomain::Amplitude) {
        publishSilence();
        return;
    }
    kernel::fill(1.0f, out.data(), static_cast<std::size_t>(samples));
    setConstant(true);
}

/// Whether the block is certain to change no gain, by much more than the roundings on the way.
bool Detector::staysBelow(const Controls& c, int samples) {
    const bool decibels = domain != GainChangeDomain::Amplitude;
    if (kneeStyle == Clipping || purpose == ExpandDown || (purpose == ExpandUp && !decibels)) return false;
    const auto count = static_cast<std::size_t>(samples);
    const auto low = [&](const Control& x) { return x.constant ? x.data[0] : kernel::lowest(x.data, count); };
    const auto high = [&](const Control& x) {
        return x.constant ? x.data[0] : kernel::highest(x.data, count);
    };
    // Below 1 a ratio turns the curve round.
    if (low(c.ratio) < 1.0f) return false;
    const double edgeDb = double{low(c.threshold)} - 0.5 * double{high(c.knee)} - kSafeDb;
    const bool converted = decibels && !amplitude;
    const auto edge = static_cast<float>(converted ? edgeDb : kernel::limitedExp(edgeDb * kDbToLog));
    const float* level = (decibels && amplitude ? amplitude : source)->pullData(samples);
    if (converted) return level[0] < edge && kernel::highest(level, count) < edge;
    return std::abs(level[0]) < edge && kernel::highestMagnitude(level, count) < edge;
}

// Each of the following runs the vector form for its settings, or returns false if there is none.

bool Detector::compress(const Controls& c, const float* in, float* out, std::size_t count) const {
    const bool infinite = c.ratio.constant && c.ratio.data[0] >= kInfiniteRatio;
    const bool noKnee = c.knee.isConstantly(0.0f);
    if (domain != GainChangeDomain::Amplitude) {
        if (noKnee && infinite) {
            kernel::limitDecibels(in, c.blocks(), out, count);
        } else {
            kernel::compressDecibels(in, c.blocks(), out, count);
        }
    } else if (!noKnee || !c.limit.constant || c.limit.data[0] < kNoLimitDb) {
        kernel::compressAmplitude(in, c.blocks(), out, count);
    } else if (infinite && c.threshold.constant) {
        kernel::limitAmplitudeSteady(in, c.threshold.data[0], out, count);
    } else if (infinite) {
        kernel::limitAmplitude(in, c.threshold.data, out, count);
    } else if (c.ratio.constant) {
        kernel::compressAmplitudeHardSteady(in, c.threshold.data, c.ratio.data[0], out, count);
    } else {
        kernel::compressAmplitudeHard(in, c.blocks(), out, count);
    }
    return true;
}

bool Detector::expandDown(const Controls& c, const float* in, float* out, std::size_t count) {
    // Below 0 a hysteresis would open and close at the same level, which only the loop over samples follows.
    if (!c.knee.constant || !c.hysteresis.constant || c.hysteresis.data[0] < 0.0f) return false;
    if (domain == GainChangeDomain::Amplitude) {
        kernel::expandDownAmplitude(in, c.blocks(), c.hysteresis.data[0], open_, out, count);
    } else {
        kernel::expandDownDecibels(in, c.blocks(), c.hysteresis.data[0], open_, out, count);
    }
    return true;
}

bool Detector::expandUp(const Controls& c, const float* in, float* out, std::size_t count) const {
    if (domain == GainChangeDomain::Amplitude) return false;
    kernel::expandUpDecibels(in, c.blocks(), out, count);
    return true;
}

bool Detector::clip(const Controls& c, const float* in, float* out, std::size_t count) const {
    const bool inAmplitude = domain == GainChangeDomain::Amplitude;
    if (!inAmplitude || purpose != Compress || !c.threshold.constant || !c.limit.constant) return false;
    kernel::clipAmplitude(in, c.threshold.data[0], c.limit.data[0], out, count);
    return true;
}

void Detector::computeEach(const Controls& c, const float* in, float* out, std::size_t count) {
    namespace curve = detector_curve;
    const bool inAmplitude = domain == GainChangeDomain::Amplitude;
    const bool clips = kneeStyle == Clipping;
    const bool lifts = !clips && purpose == ExpandUp;
    const bool isGain = !clips && purpose != Compress;
    for (std::size_t i = 0; i < count; ++i) {
        const curve::Point point = c.at(i);
        const double x = in[i];
        double change = 0.0;
        if (clips) {
            change = curve::clipping(inAmplitude ? x : kernel::limitedExp(x * kDbToLog), point.threshold);
        } else {
            const double level = inAmplitude ? dbFromGain(x) : x;
            change = lifts                   ? curve::upwardExpansion(level, point)
                     : purpose == ExpandDown ? curve::downwardExpansion(level, point, open_)
                                             : curve::compression(level, point);
        }
        change = std::max(std::min(change, point.limit), 0.0);
        if (inAmplitude) {
            const double gain = kernel::limitedExp((lifts ? change : -change) * kDbToLog);
            change = isGain ? gain : 1.0 - gain;
        }
        out[i] = static_cast<float>(change);
    }
}

}  // namespace vanta
