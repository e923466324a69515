#pragma once

#include <vector>

#include "dsp/convolver/fft.hpp"
#include "foundation/granular_task.hpp"
#include "kernel/convolver_kernels.hpp"

namespace vanta {

/// A part of a convolution's work on spectra of one size. A task that has nothing to do in a pass has no
/// grains in it.
class FFTTask : public GranularTask {
public:
    explicit FFTTask(const FFT& fft) : fft_(fft) {}

protected:
    const FFT& fft_;
};

/// A forward transform.
class FFTCalculateTask : public FFTTask {
public:
    /// Tasks that never run at the same time may share their work memory.
    FFTCalculateTask(const FFT& fft, FFT::Work& work) : FFTTask(fft), work_(work) {}

    /// For the next pass: two halves of samples, and where their spectrum goes.
    void set(const float* firstHalf, const float* secondHalf, float* spectrum) {
        firstHalf_ = firstHalf;
        secondHalf_ = secondHalf;
        spectrum_ = spectrum;
    }
    /// Nothing in the next pass.
    void skip() { spectrum_ = nullptr; }

    void prepare() override { grainCount = spectrum_ ? fft_.grains() : 0; }
    void run(int firstGrain, int count) override {
        fft_.forward(firstHalf_, secondHalf_, spectrum_, work_, firstGrain, count);
    }

private:
    FFT::Work& work_;
    const float* firstHalf_ = nullptr;
    const float* secondHalf_ = nullptr;
    float* spectrum_ = nullptr;
};

/// An inverse transform, unscaled.
class FFTCalculateInverseTask final : public FFTTask {
public:
    FFTCalculateInverseTask(const FFT& fft, FFT::Work& work) : FFTTask(fft), work_(work) {}

    void set(const float* spectrum, float* samples) {
        spectrum_ = spectrum;
        samples_ = samples;
    }
    void skip() { samples_ = nullptr; }

    void prepare() override { grainCount = samples_ ? fft_.grains() : 0; }
    void run(int firstGrain, int count) override {
        fft_.inverse(spectrum_, samples_, work_, firstGrain, count);
    }

private:
    FFT::Work& work_;
    const float* spectrum_ = nullptr;
    float* samples_ = nullptr;
};

/// The sum of products of input and kernel spectra. A grain is half a bin of one product.
class FFTMultiplyTask final : public FFTTask {
public:
    FFTMultiplyTask(const FFT& fft, int capacity) : FFTTask(fft), sum_(fft.size()) {
        pairs_.reserve(static_cast<std::size_t>(capacity));
    }

    /// Begins the list for the next pass, up to the capacity.
    void clear() {
        pairs_.clear();
        constantPart_ = 0.0;
    }
    void add(const float* input, const float* kernel) { pairs_.push_back({input, kernel}); }
    /// Adds an input that holds `value` throughout: its spectrum is the DC term alone.
    void addConstant(float value, const float* kernel) {
        constantPart_ += static_cast<double>(value) * kernel[0];
    }

    /// Whether the sum of this pass is the spectrum of a constant, and that constant. Then there is no work.
    bool constant() const { return pairs_.empty(); }
    float constantValue() const { return static_cast<float>(constantPart_); }
    const float* sum() const { return sum_.data(); }

    void prepare() override { grainCount = static_cast<int>(pairs_.size()) * fft_.size(); }
    void run(int firstGrain, int count) override;
    void finish() override { sum_[0] += static_cast<float>(constantPart_ * fft_.size()); }

private:
    std::vector<kernel::SpectrumPair> pairs_;
    wave::AlignedBuffer<float> sum_;
    double constantPart_ = 0.0;
};

}  // namespace vanta
