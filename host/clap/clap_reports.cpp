#include "host/clap/clap_reports.hpp"

#include "host/clap/clap_host_extension.hpp"
#include "host/common/hosted_plugin.hpp"

namespace vanta {

ClapReports::ClapReports(const clap_host_t& host, int parameterCount)
    : host_(host),
      params_(hostExtension<clap_host_params_t>(host, CLAP_EXT_PARAMS)),
      state_(hostExtension<clap_host_state_t>(host, CLAP_EXT_STATE)),
      latency_(hostExtension<clap_host_latency_t>(host, CLAP_EXT_LATENCY)),
      edits_(parameterCount),
      held_(static_cast<std::size_t>(parameterCount)) {}

// Any thread

void ClapReports::raise(Due due) {
    if (due_.fetch_or(due) == 0) pumpRequested();
}

void ClapReports::pumpRequested() {
    if (host_.request_callback) host_.request_callback(&host_);
}

void ClapReports::parameterEdited(int index, Edit edit, float value) {
    edits_.add(index, edit, value);
    raise(kEdits);
}

void ClapReports::stateRestored() {
    edits_.forgetValues();
    raise(kValues);
}

// Main thread

void ClapReports::deliver(const HostedPlugin& plugin, bool isActive) {
    const unsigned due = due_.exchange(0);
    if ((due & kValues) && params_)
        params_->rescan(&host_, CLAP_PARAM_RESCAN_VALUES | CLAP_PARAM_RESCAN_TEXT);
    if ((due & kEdits) && params_) params_->request_flush(&host_);
    if ((due & kState) && state_) state_->mark_dirty(&host_);
    if (!(due & kLatency)) return;
    if (!isActive) {
        reportLatency(plugin);
    } else if (plugin.latency() != activeLatency_ && host_.request_restart) {
        host_.request_restart(&host_);
    }
}

void ClapReports::activated(const HostedPlugin& plugin) {
    activeLatency_ = plugin.latency();
    reportLatency(plugin);
}

int ClapReports::tellLatency(const HostedPlugin& plugin) {
    return hostLatency_ = plugin.latency();
}

void ClapReports::reportLatency(const HostedPlugin& plugin) {
    if (hostLatency_ == plugin.latency()) return;
    hostLatency_ = plugin.latency();
    if (latency_) latency_->changed(&host_);
}

// The thread of the block

void ClapReports::writeEdits(const clap_output_events_t* out) {
    if (!out || !out->try_push) return;
    edits_.take([&](int index, Edit edit, float value) { return push(*out, index, edit, value); });
}

bool ClapReports::push(const clap_output_events_t& out, int index, Edit edit, float value) {
    const auto held = held_.begin() + index;
    const auto id = static_cast<clap_id>(index);
    clap_event_header_t header{};
    header.space_id = CLAP_CORE_EVENT_SPACE_ID;
    if (edit == Edit::Value) {
        clap_event_param_value_t event{};
        header.size = sizeof(event);
        header.type = CLAP_EVENT_PARAM_VALUE;
        // What a controller or a preset moves would conflict with itself if it was recorded.
        if (!*held) header.flags = CLAP_EVENT_DONT_RECORD;
        event.header = header;
        event.param_id = id;
        event.note_id = event.port_index = event.channel = event.key = -1;
        event.value = static_cast<double>(value);
        return out.try_push(&out, &event.header);
    }
    clap_event_param_gesture_t event{};
    header.size = sizeof(event);
    header.type = edit == Edit::Begin ? CLAP_EVENT_PARAM_GESTURE_BEGIN : CLAP_EVENT_PARAM_GESTURE_END;
    event.header = header;
    event.param_id = id;
    if (!out.try_push(&out, &event.header)) return false;
    *held = edit == Edit::Begin;
    return true;
}

}  // namespace vanta
