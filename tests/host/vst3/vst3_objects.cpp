#include "tests/host/vst3/vst3_objects.hpp"

#include <poll.h>

namespace vanta::test {

v3_result Stream::read(void* buffer, std::int32_t wanted, std::int32_t* taken) {
    std::size_t size = std::min(static_cast<std::size_t>(std::max(wanted, 0)), bytes.size() - position);
    if (chunk > 0) size = std::min(size, static_cast<std::size_t>(chunk));
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), size, static_cast<std::byte*>(buffer));
    position += size;
    if (taken) *taken = static_cast<std::int32_t>(size);
    return V3_OK;
}

v3_result Stream::write(void* buffer, std::int32_t wanted, std::int32_t* taken) {
    std::size_t size = std::min(static_cast<std::size_t>(std::max(wanted, 0)), room - bytes.size());
    if (chunk > 0) size = std::min(size, static_cast<std::size_t>(chunk));
    const auto* from = static_cast<const std::byte*>(buffer);
    bytes.insert(bytes.end(), from, from + size);
    if (taken) *taken = static_cast<std::int32_t>(size);
    return size == 0 && wanted > 0 ? V3_INTERNAL_ERR : V3_OK;
}

v3_result Queue::point(std::int32_t index, std::int32_t* offset, double* value) {
    if (index < 0 || index >= count()) return V3_INVALID_ARG;
    *offset = points[static_cast<std::size_t>(index)].offset;
    *value = points[static_cast<std::size_t>(index)].value;
    return V3_OK;
}

v3_result Queue::add(std::int32_t offset, double value, std::int32_t* index) {
    if (index) *index = count();
    points.push_back({offset, value});
    return V3_OK;
}

Changes::Changes() : queues(32) {
    for (Queue& queue : queues) queue.points.reserve(64);
}

Queue* Changes::add(const v3_param_id* id, std::int32_t* index) {
    std::size_t at = 0;
    while (at < used && queues[at].parameterId != *id) ++at;
    if (at == queues.size()) return nullptr;
    if (at == used) {
        queues[used].parameterId = *id;
        queues[used++].points.clear();
    }
    *index = static_cast<std::int32_t>(at);
    return &queues[at];
}

void Changes::add(v3_param_id id, int offset, double value) {
    std::int32_t index = 0;
    if (Queue* queue = add(&id, &index)) queue->add(offset, value, nullptr);
}

v3_result RunLoop::addTimer(v3_timer_handler** handler, std::uint64_t ms) {
    if (ms == 0) return V3_INVALID_ARG;
    v3_cpp_obj_ref(handler);
    timers.push_back(handler);
    return V3_OK;
}

v3_result RunLoop::removeTimer(v3_timer_handler** handler) {
    const auto found = std::ranges::find(timers, handler);
    if (found == timers.end()) return V3_INVALID_ARG;
    timers.erase(found);
    v3_cpp_obj_unref(handler);
    return V3_OK;
}

v3_result RunLoop::addHandler(v3_event_handler** handler, int fd) {
    v3_cpp_obj_ref(handler);
    descriptors.emplace_back(handler, fd);
    return V3_OK;
}

v3_result RunLoop::removeHandler(v3_event_handler** handler) {
    const auto found = std::ranges::find(descriptors, handler, [](const auto& each) { return each.first; });
    if (found == descriptors.end()) return V3_INVALID_ARG;
    descriptors.erase(found);
    v3_cpp_obj_unref(handler);
    return V3_OK;
}

void RunLoop::run() {
    const auto watched = descriptors;
    for (const auto& [handler, fd] : watched) {
        pollfd ready{fd, POLLIN, 0};
        if (std::ranges::find(descriptors, std::pair(handler, fd)) != descriptors.end() &&
            poll(&ready, 1, 0) == 1)
            v3_cpp_obj(handler)->on_fd_is_set(handler, fd);
    }
    const auto due = timers;
    for (v3_timer_handler** handler : due) {
        if (std::ranges::find(timers, handler) != timers.end()) v3_cpp_obj(handler)->on_timer(handler);
    }
}

v3_result Handler::note(const Call& call) {
    if (std::this_thread::get_id() != mainThread) ++strayCalls;
    calls.push_back(call);
    restartFlags |= call.flags;
    if (onCall) onCall(call);
    return V3_OK;
}

bool Handler::takeRestart(int flags) {
    const bool told = (restartFlags & flags) != 0;
    restartFlags &= ~flags;
    return told;
}

int Handler::count(Call::Kind kind) const {
    return static_cast<int>(std::ranges::count(calls, kind, &Call::kind));
}

HostUnknown* Handler::other(const std::uint8_t* id) {
    if (v3_tuid_match(id, v3_component_handler2_iid)) return &second;
    return v3_tuid_match(id, v3_run_loop_iid) ? runLoop : nullptr;
}

v3_result Application::name(std::int16_t* name) {
    const char16_t own[] = u"Test";
    std::copy(std::begin(own), std::end(own), name);
    return V3_OK;
}

}  // namespace vanta::test
