#pragma once

#include <travesty/audio_processor.h>
#include <travesty/bstream.h>
#include <travesty/edit_controller.h>
#include <travesty/host.h>
#include <travesty/view.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <span>
#include <thread>
#include <utility>
#include <vector>

/// What a host hands to its plug-ins, as classes with virtual functions: the way in which most hosts are
/// written, and not that of the plug-in.
namespace vanta::test {

class HostUnknown {
public:
    virtual v3_result query(const v3_tuid id, void** found) = 0;
    virtual std::uint32_t ref() = 0;
    virtual std::uint32_t unref() = 0;

protected:
    ~HostUnknown() = default;
};

/// An object of one interface, which counts who holds it. Its host outlives all that.
template <typename Interface>
class HostObject : public Interface {
public:
    virtual ~HostObject() = default;
    v3_result query(const v3_tuid id, void** found) override {
        const bool own = v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, Interface::id());
        HostUnknown* const known = own ? this : other(id);
        *found = known;
        if (!known) return V3_NO_INTERFACE;
        known->ref();
        return V3_OK;
    }
    std::uint32_t ref() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t unref() override { return static_cast<std::uint32_t>(--references); }
    /// What else it can be asked for.
    virtual HostUnknown* other(const std::uint8_t*) { return nullptr; }

    template <typename Pointed>
    Pointed** as() {
        return static_cast<Pointed**>(static_cast<void*>(static_cast<Interface*>(this)));
    }

    std::atomic<int> references{0};
};

// Interfaces, in the order of their functions.

struct HostStream : HostUnknown {
    static const std::uint8_t* id() { return v3_bstream_iid; }
    virtual v3_result read(void* buffer, std::int32_t bytes, std::int32_t* taken) = 0;
    virtual v3_result write(void* buffer, std::int32_t bytes, std::int32_t* taken) = 0;
    virtual v3_result seek(std::int64_t position, std::int32_t mode, std::int64_t* result) = 0;
    virtual v3_result tell(std::int64_t* position) = 0;

protected:
    ~HostStream() = default;
};

struct HostQueue : HostUnknown {
    static const std::uint8_t* id() { return v3_param_value_queue_iid; }
    virtual v3_param_id parameter() = 0;
    virtual std::int32_t count() = 0;
    virtual v3_result point(std::int32_t index, std::int32_t* offset, double* value) = 0;
    virtual v3_result add(std::int32_t offset, double value, std::int32_t* index) = 0;

protected:
    ~HostQueue() = default;
};

struct HostChanges : HostUnknown {
    static const std::uint8_t* id() { return v3_param_changes_iid; }
    virtual std::int32_t count() = 0;
    virtual HostQueue* queue(std::int32_t index) = 0;
    virtual HostQueue* add(const v3_param_id* id, std::int32_t* index) = 0;

protected:
    ~HostChanges() = default;
};

struct HostEvents : HostUnknown {
    static const std::uint8_t* id() { return v3_event_list_iid; }
    virtual std::uint32_t count() = 0;
    virtual v3_result event(std::int32_t index, v3_event* event) = 0;
    virtual v3_result add(v3_event* event) = 0;

protected:
    ~HostEvents() = default;
};

struct HostHandler : HostUnknown {
    static const std::uint8_t* id() { return v3_component_handler_iid; }
    virtual v3_result beginEdit(v3_param_id id) = 0;
    virtual v3_result performEdit(v3_param_id id, double value) = 0;
    virtual v3_result endEdit(v3_param_id id) = 0;
    virtual v3_result restart(std::int32_t flags) = 0;

protected:
    ~HostHandler() = default;
};

struct HostHandler2 : HostUnknown {
    static const std::uint8_t* id() { return v3_component_handler2_iid; }
    virtual v3_result setDirty(v3_bool dirty) = 0;
    virtual v3_result openEditor(const char* name) = 0;
    virtual v3_result startGroup() = 0;
    virtual v3_result finishGroup() = 0;

protected:
    ~HostHandler2() = default;
};

struct HostRunLoop : HostUnknown {
    static const std::uint8_t* id() { return v3_run_loop_iid; }
    virtual v3_result addHandler(v3_event_handler** handler, int descriptor) = 0;
    virtual v3_result removeHandler(v3_event_handler** handler) = 0;
    virtual v3_result addTimer(v3_timer_handler** handler, std::uint64_t ms) = 0;
    virtual v3_result removeTimer(v3_timer_handler** handler) = 0;

protected:
    ~HostRunLoop() = default;
};

struct HostFrame : HostUnknown {
    static const std::uint8_t* id() { return v3_plugin_frame_iid; }
    virtual v3_result resize(v3_plugin_view** view, v3_view_rect* rectangle) = 0;

protected:
    ~HostFrame() = default;
};

struct HostApplication : HostUnknown {
    static const std::uint8_t* id() { return v3_host_application_iid; }
    virtual v3_result name(std::int16_t* name) = 0;
    virtual v3_result create(std::uint8_t* classId, std::uint8_t* id, void** made) = 0;

protected:
    ~HostApplication() = default;
};

// Objects.

/// Bytes that are read and written in pieces of at most `chunk`, if that is not 0, up to `room`.
struct Stream final : HostObject<HostStream> {
    explicit Stream(std::span<const std::byte> content = {}, int pieces = 0)
        : bytes(content.begin(), content.end()), chunk(pieces) {}
    v3_result read(void* buffer, std::int32_t wanted, std::int32_t* taken) override;
    v3_result write(void* buffer, std::int32_t wanted, std::int32_t* taken) override;
    v3_result seek(std::int64_t, std::int32_t, std::int64_t*) override { return V3_NOT_IMPLEMENTED; }
    v3_result tell(std::int64_t* where) override {
        *where = static_cast<std::int64_t>(position);
        return V3_OK;
    }
    v3_bstream** pointer() { return as<v3_bstream>(); }

    std::vector<std::byte> bytes;
    std::size_t position = 0;
    std::size_t room = SIZE_MAX;
    int chunk;
};

struct Point {
    std::int32_t offset;
    double value;
};

struct Queue final : HostObject<HostQueue> {
    v3_param_id parameter() override { return parameterId; }
    std::int32_t count() override { return static_cast<std::int32_t>(points.size()); }
    v3_result point(std::int32_t index, std::int32_t* offset, double* value) override;
    v3_result add(std::int32_t offset, double value, std::int32_t* index) override;

    v3_param_id parameterId = 0;
    std::vector<Point> points;
};

/// Allocates nothing after construction as long as 32 queues of 64 points will do.
struct Changes final : HostObject<HostChanges> {
    Changes();
    Changes(std::initializer_list<std::pair<v3_param_id, std::vector<Point>>> all);
    std::int32_t count() override { return static_cast<std::int32_t>(used); }
    HostQueue* queue(std::int32_t index) override { return &queues[static_cast<std::size_t>(index)]; }
    HostQueue* add(const v3_param_id* id, std::int32_t* index) override;
    void add(v3_param_id id, int offset, double value);
    void clear() { used = 0; }
    v3_param_changes** pointer() { return as<v3_param_changes>(); }

    std::vector<Queue> queues;
    std::size_t used = 0;
};

struct Events final : HostObject<HostEvents> {
    std::uint32_t count() override { return static_cast<std::uint32_t>(events.size()); }
    v3_result event(std::int32_t index, v3_event* event) override;
    v3_result add(v3_event* event) override;
    v3_event_list** pointer() { return as<v3_event_list>(); }

    std::vector<v3_event> events;
};

/// Timers of the main thread, all of which are due whenever it asks.
struct RunLoop final : HostObject<HostRunLoop> {
    v3_result addHandler(v3_event_handler**, int) override { return V3_NOT_IMPLEMENTED; }
    v3_result removeHandler(v3_event_handler**) override { return V3_NOT_IMPLEMENTED; }
    v3_result addTimer(v3_timer_handler** handler, std::uint64_t ms) override;
    v3_result removeTimer(v3_timer_handler** handler) override;
    void run();

    std::vector<v3_timer_handler**> timers;
};

/// Notes down what a plug-in tells, and on which thread.
struct Handler final : HostObject<HostHandler> {
    struct Call {
        enum class Kind { Begin, Perform, End, Restart, Dirty, StartGroup, FinishGroup } kind;
        v3_param_id parameter = 0;
        double value = 0.0;
        int flags = 0;
        bool operator==(const Call&) const = default;
    };

    v3_result beginEdit(v3_param_id id) override { return note({Call::Kind::Begin, id}); }
    v3_result performEdit(v3_param_id id, double value) override {
        return note({Call::Kind::Perform, id, value});
    }
    v3_result endEdit(v3_param_id id) override { return note({Call::Kind::End, id}); }
    v3_result restart(std::int32_t flags) override { return note({Call::Kind::Restart, 0, 0.0, flags}); }
    HostUnknown* other(const std::uint8_t* id) override;
    v3_result note(const Call& call);
    /// Whether it was told to restart for any of these reasons; forgets that.
    bool takeRestart(int flags);
    int count(Call::Kind kind) const;

    struct Second final : HostObject<HostHandler2> {
        explicit Second(Handler& whole) : handler(whole) {}
        v3_result query(const v3_tuid id, void** found) override { return handler.query(id, found); }
        std::uint32_t ref() override { return handler.ref(); }
        std::uint32_t unref() override { return handler.unref(); }
        v3_result setDirty(v3_bool) override { return handler.note({Call::Kind::Dirty}); }
        v3_result openEditor(const char*) override { return V3_NOT_IMPLEMENTED; }
        v3_result startGroup() override { return handler.note({Call::Kind::StartGroup}); }
        v3_result finishGroup() override { return handler.note({Call::Kind::FinishGroup}); }
        Handler& handler;
    } second{*this};
    RunLoop* runLoop = nullptr;  ///< that it offers
    std::vector<Call> calls;
    int restartFlags = 0;
    int strayCalls = 0;  ///< on another thread than the one that made it
    std::function<void(const Call&)> onCall;
    const std::thread::id mainThread = std::this_thread::get_id();
};

struct Application final : HostObject<HostApplication> {
    v3_result name(std::int16_t* name) override;
    v3_result create(std::uint8_t*, std::uint8_t*, void**) override { return V3_NOT_IMPLEMENTED; }
    HostUnknown* other(const std::uint8_t* id) override {
        return v3_tuid_match(id, v3_run_loop_iid) ? runLoop : nullptr;
    }
    RunLoop* runLoop = nullptr;  ///< that it offers
};

}  // namespace vanta::test
