#pragma once

#include <memory>
#include <vector>

#include "dsp/detector/db_converter.hpp"
#include "dsp/detector/detector.hpp"
#include "dsp/detector/rms_filter.hpp"
#include "dsp/mixer/effect_mixer.hpp"
#include "dsp/mixer/mixer.hpp"
#include "limiter/clippers/smart_clipper.hpp"
#include "wave/router.hpp"

namespace vanta {

/// One Detector with what surrounds it: magnitude, stereo link, RMS window, conversion to dB, then the
/// gain computer or the clipper. Mode and domain select among them; what is not selected is not computed.
struct DetectorChain {
    /// Positions of " Mode".
    enum Mode { Peak, Rms, SmartClipping };

    /// `linked` is this channel's level after stereo linking.
    DetectorChain(wave::Environment& environment, wave::Producer& input, wave::Producer& linked,
                  float rmsWindowLimitMs, bool canClip);

    /// What runs only while the element is active.
    std::vector<wave::Producer*> statefulNodes();

    Mixer magnitude;
    EffectMixer linkMix;  ///< -1 is this channel's own level, 1 the linked one
    RMSFilter rms;
    wave::Router modeRouter;
    DBConverter toDb;
    wave::Router domainRouter;
    Detector detector;
    std::unique_ptr<SmartClipper> clipper;  ///< null where the chain cannot clip
    wave::Router output;
};

}  // namespace vanta
