#include "interface/menus/preset_commands.hpp"

#include <unistd.h>

#include <memory>
#include <vector>

#include "gui/tree/file_dialogs.hpp"
#include "gui/tree/user_interface.hpp"
#include "plugin/presets/factory_presets.hpp"
#include "plugin/settings/product_settings.hpp"

namespace vanta::interface {
namespace {

constexpr const char* kFilter = "Quillmark Preset (*.qmp)|*.qmp|Any File (*.*)|*.*";
constexpr const char* kBadFile =
    "The preset file could not be opened. It could be corrupt, from another Quillmark plug-in, or it was "
    "written by an incompatible version of this plug-in.";
constexpr const char* kNotSaved =
    "An error occurred while saving the preset. Please check that the preset file is writable: ";
constexpr const char* kRestoreQuestion =
    "Are you sure you want to restore the factory presets?\n\nIf you have overwritten any factory presets or "
    "the default preset, your changes will be undone.";
constexpr const char* kNotRestored =
    "Error: Unable to restore all factory presets.\n\nPlease make sure that your current preset folder path "
    "is valid and that your preset folder is not read-only.";
constexpr const char* kNoFolder = "The folder cannot be used for presets, as it cannot be opened: ";
constexpr const char* kNoDialog = "There is no program on this desktop that can ask for a file or folder.";

}  // namespace

PresetCommands::PresetCommands(gui::UserInterface& interface, GenericPlugin& plugin, Notices& usedNotices)
    : Component(interface), model_(plugin), notices_(usedNotices) {}

PresetEntry PresetCommands::entryOf(const std::filesystem::path& path) const {
    PresetEntry entry;
    entry.path = path.string();
    entry.name = path.stem().string();
    return entry;
}

bool PresetCommands::load(const PresetEntry& entry) {
    if (!model_.loadPreset(entry)) {
        notices_.show(kBadFile, gui::UserInterface::kConfirmation);
        return false;
    }
    if (onLoaded) onLoaded();
    return true;
}

std::optional<PresetEntry> PresetCommands::neighbour(PresetManager::Direction direction) const {
    const std::string current = model_.presetState().values().path.string();
    const auto held = model_.statics().lock();
    PresetManager& presets = model_.statics().presets;
    if (const PresetEntry* next = presets.neighbour(current, direction)) return *next;
    std::vector<PresetEntry*> all;
    presets.flatten(all);
    if (all.empty()) return {};
    return *(direction == PresetManager::Direction::Next ? all.front() : all.back());
}

void PresetCommands::step(PresetManager::Direction direction) {
    if (const std::optional<PresetEntry> entry = neighbour(direction)) load(*entry);
}

bool PresetCommands::canSave() const {
    const std::filesystem::path path = model_.presetState().values().path;
    return !path.empty() && ::access(path.c_str(), W_OK) == 0;
}

void PresetCommands::write(const std::filesystem::path& path) {
    if (model_.savePreset(entryOf(path))) return;
    notices_.show(kNotSaved + path.string(), gui::UserInterface::kConfirmation);
}

void PresetCommands::save() {
    if (const auto path = model_.presetState().values().path; !path.empty()) write(path);
}

/// Of the current preset, or of all of them.
std::string PresetCommands::currentFolder() const {
    const PresetState::Values current = model_.presetState().values();
    if (!current.path.empty()) return current.path.parent_path().string() + "/";
    const auto held = model_.statics().lock();
    return model_.statics().presets.path;
}

void PresetCommands::saveAs() {
    const std::unique_ptr<gui::OpenSaveDialog> dialog = ui().createSaveDialog();
    if (!dialog) return notices_.show(kNoDialog);
    dialog->title = std::string("Save Preset As");
    dialog->filter = std::string(kFilter);
    dialog->defaultExtension = model_.presetExtension();
    dialog->path = currentFolder() + model_.presetState().name() + model_.presetExtension();
    const std::shared_ptr<gui::EventRelay> relay = ui().relay();
    if (!dialog->show() || !relay->isOpen()) return;
    std::filesystem::path path = dialog->path.value();
    if (path.extension().empty()) path += model_.presetExtension();
    write(path);
}

void PresetCommands::saveAsDefault() {
    const std::string name = model_.defaultPresetName();
    if (const auto known = model_.statics().findPreset(name, true)) return write(known->path);
    const std::string folder = [&] {
        const auto held = model_.statics().lock();
        return model_.statics().presets.path;
    }();
    write(std::filesystem::path(folder) / (name + model_.presetExtension()));
}

void PresetCommands::openOther() {
    const std::unique_ptr<gui::OpenSaveDialog> dialog = ui().createOpenDialog();
    if (!dialog) return notices_.show(kNoDialog);
    dialog->title = std::string("Open Preset");
    dialog->filter = std::string(kFilter);
    dialog->path = currentFolder();
    const std::shared_ptr<gui::EventRelay> relay = ui().relay();
    if (dialog->show() && relay->isOpen()) load(entryOf(dialog->path.value()));
}

void PresetCommands::changeFolder() {
    const std::unique_ptr<gui::SelectFolderDialog> dialog = ui().createSelectFolderDialog();
    if (!dialog) return notices_.show(kNoDialog);
    dialog->title = std::string("Select a folder to store your presets");
    {
        const auto held = model_.statics().lock();
        dialog->path = model_.statics().presets.path;
    }
    const std::shared_ptr<gui::EventRelay> relay = ui().relay();
    if (!dialog->show() || !relay->isOpen()) return;
    const std::string folder = dialog->path;
    if (::access(folder.c_str(), R_OK | X_OK) != 0) return notices_.show(kNoFolder + folder);
    const auto held = model_.statics().lock();
    PluginStatics& shared = model_.statics();
    setPresetFolder(shared.product, folder);
    shared.presets.rescan(folder);
}

void PresetCommands::restoreFactory() {
    const std::shared_ptr<gui::EventRelay> relay = ui().relay();
    const int flags = gui::UserInterface::kConfirmation | gui::UserInterface::kWithCancel;
    if (ui().showMessage(kRestoreQuestion, flags) || !relay->isOpen()) return;
    PluginStatics& shared = model_.statics();
    const bool restored = [&] {
        const auto held = shared.lock();
        return restoreFactoryPresets(shared.presets, shared.product.applicationDataFolder(), true);
    }();
    if (!restored) notices_.show(kNotRestored);
}

}  // namespace vanta::interface
