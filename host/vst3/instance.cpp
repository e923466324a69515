#include "host/vst3/instance.hpp"

#include <utility>

namespace vanta::vst3 {

Instance::Instance(EmbeddedViewFactory viewFactory, ComObject& whole)
    : object(whole),
      views(std::move(viewFactory)),
      plugin(reports, kStereoLayout),
      programs(plugin.model()),
      parameters(plugin, programs),
      buses(kStereoLayout),
      timer([this] {
          const ComScope held(object);
          reports.claimMainThread();
          serve();
      }) {
    reports.setParameters(parameters);
}

void Instance::serve() {
    programs.loadRequested(plugin.model());
    plugin.pump();
    if (reports.takePresetChange() && programs.follow(plugin.model())) reports.valuesReplaced();
    reports.tell();
}

void Instance::serveWithoutTimer() {
    if (!timer.isRunning() && reports.isMainThread()) serve();
}

}  // namespace vanta::vst3
