#include "dsp/sr/fir_converter.hpp"

#include <bit>

namespace vanta::sr {

FIRConverter::FIRConverter(ConverterStyle& style, int firstSet, int otherSets)
    : ConverterBase(style.environment()), style_(style), firstSet_(firstSet), otherSets_(otherSets) {}

void FIRConverter::update() {
    const int factor = style_.factor();
    const auto stageCount = static_cast<std::size_t>(std::bit_width(static_cast<unsigned>(factor)) - 1);
    style_.update();
    if (stageCount != stages_.size()) stages_.clear();
    stages_.resize(stageCount);
    memory_ = 0;
    for (std::size_t i = 0; i < stageCount; ++i) {
        const int index = i == 0 ? firstSet_ : otherSets_;
        const int longest = style_.longestLength(index);
        auto& stage = stages_[i];
        if (!stage || stage->longestLength() != longest) {
            stage = std::make_unique<FIRStage>(2 << i, longest);
        }
        stage->prepare(style_.set(index));
        memory_ += stage->memory();
    }
}

void FIRConverter::reset() {
    for (auto& stage : stages_) stage->reset();
}

}  // namespace vanta::sr
