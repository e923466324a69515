#include "dsp/sr/stage_lines.hpp"

#include "kernel/fir_kernels.hpp"

namespace vanta::sr {

namespace {

constexpr int kFloatsOfVector = static_cast<int>(wave::AlignedBuffer<float>::kAlignment / sizeof(float));

}  // namespace

// Inputs are aligned, as each is the output of a stage, which is stored in whole vectors.
void StageLines::resize(int past, int samples) {
    front_ = (past + kFloatsOfVector - 1) / kFloatsOfVector * kFloatsOfVector;
    for (auto& line : lines_) line.resize(front_ + samples);
    scratch_.resize(static_cast<int>(kernel::decimatorScratch(static_cast<std::size_t>(past))));
}

}  // namespace vanta::sr
