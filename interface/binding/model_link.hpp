#pragma once

#include <atomic>
#include <memory>

#include "gui/tree/event_relay.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta::gui {
class UserInterface;
}

namespace vanta::interface {

/// An interface as its model knows it: what the model says, on whatever thread, goes to the interface's relay
/// as pairs of interface_events.hpp. The interface's thread makes it and becomes the model's owner.
class ModelLink final : public PluginListener {
public:
    ModelLink(GenericPlugin& linkedModel, gui::UserInterface& interface);
    /// Waits for calls of other threads that are under way. Not under the root's lock, which they may want.
    ~ModelLink() override;
    ModelLink(const ModelLink&) = delete;
    ModelLink& operator=(const ModelLink&) = delete;

    /// Whether no other interface has taken the model over.
    bool isCurrent() const { return model_.owner().listener() == this; }
    /// Takes over what the processor has measured, as the first thing in a frame: displays then read the
    /// model's proxies and never meet the processor. On any thread that holds the root's lock.
    void frame();

    void onEvent(const PluginEvent& event) override;
    void lockInterface() override;
    void unlockInterface() override;

private:
    void post(int key, int value);

    GenericPlugin& model_;
    gui::UserInterface& ui_;
    std::shared_ptr<gui::EventRelay> relay_;
    std::atomic<bool> lost_{false};  ///< a pair that did not fit into the relay
};

}  // namespace vanta::interface
