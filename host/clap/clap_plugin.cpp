#include "host/clap/clap_plugin.hpp"

#include <algorithm>
#include <limits>

#include "host/clap/clap_buffers.hpp"
#include "host/clap/clap_descriptor.hpp"
#include "host/clap/clap_events.hpp"
#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_extensions.hpp"
#include "host/clap/clap_ports.hpp"

namespace vanta {
namespace {

constexpr auto kLongestBlock = static_cast<std::uint32_t>(std::numeric_limits<int>::max());

clap_plugin_t functions() {
    clap_plugin_t table{};
    table.desc = &clapDescriptor();
    table.init = [](const clap_plugin_t* handle) {
        try {
            return ClapPlugin::of(handle)->initialise();
        } catch (...) {
            return false;
        }
    };
    table.destroy = [](const clap_plugin_t* handle) { delete ClapPlugin::of(handle); };
    table.activate = [](const clap_plugin_t* handle, double rate, std::uint32_t, std::uint32_t largest) {
        return answer(handle, false, [=](ClapPlugin& plugin) { return plugin.activate(rate, largest); });
    };
    table.deactivate = [](const clap_plugin_t* handle) {
        answer(handle, false, [](ClapPlugin& plugin) { return plugin.deactivate(), true; });
    };
    table.start_processing = [](const clap_plugin_t* handle) {
        return answer(handle, false, [](ClapPlugin& plugin) { return plugin.isActive(); });
    };
    table.stop_processing = [](const clap_plugin_t*) {};
    table.reset = [](const clap_plugin_t* handle) {
        answer(handle, false, [](ClapPlugin& plugin) { return plugin.reset(), true; });
    };
    table.process = [](const clap_plugin_t* handle, const clap_process_t* process) {
        const clap_process_status error = CLAP_PROCESS_ERROR;
        if (!process) return error;
        return answer(handle, error, [=](ClapPlugin& plugin) { return plugin.process(*process); });
    };
    table.get_extension = [](const clap_plugin_t* handle, const char* id) {
        const void* none = nullptr;
        if (!id) return none;
        return answer(handle, none, [=](ClapPlugin& plugin) { return plugin.extension(id); });
    };
    table.on_main_thread = [](const clap_plugin_t* handle) {
        answer(handle, false, [](ClapPlugin& plugin) { return plugin.onMainThread(), true; });
    };
    return table;
}

}  // namespace

ClapPlugin::Parts::Parts(const clap_host_t& host, const EmbeddedViewFactory& views)
    : reports(host, hostParameterCount()),
      hosted(reports, kStereoLayout),
      parameters(describeParameters(hosted.model())),
      gui(host, hosted, views),
      map(mapByNumber(hosted.layout(), clapSpeaker)) {}

ClapPlugin::ClapPlugin(const clap_host_t& host, const EmbeddedViewFactory& views)
    : handle_(functions()), host_(host), views_(views) {
    handle_.plugin_data = this;
}

ClapPlugin* ClapPlugin::of(const clap_plugin_t* handle) {
    return handle ? static_cast<ClapPlugin*>(handle->plugin_data) : nullptr;
}

// Main thread

bool ClapPlugin::initialise() {
    if (!parts_) parts_.emplace(host_, views_);
    return true;
}

bool ClapPlugin::activate(double sampleRate, std::uint32_t largestBlock) {
    if (isActive() || largestBlock == 0) return false;
    if (!hosted().activate(sampleRate, static_cast<int>(std::min(largestBlock, kLongestBlock)))) return false;
    hosted().pump();
    parts_->reports.activated(hosted());
    isActive_.store(true);
    return true;
}

void ClapPlugin::deactivate() {
    isActive_.store(false);
    onMainThread();
}

bool ClapPlugin::selectLayout(ChannelLayout layout) {
    if (isActive()) return false;
    if (layout == hosted().layout()) return true;
    hosted().setLayout(layout);
    parts_->map = mapByNumber(layout, clapSpeaker);
    return true;
}

void ClapPlugin::onMainThread() {
    hosted().pump();
    parts_->reports.deliver(hosted(), isActive());
}

bool ClapPlugin::setRenderMode(std::int32_t mode) {
    if (mode != kClapRenderRealtime && mode != kClapRenderOffline) return false;
    isOffline_.store(mode == kClapRenderOffline);
    return true;
}

std::uint32_t ClapPlugin::tellLatency() {
    return static_cast<std::uint32_t>(parts_->reports.tellLatency(hosted()));
}

// Any thread

const void* ClapPlugin::extension(const char* id) const {
    const void* window = parts_->gui.isOffered() ? clapWindowExtension(id) : nullptr;
    return window ? window : clapExtension(id);
}

// Audio thread

clap_process_status ClapPlugin::process(const clap_process_t& process) {
    if (!isActive() || process.frames_count > kLongestBlock) return CLAP_PROCESS_ERROR;
    {
        const RealtimeScope realtime;
        const ClapBuffers buffers(process, parts_->map);
        if (buffers.areUnusable()) {
            // The values of its events still hold.
            flush(process.in_events, process.out_events);
            return CLAP_PROCESS_ERROR;
        }
        ClapEvents events(process.in_events);
        hosted().process(buffers.block(), events);
        parts_->reports.writeEdits(process.out_events);
    }
    // A render does not wait for the main thread. What a program change asks for must come now, as it does
    // in no time when a user listens.
    if (isOffline_.load()) hosted().pump();
    // Never asleep: meters fall and dither sounds while the input is silent.
    return CLAP_PROCESS_CONTINUE;
}

void ClapPlugin::flush(const clap_input_events_t* in, const clap_output_events_t* out) {
    const RealtimeScope realtime;
    ClapEvents events(in);
    hosted().flush(events);
    parts_->reports.writeEdits(out);
}

void ClapPlugin::reset() {
    const RealtimeScope realtime;
    hosted().reset();
}

}  // namespace vanta
