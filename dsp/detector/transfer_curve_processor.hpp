#pragma once

#include "wave/float_parameter_source.hpp"

namespace vanta {

/// Bends a control signal of 0 to 1 towards 0; both ends stay. Strength 0 is very nearly the identity. Finite
/// for any input, also beyond 0 to 1.
class TransferCurveProcessor final : public wave::Filter {
public:
    enum Function : int {
        Exp,   ///< (e^(k x) - 1) / (e^k - 1), k = 15 strength + 0.01
        Power  ///< x^(15 strength + 1); a negative sample counts as 0
    };

    explicit TransferCurveProcessor(wave::Environment& owner)
        : Filter(owner), function(nullptr, Exp), strength(owner, 1.0f, 0.0f, 1.0f) {}

    Property<int> function;  ///< a Function
    wave::FloatParameterBus strength;

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
};

}  // namespace vanta
