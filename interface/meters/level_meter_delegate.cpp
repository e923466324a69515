#include "interface/meters/level_meter_delegate.hpp"

#include <utility>

namespace vanta::interface {

ChannelLayoutLevelMeterDelegate::ChannelLayoutLevelMeterDelegate(LevelMeterDisplay& meter, SourceList sources,
                                                                 Places places)
    : meter_(meter), sources_(std::move(sources)), places_(places) {}

wave::LevelSource* ChannelLayoutLevelMeterDelegate::sourceOf(int channel, int place) const {
    return place < 0 ? nullptr : sources_(places_.first + channel * places_.stride + place);
}

void ChannelLayoutLevelMeterDelegate::channelLayoutChanged(ChannelLayout layout) {
    const int count = channelCount(layout);
    for (int channel = 0; channel < LevelMeterDisplay::kMostBars; ++channel) {
        const bool exists = channel < count;
        meter_.setSources(channel, exists ? sourceOf(channel, places_.fast) : nullptr,
                          exists ? sourceOf(channel, places_.slow) : nullptr);
    }
    meter_.layout = layout;
}

}  // namespace vanta::interface
