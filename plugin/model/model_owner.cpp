#include "plugin/model/model_owner.hpp"

#include <chrono>

namespace vanta {
namespace {

/// How often `setListener` checks whether the last call into the old listener has returned.
constexpr std::chrono::milliseconds kListenerPoll{1};

thread_local ModelOwner::ListenerCall* innermostCall = nullptr;

}  // namespace

ModelOwner::ListenerCall::ListenerCall(ModelOwner& owner) : owner_(owner), outer_(innermostCall) {
    // Counted before the listener is loaded: whoever replaces it stores first and then looks at the count.
    owner_.calls_.fetch_add(1);
    innermostCall = this;
    listener_ = owner_.listener();
}

ModelOwner::ListenerCall::~ListenerCall() {
    innermostCall = outer_;
    owner_.calls_.fetch_sub(1);
}

int ModelOwner::ListenerCall::onThisThread(const ModelOwner& owner) {
    int count = 0;
    for (const ListenerCall* call = innermostCall; call; call = call->outer_)
        count += &call->owner_ == &owner;
    return count;
}

void ModelOwner::notify(const PluginEvent& event) {
    const ListenerCall call(*this);
    if (PluginListener* listener = call.listener()) listener->onEvent(event);
}

void ModelOwner::setListener(PluginListener* listener) {
    {
        const std::lock_guard held(mutex_);
        if (listener) thread_.store(std::this_thread::get_id());
        listener_.store(listener);
    }
    while (calls_.load() > ListenerCall::onThisThread(*this)) std::this_thread::sleep_for(kListenerPoll);
}

bool ModelOwner::claim() {
    const std::lock_guard held(mutex_);
    if (!listener()) thread_.store(std::this_thread::get_id());
    return isThisThread();
}

int ModelOwner::runAsOwner(const std::function<int()>& work) {
    if (!isThisThread()) return 0;
    const std::lock_guard held(mutex_);
    return isThisThread() ? work() : 0;
}

}  // namespace vanta
