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
}

void Instance::onTimer() {
    const ComScope held(object);
    reports.claimMainThread();
    serve();
    // A view may close another one, or itself by way of the host.
    const std::vector<ViewRole*> open = openViews;
    for (ViewRole* view : open) {
        if (std::ranges::find(openViews, view) != openViews.end()) view->idle();
    }
}

void Instance::serve() {
    programs.loadRequested(plugin.model());
    plugin.pump();
    if (reports.takePresetChange() && programs.follow(plugin.model())) reports.valuesReplaced();
    if (plugin.latency() == activeLatency) reports.latencyHolds();
    reports.tell();
}

void Instance::changeLayout() {
    if (buses.layout() == plugin.layout()) return;
    for (ViewRole* view : openViews) view->close();
    plugin.setLayout(buses.layout());
    for (ViewRole* view : openViews) view->open();
}

void Instance::serveWithoutTimer() {
    if (!timer.isRunning() && reports.isMainThread()) serve();
}

}  // namespace vanta::vst3
