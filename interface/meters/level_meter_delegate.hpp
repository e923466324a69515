#pragma once

#include <functional>

#include "foundation/channel_layout.hpp"
#include "interface/meters/level_meter_display.hpp"

namespace vanta::interface {

/// Gives a meter the sources of the channels of a layout, out of a list that has `stride` of them for each
/// channel, from `first` on.
class ChannelLayoutLevelMeterDelegate {
public:
    /// A level source by its number, or null.
    using SourceList = std::function<wave::LevelSource*(int)>;

    struct Places {
        int first;
        int stride;
        int fast;       ///< within those of a channel
        int slow = -1;  ///< -1 for none
    };

    ChannelLayoutLevelMeterDelegate(LevelMeterDisplay& meter, SourceList sources, Places places);

    void channelLayoutChanged(ChannelLayout layout);

private:
    wave::LevelSource* sourceOf(int channel, int place) const;

    LevelMeterDisplay& meter_;
    SourceList sources_;
    Places places_;
};

}  // namespace vanta::interface
