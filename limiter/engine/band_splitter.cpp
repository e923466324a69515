#include "limiter/engine/band_splitter.hpp"

namespace vanta {

DynamicsEngine::BandSplitter::BandSplitter(wave::Environment& environment, wave::Producer& input,
                                           wave::Producer& frequency)
    : MultiProducer(environment, 2),
      processingMode(nullptr, Filters),
      low(environment),
      high(environment),
      difference_(environment, {{1.0f, &input}, {-1.0f, &low}}) {
    low.response = CrossoverFilter::LowPass;
    high.response = CrossoverFilter::HighPass;
    for (CrossoverFilter* filter : {&low, &high}) {
        filter->source = &input;
        filter->frequency.setSource(&frequency);
    }
}

void DynamicsEngine::BandSplitter::produce(std::span<wave::BasicBlock<float>* const>, int samples, int) {
    wave::Producer& upper = processingMode == Subtract ? static_cast<wave::Producer&>(difference_) : high;
    int band = 0;
    for (wave::Producer* each : {static_cast<wave::Producer*>(&low), &upper}) {
        publishOutput(band++, each->pull(samples), each->blockFlags());
    }
}

}  // namespace vanta
