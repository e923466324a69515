#pragma once

#include <memory>
#include <vector>

#include "kernel/mixer_kernels.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// Combines several sources, each with a gain of its own that may move. The first input always enters with
/// its own sign, and for the operations on magnitudes as |x| gain. Without any filled input the output is the
/// silent block; when everything that feeds it is constant, one sample is computed.
class Mixer final : public wave::Source, public PropertyOwner {
public:
    /// What a further input x with gain g does to the result A so far.
    enum Operation : int {
        Add,               ///< A + x g; an input of constant gain 0 is not even pulled
        Subtract,          ///< A - x g
        LargestMagnitude,  ///< max(A, |x| g)
        Multiply,          ///< A x g
        DivideLimited,     ///< A / |x g| within 0 and 1, 0 where |x g| is 0
        Divide,            ///< A / |x g|, both at least 1e-9
        DivideHolding,     ///< A / |x g|, or the last such quotient where |x g| is at most 1e-9
        Maximize,          ///< max(A, x g)
        Minimize           ///< min(A, x g)
    };

    Mixer(wave::Environment& owner, int inputs);
    ~Mixer() override;

    Property<int> inputCount;  ///< a change makes or destroys inputs at the end; allocates
    Property<int> operation;   ///< an Operation; with any other value the first input passes

    /// Wires an input; null empties it. The producer is owned elsewhere.
    void setInput(int index, wave::Producer* producer);
    wave::Producer* input(int index) const { return at(index).producer; }
    /// The gain of an input, 0 to 1 by its own value, 1 to begin with.
    wave::FloatParameterBus& gain(int index) { return at(index).gain; }
    /// Lets the gains of all inputs, also of future ones, go from 0 to 2.
    void widenGainRange();

    void reset() override { held_ = 1.0f; }

protected:
    bool settled() const override { return operation != DivideHolding; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    struct Input {
        Input(wave::Environment& owner, float lowest, float highest) : gain(owner, 1.0f, lowest, highest) {}
        wave::FloatParameterBus gain;
        wave::Producer* producer = nullptr;
    };

    Input& at(int index) const { return *inputs_[static_cast<std::size_t>(index)]; }
    void resize(int count);
    void updatePath();
    VANTA_REALTIME const Input* collectForSum(int samples);
    VANTA_REALTIME void collectAll(int samples);
    VANTA_REALTIME void list(Input& input, const float* gain, int samples);
    VANTA_REALTIME void combine(float* out, std::size_t count);
    VANTA_REALTIME const float* applyFirst(float* out, std::size_t count) const;
    VANTA_REALTIME void applyFurther(const float* result, const kernel::MixTerm& term, float* out,
                                     std::size_t count) const;
    VANTA_REALTIME void divideHolding(float* out, std::size_t count);

    std::vector<std::unique_ptr<Input>> inputs_;
    std::vector<kernel::MixTerm> terms_;  ///< what takes part in this block, in order
    float lowestGain_ = 0.0f;
    float highestGain_ = 1.0f;
    float held_ = 1.0f;  ///< the last quotient of DivideHolding
    bool useSum_ = false;
    bool allConstant_ = true;  ///< everything in `terms_` is
};

}  // namespace vanta
