#pragma once

#include <limits>
#include <memory>

#include "wave/producer.hpp"

namespace vanta::sr {

class ConverterBase;

/// What the converters of all channels share: the kind of filter, its tables, the factor.
class ConverterStyleBase : public wave::Component {
public:
    using Component::Component;
    virtual ~ConverterStyleBase() = default;

    /// New converters, for one channel each. The style must outlive them.
    virtual std::unique_ptr<ConverterBase> createDecimator() = 0;
    virtual std::unique_ptr<ConverterBase> createInterpolator() = 0;
    /// Delay up and down again in samples of the base rate.
    virtual int latency(int factor) const = 0;
    virtual int maxFactor() const = 0;
    /// A power of two; at 1 nothing is converted.
    virtual int factor() const = 0;
    /// A real change rebuilds the converters of the environment and resets its active nodes. Allocates.
    virtual void setFactor(int factor) = 0;
};

/// Converts one channel between two rates. It knows nothing of the graph.
class ConverterBase : public wave::Component {
public:
    using Component::Component;
    virtual ~ConverterBase() = default;

    /// `count` samples at the lower rate, `factor` times as many at the higher one. False, and nothing is
    /// written, if the factor is 1.
    VANTA_REALTIME virtual bool convert(const float* in, float* out, int count) = 0;
    /// Rebuilds the converter from its style, and starts anew from silence. Allocates where the factor, the
    /// block size or the design has changed.
    virtual void update() = 0;
    /// Starts anew from silence.
    VANTA_REALTIME virtual void reset() = 0;
    /// How many samples of silence, at the lower rate, leave nothing else behind; kForever for what rings on.
    virtual int memory() const { return kForever; }

    static constexpr int kForever = std::numeric_limits<int>::max();
};

}  // namespace vanta::sr
