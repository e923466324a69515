#include "limiter/engine/detector_chain.hpp"

namespace vanta {

DetectorChain::DetectorChain(wave::Environment& environment, wave::Producer& input, wave::Producer& linked,
                             float rmsWindowLimitMs, bool canClip)
    : magnitude(environment, 1),
      linkMix(environment, magnitude, linked),
      rms(environment, rmsWindowLimitMs),
      modeRouter(environment, 3),
      toDb(environment),
      domainRouter(environment, 2),
      detector(environment),
      clipper(canClip ? std::make_unique<SmartClipper>(environment) : nullptr),
      output(environment, 3) {
    magnitude.operation = Mixer::LargestMagnitude;
    magnitude.setInput(0, &input);
    linkMix.panningLaw = EffectMixer::Linear;
    rms.source = &linkMix;
    rms.domain = RMSFilter::Amplitude;

    modeRouter.setInput(Peak, linkMix);
    modeRouter.setInput(Rms, rms);
    modeRouter.setInput(SmartClipping, linkMix);
    toDb.source = &modeRouter;
    toDb.conversion = DBConverter::AmplitudeToDb;
    domainRouter.setInput(0, modeRouter);
    domainRouter.setInput(1, toDb);

    detector.source = &domainRouter;
    detector.amplitude = &modeRouter;
    // Programme is mostly below the threshold.
    output.makeGate();
    output.setInput(Peak, detector);
    output.setInput(Rms, detector);
    output.setInput(SmartClipping, detector);
    if (clipper) {
        clipper->source = &domainRouter;
        clipper->amplitude = &modeRouter;
        output.setInput(SmartClipping, *clipper);
    }
}

std::vector<wave::Producer*> DetectorChain::statefulNodes() {
    std::vector<wave::Producer*> nodes{&rms, &detector};
    if (clipper) nodes.push_back(clipper.get());
    return nodes;
}

}  // namespace vanta
