#include "interface/menus/presets_menu.hpp"

namespace vanta::interface {
namespace {

/// Items hold copies, as a scan may drop what they stand for while the menu is open.
void addFolder(MenuBuilder menu, const PresetFolder& folder, const std::string& current,
               PresetCommands& commands) {
    for (const auto& inner : folder.folders) {
        if (!inner->isEmpty()) addFolder(menu.submenu(inner->name), *inner, current, commands);
    }
    for (const auto& entry : folder.entries) {
        const PresetEntry copy = *entry;
        menu.item(copy.name, [&commands, copy] { commands.load(copy); }).checked = copy.path == current;
    }
}

void addOptions(MenuBuilder menu, GenericPlugin& model, PresetCommands& commands) {
    SharedSettings& settings = model.statics().settings;
    menu.item("Enable MIDI Program Changes",
              [&model] {
                  const auto held = model.statics().lock();
                  Property<bool>& enabled = model.statics().settings.enableMidiProgramChanges;
                  enabled = !enabled;
              })
        .checked = settings.enableMidiProgramChanges.value();
    menu.separator();
    menu.item("Save As Default", [&commands] { commands.saveAsDefault(); });
    menu.separator();
    menu.item("Open Other Preset...", [&commands] { commands.openOther(); });
    menu.item("Change Preset Folder...", [&commands] { commands.changeFolder(); });
    menu.item("Restore Factory Presets", [&commands] { commands.restoreFactory(); });
}

}  // namespace

void fillPresetsMenu(MenuBuilder& menu, GenericPlugin& model, PresetCommands& commands) {
    const std::string current = model.presetState().values().path.string();
    const bool canSave = commands.canSave();
    const auto held = model.statics().lock();
    const PresetManager& presets = model.statics().presets;
    addFolder(menu, presets, current, commands);
    for (const auto& extra : presets.extraFolders()) {
        if (!extra->isEmpty()) addFolder(menu.submenu(extra->name), *extra, current, commands);
    }
    if (menu.isEmpty()) menu.note("(No Presets)");
    menu.separator();
    if (canSave) menu.item("Save", [&commands] { commands.save(); });
    menu.item("Save As...", [&commands] { commands.saveAs(); });
    menu.separator();
    addOptions(menu.submenu("Options"), model, commands);
}

}  // namespace vanta::interface
