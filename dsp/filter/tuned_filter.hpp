#pragma once

#include <array>
#include <initializer_list>
#include <span>

#include "dsp/filter/biquad_filter.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// A filter that follows control signals, the first of which is a frequency in octaves (log2 of hertz). Small
/// movements are followed every 32 samples, a frequency that runs faster than a tenth of an octave every 4.
class TunedFilter : public BiquadFilter {
public:
    void reset() override;

protected:
    static constexpr int kMaxControls = 3;
    static constexpr int kFrequency = 0;

    using Values = std::array<float, kMaxControls>;

    TunedFilter(wave::Environment& owner, int maxSections,
                std::initializer_list<wave::FloatParameterBus*> controls);

    void updateCoefficients(int samples, BiquadProcessor& target) final;

    /// Whether the kind of filter has changed since the last call; takes the new kind.
    VANTA_REALTIME virtual bool takeKind() = 0;
    /// Sections that the present kind needs.
    virtual int sectionsInUse() const = 0;
    /// Fills `sections`, of which `sectionsInUse` count, for control values of the order of construction.
    /// Returns the amount of the filter against the dry signal, 0 to 1.
    VANTA_REALTIME virtual float design(const Values& values, std::span<BiquadCoefficients> sections) = 0;

private:
    Values valuesAt(int sample) const;
    bool differs(const Values& values) const;
    void follow(int samples, BiquadProcessor& target);
    void redesign(const Values& values);
    void queue(int samples, BiquadProcessor& target);

    std::array<wave::FloatParameterBus*, kMaxControls> controls_{};
    std::array<const float*, kMaxControls> blocks_{};
    int controlCount_;
    Values lastValues_{};
    std::vector<BiquadCoefficients> sections_;
    float amount_ = 1.0f;
};

}  // namespace vanta
