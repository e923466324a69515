#pragma once

#include <memory>
#include <vector>

#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/fir_stage.hpp"

namespace vanta::sr {

/// A cascade of half-band stages, stage 0 next to the base rate.
class FIRConverter : public ConverterBase {
public:
    void update() override;
    void reset() override;
    int memory() const override { return memory_; }

protected:
    /// Indexes of the style's sets for stage 0 and for all others.
    FIRConverter(ConverterStyle& style, int firstSet, int otherSets);

    std::vector<std::unique_ptr<FIRStage>>& stages() { return stages_; }
    /// Where the stages compute.
    StageLines& lines() { return style_.lines(); }

private:
    ConverterStyle& style_;
    std::vector<std::unique_ptr<FIRStage>> stages_;
    int memory_ = 0;
    int firstSet_;
    int otherSets_;
};

}  // namespace vanta::sr
