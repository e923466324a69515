#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

#include "plugin/model/plugin_listener.hpp"

namespace vanta {

/// The thread that a model belongs to, and the listener that claims it. The owner is the thread that built
/// the model; while a listener is attached, the one that attached it.
class ModelOwner {
public:
    class ListenerCall;

    ModelOwner() : thread_(std::this_thread::get_id()) {}
    ModelOwner(const ModelOwner&) = delete;
    ModelOwner& operator=(const ModelOwner&) = delete;

    /// Null detaches. On return the old listener is not called any more, except by calls that the calling
    /// thread itself is in. Waits for the owner's work and for calls on other threads, so it must not be
    /// called under a lock that the old listener takes.
    void setListener(PluginListener* listener);
    PluginListener* listener() const { return listener_.load(); }
    /// Calls the listener, if there is one. Any thread but the audio thread.
    void notify(const PluginEvent& event);

    bool isThisThread() const { return thread_.load() == std::this_thread::get_id(); }
    /// Makes the calling thread the owner unless a listener is attached. True if it is the owner now. Waits
    /// for the owner's work.
    bool claim();
    /// Runs `work` if the calling thread is the owner, which it remains meanwhile. The result is that of
    /// `work`, or 0.
    int runAsOwner(const std::function<int()>& work);

private:
    std::atomic<PluginListener*> listener_{nullptr};
    std::atomic<int> calls_{0};
    std::atomic<std::thread::id> thread_;
    /// Held while the owner works, listener and host included, and while it changes. It belongs to one
    /// instance, and nobody comes to it with a lock that a listener may want: see `setListener`.
    std::recursive_mutex mutex_;
};

/// A call into the listener, which `setListener` waits for. The calls of one thread are chained, so that a
/// listener that detaches itself within its own call does not wait for itself.
class ModelOwner::ListenerCall {
public:
    explicit ListenerCall(ModelOwner& owner);
    ~ListenerCall();
    ListenerCall(const ListenerCall&) = delete;
    ListenerCall& operator=(const ListenerCall&) = delete;

    /// Null if there is none.
    PluginListener* listener() const { return listener_; }
    /// How many calls into this owner's listener the calling thread is in.
    static int onThisThread(const ModelOwner& owner);

private:
    ModelOwner& owner_;
    ListenerCall* outer_;
    PluginListener* listener_;
};

}  // namespace vanta
