#include "host/vst3/instance.hpp"

#include <algorithm>
#include <utility>

#include "host/vst3/plug_view.hpp"

namespace vanta::vst3 {

Instance::Instance(EmbeddedViewFactory viewFactory, ComObject& whole)
    : object(whole),
      views(std::move(viewFactory)),
      plugin(reports, kStereoLayout),
      programs(plugin.model()),
      parameters(plugin, programs),
      automation(parameters.ownCount()),
      buses(kStereoLayout),
      timer([this] { onTimer(); }) {
    reports.setParameters(parameters);
    reports.onPumped = [this] {
        follow();
        reports.tellRestarts();
    };
}

void Instance::onTimer() {
    const ComScope held(object);
    reports.claimMainThread();
    const Reports::Turn turn(reports);
    plugin.pump();
    follow();
    reports.tell();
    // A view may close another one, or itself by way of the host.
    const std::vector<ViewRole*> open = openViews;
    for (ViewRole* view : open) {
        if (std::ranges::find(openViews, view) != openViews.end()) view->idle();
    }
}

void Instance::follow() {
    programs.loadRequested(plugin.model());
    if (reports.takePresetChange() && programs.follow(plugin.model())) reports.valuesReplaced();
    if (plugin.latency() == activeLatency.load()) reports.latencyHolds();
}

void Instance::changeLayout() {
    if (buses.layout() == plugin.layout()) return;
    plugin.setLayout(buses.layout());
}

void Instance::lookAtFrames() {
    v3_plugin_frame** frame = nullptr;
    for (const ViewRole* view : allViews) {
        if (!frame) frame = view->frame();
    }
    timer.look(RunLoopTimer::Source::Frame, frame);
}

}  // namespace vanta::vst3
