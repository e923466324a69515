#pragma once

#include "dsp/filter/crossover_filter.hpp"
#include "dsp/mixer/static_mixer.hpp"
#include "limiter/engine/dynamics_engine.hpp"
#include "wave/multi_producer.hpp"

namespace vanta {

/// Splits a signal into what lies below a frequency, output 0, and what lies above, output 1.
class DynamicsEngine::BandSplitter final : public wave::MultiProducer {
public:
    enum ProcessingMode {
        Filters,  ///< two filters of one slope, whose sum is an all-pass
        Subtract  ///< the upper band is what the low-pass leaves: the sum is the input
    };

    /// `input` and `frequency`, in octaves as CrossoverFilter takes it, outlive the splitter.
    BandSplitter(wave::Environment& environment, wave::Producer& input, wave::Producer& frequency);

    Property<int> processingMode;  ///< a ProcessingMode

    CrossoverFilter low;
    CrossoverFilter high;  ///< at rest while the upper band is a difference

protected:
    bool settled() const override { return true; }
    void produce(std::span<wave::BasicBlock<float>* const> blocks, int samples, int flags) override;

private:
    StaticMixer difference_;
};

}  // namespace vanta
