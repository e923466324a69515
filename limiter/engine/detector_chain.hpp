#pragma once

#include <memory>
#include <vector>

#include "dsp/db_converter.hpp"
#include "dsp/detector.hpp"
#include "dsp/effect_mixer.hpp"
#include "dsp/mixer.hpp"
#include "dsp/rms_filter.hpp"
#include "limiter/smart_clipper.hpp"
#include "wave/router.hpp"

namespace vanta {

/// One Detector with what stands around it: magnitude, stereo link, RMS window, conversion to dB, then the
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
    Router modeRouter;
    DBConverter toDb;
    Router domainRouter;
    Detector detector;
    std::unique_ptr<SmartClipper> clipper;  ///< null where the chain cannot clip
    Router output;
};

}  // namespace vanta
