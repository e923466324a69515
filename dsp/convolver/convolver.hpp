#pragma once

#include <memory>
#include <vector>

#include "dsp/convolver/convolver_kernel.hpp"
#include "dsp/convolver/convolver_stage.hpp"
#include "dsp/convolver/direct_fir.hpp"
#include "wave/delay.hpp"
#include "wave/producer.hpp"
#include "wave/stream_watch.hpp"

namespace vanta {

/// Convolves one channel with a kernel that may change while it is heard. Tap i of the kernel multiplies the
/// input of i samples ago; the result comes out `plan().latency()` samples late. The cost of a block does not
/// depend on where the partitions begin, and a change of the kernel is crossfaded.
///
/// An input that holds one value for longer than kernel and latency is handed on as it is, if the kernel's
/// sum is 1, and costs next to nothing.
class Convolver final : public wave::Filter {
public:
    using Kernel = ConvolverKernel;

    /// The kernel and its plan must outlive the convolver.
    Convolver(wave::Environment& owner, Kernel& kernel);

protected:
    /// Handing on its input, by a kernel that stands.
    bool settled() const override;
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    void restart(std::int64_t position);
    bool atRest(const wave::BasicBlock<float>& in, int samples);
    void wake(std::int64_t time);
    const float* delayInput(const wave::BasicBlock<float>& in, int samples);
    int samplesToBoundary(std::int64_t time) const;
    void chooseVersion(std::int64_t time);
    void extendLeases(std::int64_t time);
    void runStages(ConvolverStretch stretch, const float* delayed);

    Kernel& kernel_;
    const ConvolverPlan& plan_;
    int period_;                                           ///< of the outermost stage
    std::vector<std::unique_ptr<ConvolverStage>> stages_;  ///< the outermost first
    std::unique_ptr<DirectFir> direct_;                    ///< only without latency
    /// The outer stages have no latency of their own: they get the input delayed by that of the innermost.
    std::unique_ptr<wave::Delay> delay_;
    wave::BasicBlock<float> delayed_;
    wave::BasicBlock<float> fade_;
    KernelTransition transition_;
    wave::StreamWatch stream_;
    std::int64_t origin_ = 0;  ///< the stream position of the last restart
    int restSamples_ = 0;      ///< how long an input must be constant until nothing else is remembered
    float heldValue_ = 0.0f;
    std::int64_t heldSamples_ = 0;     ///< how many of the newest input samples have that value
    std::int64_t delayedSamples_ = 0;  ///< the same after the delay
    bool constant_ = false;            ///< the block, and the one after the delay, hold one value
    bool delayedConstant_ = false;
    bool resting_ = false;
    float restValue_ = 0.0f;
};

}  // namespace vanta
