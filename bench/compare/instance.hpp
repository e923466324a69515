#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "bench/compare/music.hpp"
#include "host/common/hosted_plugin.hpp"
#include "limiter/styles/style_names.hpp"

namespace vanta::bench {

/// How an instance is set; what is not named here stays as a new plug-in has it: its meters run, with true
/// peaks.
struct InstanceSettings {
    LimitingStyle style = LimitingStyle::Modern;
    int stages = 0;  ///< of oversampling: 0 to 5 for 1x to 32x
    double gainDb = 6.0;
    int blockFrames = 256;
    ChannelLayout layout = kStereoLayout;
};

/// Our limiter as a plug-in format's host has it, playing a piece of music round and round. True peaks are
/// limited.
class Instance {
public:
    /// The music has as many channels as the layout, in whole blocks, and outlives the instance.
    Instance(const InstanceSettings& settings, const Music& music);
    ~Instance();

    void play(int blocks);
    /// Forgets the signal; the music begins anew.
    void restart();
    /// Goes on with another piece of the same kind, which outlives the instance.
    void change(const Music& music);

private:
    class NoHost;

    std::unique_ptr<NoHost> host_;
    HostedPlugin plugin_;
    const Music* music_;
    int blockFrames_;
    int position_ = 0;
    std::vector<std::vector<float>> output_;
    std::vector<const float*> inputs_;
    std::vector<float*> outputs_;
};

}  // namespace vanta::bench
