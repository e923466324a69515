#include "dsp/sr/iir_converter.hpp"

namespace vanta::sr {

namespace {

/// Without memory. The branches take the all-passes in turn.
kernel::AllpassBranches branchesOf(std::span<const float> coefficients) {
    kernel::AllpassBranches branches;
    branches.pairCount = static_cast<int>(coefficients.size() / 2);
    branches.hasLast = coefficients.size() % 2 != 0;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const bool last = branches.hasLast && i + 1 == coefficients.size();
        (last ? branches.last : branches.pairs[i / 2]).coefficient[i % 2] = coefficients[i];
    }
    return branches;
}

}  // namespace

IIRConverter::IIRConverter(IIRConverterStyle& style) : ConverterBase(style.environment()), style_(style) {
    update();
}

void IIRConverter::update() {
    style_.update();
    for (auto& block : workBlocks_) {
        block.resize(environment().maxBlockSize() * IIRConverterStyle::kMaxFactor / 2);
    }
    stageCount_ = static_cast<std::size_t>(style_.stageCount());
    for (std::size_t i = 0; i < stageCount_; ++i) {
        stages_[i] = branchesOf(style_.stage(static_cast<int>(i)));
    }
}

void IIRConverter::reset() {
    for (kernel::AllpassBranches& stage : stages()) {
        const auto forget = [](kernel::AllpassPair& pair) {
            for (float* state : {pair.x1, pair.y1}) state[0] = state[1] = 0.0f;
        };
        for (kernel::AllpassPair& pair : stage.pairs) forget(pair);
        forget(stage.last);
        stage.carried = 0.0f;
    }
}

bool IIRInterpolator::convert(const float* in, float* out, int count) {
    const auto all = stages();
    if (all.empty()) return false;
    for (std::size_t i = 0; i < all.size(); ++i) {
        float* target = i + 1 == all.size() ? out : workBlock(i);
        kernel::splitBranches(in, all[i], target, static_cast<std::size_t>(count) << i);
        in = target;
    }
    return true;
}

bool IIRDecimator::convert(const float* in, float* out, int count) {
    const auto all = stages();
    if (all.empty()) return false;
    for (std::size_t i = all.size(); i-- > 0;) {
        float* target = i == 0 ? out : workBlock(i);
        kernel::mergeBranches(in, all[i], target, static_cast<std::size_t>(count) << i);
        in = target;
    }
    return true;
}

}  // namespace vanta::sr
