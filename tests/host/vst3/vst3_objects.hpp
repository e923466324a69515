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
#include <span>
#include <thread>
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

/// An object of one interface, whose functions `Self` declares in their order, and before any other virtual
/// one. It counts who holds it; its host outlives all that.
template <typename Self>
class HostObject : public HostUnknown {
public:
    v3_result query(const v3_tuid id, void** found) override {
        const bool own = v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, Self::id());
        HostUnknown* const known = own ? this : static_cast<Self*>(this)->other(id);
        *found = known;
        if (!known) return V3_NO_INTERFACE;
        known->ref();
        return V3_OK;
    }
    std::uint32_t ref() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t unref() override { return static_cast<std::uint32_t>(--references); }
    /// What else it can be asked for.
    HostUnknown* other(const std::uint8_t*) { return nullptr; }

    template <typename Pointed>
    Pointed** as() {
        return static_cast<Pointed**>(static_cast<void*>(static_cast<HostUnknown*>(this)));
    }

    std::atomic<int> references{0};

protected:
    ~HostObject() = default;
};

/// Bytes that are read and written in pieces of at most `chunk`, if that is not 0, up to `room`.
struct Stream final : HostObject<Stream> {
    static const std::uint8_t* id() { return v3_bstream_iid; }
    explicit Stream(std::span<const std::byte> content = {}, int pieces = 0)
        : bytes(content.begin(), content.end()), chunk(pieces) {}
    virtual v3_result read(void* buffer, std::int32_t wanted, std::int32_t* taken);
    virtual v3_result write(void* buffer, std::int32_t wanted, std::int32_t* taken);
    virtual v3_result seek(std::int64_t, std::int32_t, std::int64_t*) { return V3_NOT_IMPLEMENTED; }
    virtual v3_result tell(std::int64_t* where) {
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

struct Queue final : HostObject<Queue> {
    static const std::uint8_t* id() { return v3_param_value_queue_iid; }
    virtual v3_param_id parameter() { return parameterId; }
    virtual std::int32_t count() { return static_cast<std::int32_t>(points.size()); }
    virtual v3_result point(std::int32_t index, std::int32_t* offset, double* value);
    virtual v3_result add(std::int32_t offset, double value, std::int32_t* index);

    v3_param_id parameterId = 0;
    std::vector<Point> points;
};

/// Allocates nothing after construction as long as 32 queues of 64 points will do.
struct Changes final : HostObject<Changes> {
    static const std::uint8_t* id() { return v3_param_changes_iid; }
    Changes();
    virtual std::int32_t count() { return static_cast<std::int32_t>(used); }
    virtual Queue* queue(std::int32_t index) { return &queues[static_cast<std::size_t>(index)]; }
    virtual Queue* add(const v3_param_id* id, std::int32_t* index);
    void add(v3_param_id id, int offset, double value);
    void clear() { used = 0; }
    v3_param_changes** pointer() { return as<v3_param_changes>(); }

    std::vector<Queue> queues;
    std::size_t used = 0;
};

/// Timers of the main thread, all of which are due whenever it asks.
struct RunLoop final : HostObject<RunLoop> {
    static const std::uint8_t* id() { return v3_run_loop_iid; }
    virtual v3_result addHandler(v3_event_handler** handler, int fd);
    virtual v3_result removeHandler(v3_event_handler** handler);
    virtual v3_result addTimer(v3_timer_handler** handler, std::uint64_t ms);
    virtual v3_result removeTimer(v3_timer_handler** handler);
    void run();

    std::vector<v3_timer_handler**> timers;
    std::vector<std::pair<v3_event_handler**, int>> descriptors;
};

/// Notes down what a plug-in tells, and on which thread.
struct Handler final : HostObject<Handler> {
    static const std::uint8_t* id() { return v3_component_handler_iid; }
    struct Call {
        enum class Kind { Begin, Perform, End, Restart, Dirty, StartGroup, FinishGroup } kind;
        v3_param_id parameter = 0;
        double value = 0.0;
        int flags = 0;
        bool operator==(const Call&) const = default;
    };

    virtual v3_result beginEdit(v3_param_id id) { return note({Call::Kind::Begin, id}); }
    virtual v3_result performEdit(v3_param_id id, double value) {
        return note({Call::Kind::Perform, id, value});
    }
    virtual v3_result endEdit(v3_param_id id) { return note({Call::Kind::End, id}); }
    virtual v3_result restart(std::int32_t flags) { return note({Call::Kind::Restart, 0, 0.0, flags}); }
    HostUnknown* other(const std::uint8_t* id);
    v3_result note(const Call& call);
    /// Whether it was told to restart for any of these reasons; forgets that.
    bool takeRestart(int flags);
    int count(Call::Kind kind) const;

    struct Second final : HostObject<Second> {
        static const std::uint8_t* id() { return v3_component_handler2_iid; }
        explicit Second(Handler& whole) : handler(whole) {}
        v3_result query(const v3_tuid id, void** found) override { return handler.query(id, found); }
        std::uint32_t ref() override { return handler.ref(); }
        std::uint32_t unref() override { return handler.unref(); }
        virtual v3_result setDirty(v3_bool) { return handler.note({Call::Kind::Dirty}); }
        virtual v3_result openEditor(const char*) { return V3_NOT_IMPLEMENTED; }
        virtual v3_result startGroup() { return handler.note({Call::Kind::StartGroup}); }
        virtual v3_result finishGroup() { return handler.note({Call::Kind::FinishGroup}); }
        Handler& handler;
    } second{*this};
    RunLoop* runLoop = nullptr;  ///< that it offers
    std::vector<Call> calls;
    int restartFlags = 0;
    int strayCalls = 0;  ///< on another thread than the one that made it
    std::function<void(const Call&)> onCall;
    const std::thread::id mainThread = std::this_thread::get_id();
};

/// The window around a view. It notes down the sizes that are asked for.
struct Frame final : HostObject<Frame> {
    static const std::uint8_t* id() { return v3_plugin_frame_iid; }
    virtual v3_result resize(v3_plugin_view** view, v3_view_rect* rectangle) {
        return onResize ? onResize(view, *rectangle) : v3_cpp_obj(view)->on_size(view, rectangle);
    }
    HostUnknown* other(const std::uint8_t* id) {
        return v3_tuid_match(id, v3_run_loop_iid) ? runLoop : nullptr;
    }
    RunLoop* runLoop = nullptr;  ///< that it offers
    /// Else it grants whatever is wanted at once.
    std::function<v3_result(v3_plugin_view**, const v3_view_rect&)> onResize;
};

struct Application final : HostObject<Application> {
    static const std::uint8_t* id() { return v3_host_application_iid; }
    virtual v3_result name(std::int16_t* name);
    virtual v3_result create(std::uint8_t*, std::uint8_t*, void**) { return V3_NOT_IMPLEMENTED; }
    HostUnknown* other(const std::uint8_t* id) {
        return v3_tuid_match(id, v3_run_loop_iid) ? runLoop : nullptr;
    }
    RunLoop* runLoop = nullptr;  ///< that it offers
};

}  // namespace vanta::test
