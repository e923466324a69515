#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "gui/tree/component.hpp"
#include "interface/menus/notices.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta::interface {

/// What a user does with presets, files and folders included. On the interface's thread. What asks a question
/// waits in a loop of its own: call it with nothing of the interface on the stack, and nothing of it
/// afterwards.
class PresetCommands final : public gui::Component {
public:
    PresetCommands(gui::UserInterface& interface, GenericPlugin& plugin, Notices& usedNotices);

    /// A preset has been loaded, which is a step of undo.
    std::function<void()> onLoaded;

    /// A file that holds no preset of ours is reported, and nothing changes.
    bool load(const PresetEntry& entry);
    /// To the preset before the current one or behind it; from one that is in no folder to the last or first.
    void step(PresetManager::Direction direction);
    /// Whether the current preset is a file that can be written.
    bool canSave() const;
    void save();
    /// Asks for a file.
    void saveAs();
    /// As what new instances start with.
    void saveAsDefault();
    /// Asks for a file.
    void openOther();
    /// Asks for a folder, which is where presets are from now on.
    void changeFolder();
    /// Asks whether it may.
    void restoreFactory();

private:
    void write(const std::filesystem::path& path);
    PresetEntry entryOf(const std::filesystem::path& path) const;
    std::optional<PresetEntry> neighbour(PresetManager::Direction direction) const;
    std::string currentFolder() const;

    GenericPlugin& model_;
    Notices& notices_;
};

}  // namespace vanta::interface
