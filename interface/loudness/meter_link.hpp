#pragma once

#include "foundation/channel_layout.hpp"
#include "limiter/parameters/meter_order.hpp"
#include "limiter/parameters/vanta_parameters.hpp"
#include "wave/level_source.hpp"

namespace vanta::interface {

/// All that a meter panel needs of what it shows: an instance of the plug-in, or a file that plays. It
/// outlives the panel. On the interface's thread, or another that holds the root's lock.
class MeterLink {
public:
    virtual ~MeterLink() = default;

    /// For their values and texts. Whoever changes one calls `VantaMeterPanel::parameterChanged`.
    virtual const VantaParameters& parameters() const = 0;
    /// The user has chosen a value, the parameter's own number: as a whole gesture, with all that follows.
    virtual void choose(const AbstractPluginParameter& parameter, float value) = 0;

    virtual ChannelLayout channelLayout() const = 0;
    /// By its place in limiter/parameters/meter_order.hpp; null where there is none.
    virtual wave::LevelSource* level(int place) = 0;
    /// Of all channels in one.
    virtual wave::LevelSource* combinedLevel(ChannelLevel level) = 0;

    /// The picture of all that has been begins anew, with the measurement.
    virtual void restartPicture() {}
};

}  // namespace vanta::interface
