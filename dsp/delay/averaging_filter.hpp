#pragma once

#include <vector>

#include "foundation/property.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Sliding mean over a window that may differ from sample to sample: of the signal, of a power of it (2 with
/// a root at the end is the root mean square), or of the linear factor behind a gain reduction in dB. The
/// effort does not depend on the window. A window that grows takes back samples that it had dropped. No
/// latency.
class AveragingFilter final : public wave::Filter, public PropertyOwner {
public:
    enum Conversion : int {
        Plain,
        GainReduction  ///< positive dB, averaged as a factor
    };

    AveragingFilter(wave::Environment& owner, float largestWindowMs);

    void prepare() override;
    void reset() override;

    Property<int> conversion;        ///< Conversion
    Property<bool> enabled;          ///< false: the input is handed on
    LimitedProperty<float> power;    ///< 0.1 to 10
    Property<bool> keepSign;         ///< a power keeps the sign of its sample
    wave::FloatParameterBus window;  ///< ms, 0 to the largest

protected:
    bool settled() const override { return !enabled || standstill_ == static_cast<int>(history_.size()); }
    void propertyChanged(AbstractProperty& property) override;
    VANTA_REALTIME void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                                int flags) override;

private:
    int windowSamples(float ms) const;
    bool plain() const { return unitPower_ && conversion == Plain; }
    VANTA_REALTIME float store(float sample);
    VANTA_REALTIME float meanOf(double sum, int samples) const;
    VANTA_REALTIME void setSpan(int samples);
    VANTA_REALTIME void push(float stored);
    VANTA_REALTIME void averageSteadily(const float* in, float* out, int samples);
    VANTA_REALTIME void averageVarying(const float* in, const float* windowMs, float* out, int samples);
    VANTA_REALTIME void followStandstill(const float* in, int samples);

    float largestWindowMs_;
    /// The floats that went into the sum. A double holds the sum of that many of them all but exactly, so
    /// what comes in goes out again, and nothing is left behind. What was never written is 0.
    std::vector<float> history_;
    int readPosition_ = 0;
    int writePosition_ = 0;
    int span_ = 0;  ///< entries in the sum
    double sum_ = 0.0;
    int standstill_ = 0;  ///< how many of the newest entries are known to be equal
    float lastStored_ = 0.0f;
    bool unitPower_ = true;
};

}  // namespace vanta
