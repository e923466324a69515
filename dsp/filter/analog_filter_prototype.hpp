#pragma once

#include <array>
#include <complex>
#include <span>

namespace vanta {

/// A transfer function of s. Frequencies are angular, in units of the frequency scale, which is the cut-off.
class AnalogFilterPrototypeBase {
public:
    virtual ~AnalogFilterPrototypeBase() = default;

    virtual std::complex<double> response(double frequency) const = 0;
    /// For a block of frequencies; both spans have one length.
    virtual void squaredMagnitudes(std::span<const double> frequencies, std::span<double> result) const;
    virtual double squaredMagnitude(double frequency) const;
    /// The frequency that counts as 1 from here on.
    virtual void setFrequencyScale(double scale) { frequencyScale_ = scale; }

protected:
    double scaled(double frequency) const { return frequency / frequencyScale_; }

private:
    double frequencyScale_ = 1.0;
};

/// Butterworth filters in the s-plane, as a cascade of sections, with a resonance on the first one.
class AnalogFilterPrototype final : public AnalogFilterPrototypeBase {
public:
    static constexpr int kMaxSections = 8;

    enum Shape { LowPass = 0, HighPass = 3, HighShelf = 4 };

    /// (b2 s^2 + b1 s + b0) / (a2 s^2 + a1 s + a0)
    struct BiquadPrototype final : AnalogFilterPrototypeBase {
        BiquadPrototype() = default;
        BiquadPrototype(double nb2, double nb1, double nb0, double da2, double da1, double da0)
            : b2(nb2), b1(nb1), b0(nb0), a2(da2), a1(da1), a0(da0) {}

        bool firstOrder() const;
        /// s to 1/s: a low-pass becomes a high-pass.
        void invertFrequency();
        std::complex<double> response(double frequency) const override;

        double b2 = 0.0, b1 = 0.0, b0 = 1.0;
        double a2 = 0.0, a1 = 0.0, a0 = 1.0;
    };

    /// Whether `design` makes a filter of this shape; of any other it makes a wire.
    static bool supports(int shape) { return shape == LowPass || shape == HighPass || shape == HighShelf; }
    static bool usesGain(int shape) { return shape == HighShelf; }

    /// `order` is 1 to 2 kMaxSections. `q` is that of the first section, if it is of the second order: 2 to
    /// the power -0.5 gives the plain Butterworth response. `gain` is the shelf's amplitude factor.
    void design(int shape, int order, double q, double gain);

    std::span<const BiquadPrototype> sections() const { return {sections_.data(), sectionCount_}; }
    std::complex<double> response(double frequency) const override;

private:
    std::array<BiquadPrototype, kMaxSections> sections_;
    std::size_t sectionCount_ = 0;
};

}  // namespace vanta
