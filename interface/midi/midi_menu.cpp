#include "interface/midi/midi_menu.hpp"

#include <fmt/format.h>

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::interface {
namespace {

constexpr float kEnabled = static_cast<float>(GenericPluginBase::MidiState::Enabled);
constexpr float kDisabled = static_cast<float>(GenericPluginBase::MidiState::Disabled);

bool isEnabled(const AbstractPluginParameter& receive) {
    return receive.value() < (kEnabled + kDisabled) / 2.0f;
}

void addEnable(MenuBuilder& menu, GenericPlugin& model, ParameterGestures& gestures) {
    AbstractPluginParameter* const receive = model.receiveMidiParameter;
    if (!receive) return;
    menu.item("Enable MIDI",
              [receive, &gestures] {
                  gestures.set(receive->index(), isEnabled(*receive) ? kDisabled : kEnabled);
              })
        .checked = isEnabled(*receive);
}

/// One item for each association.
void addClear(MenuBuilder menu, GenericPlugin& model) {
    for (int controller = 0; controller < MidiControlled::kControllerCount; ++controller) {
        const int target = model.statics().controllers.targetOf(controller);
        if (target < 0 || target >= model.parameterCount()) continue;
        const std::string& name = model.parameterAt(target)->displayName;
        menu.item(fmt::format("CC {}: {}", controller, name), [&model, controller] {
            const auto held = model.statics().lock();
            model.statics().controllers.assign(controller, MidiControlled::kNoTarget);
        });
    }
    if (menu.isEmpty()) menu.note("(No Controllers)");
}

}  // namespace

void fillMidiMenu(MenuBuilder& menu, GenericPlugin& model, ParameterGestures& gestures) {
    const auto held = model.statics().lock();
    addEnable(menu, model, gestures);
    menu.separator();
    addClear(menu.submenu("Clear"), model);
    menu.item("Clear All", [&model] {
        const auto shared = model.statics().lock();
        model.statics().controllers.clear();
    });
    menu.separator();
    menu.item("Revert", [&model] { model.loadMidiMap(); });
    menu.item("Save", [&model] { model.saveMidiMap(); });
    menu.item("Load Factory Settings", [&model] { model.loadDefaultMidiMap(); });
}

}  // namespace vanta::interface
