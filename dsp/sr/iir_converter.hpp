#pragma once

#include <array>
#include <span>

#include "dsp/sr/iir_converter_style.hpp"
#include "kernel/allpass_kernels.hpp"
#include "wave/aligned_buffer.hpp"

namespace vanta::sr {

/// A cascade of recursive half-band stages, stage 0 next to the base rate.
class IIRConverter : public ConverterBase {
public:
    void update() override;
    void reset() override;

protected:
    explicit IIRConverter(IIRConverterStyle& style);

    /// As many as double or halve the rate.
    std::span<kernel::AllpassBranches> stages() { return std::span(stages_).first(stageCount_); }
    /// Room for what stage `index` hands to the next one.
    float* workBlock(std::size_t index) { return workBlocks_[index % 2].data(); }

private:
    IIRConverterStyle& style_;
    std::array<kernel::AllpassBranches, IIRConverterStyle::kMaxStages> stages_;
    std::size_t stageCount_ = 0;
    std::array<wave::AlignedBuffer<float>, 2> workBlocks_;
};

/// Raises the rate by the factor of its style. Input and output are different blocks.
class IIRInterpolator final : public IIRConverter {
public:
    explicit IIRInterpolator(IIRConverterStyle& style) : IIRConverter(style) {}

    bool convert(const float* in, float* out, int count) override;
};

/// Lowers the rate by the factor of its style. Input and output are different blocks.
class IIRDecimator final : public IIRConverter {
public:
    explicit IIRDecimator(IIRConverterStyle& style) : IIRConverter(style) {}

    bool convert(const float* in, float* out, int count) override;
};

}  // namespace vanta::sr
