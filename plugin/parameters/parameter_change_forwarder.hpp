#pragma once

#include <memory>
#include <vector>

#include "foundation/updated_object.hpp"
#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"

namespace vanta {

/// Turns changes of any number of parameters into one deferred call. The handler's sender is the parameter
/// that changed, an AbstractPluginParameter*, or null if several did. It must outlive the last `applyValue`
/// of the parameters that it listens to.
class ParameterChangeForwarder final : public EventForwarder {
public:
    using EventForwarder::EventForwarder;

    /// Makes a forwarder that calls a member function; the list keeps it.
    template <typename C>
    static ParameterChangeForwarder& add(EventForwarderList& list, C* object, void (C::*method)(void*));

    template <typename T, typename Base>
    void listenTo(TypedPluginParameter<T, Base>& parameter) {
        auto listener = std::make_unique<Listener<T>>(*this);
        parameter.addListener(*listener);
        listeners_.push_back(std::move(listener));
    }

private:
    template <typename T>
    class Listener final : public ValueAssignableAdapter<T> {
    public:
        explicit Listener(ParameterChangeForwarder& forwarder) : forwarder_(forwarder) {}
        void assign(T, void* sender) override { forwarder_.trigger(sender); }

    private:
        ParameterChangeForwarder& forwarder_;
    };

    std::vector<std::unique_ptr<ManagedObject>> listeners_;
};

template <typename C>
ParameterChangeForwarder& ParameterChangeForwarder::add(EventForwarderList& list, C* object,
                                                        void (C::*method)(void*)) {
    auto forwarder = std::make_unique<ParameterChangeForwarder>(
        list, std::make_unique<NotifyEvent::HandlerImpl<C>>(object, method));
    ParameterChangeForwarder& added = *forwarder;
    list.add(std::move(forwarder));
    return added;
}

}  // namespace vanta
