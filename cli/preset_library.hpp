#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// The presets that a user can name: those in the user's preset folder, then those that the program
/// carries, which need no file.
class PresetLibrary {
public:
    struct Preset {
        std::string folder;  ///< as in a menu, levels separated by slashes; empty at the top
        std::string name;
        std::string label;              ///< the name after its MIDI bank and program
        std::filesystem::path file;     ///< empty if it is built in
        std::vector<std::byte> record;  ///< if it is built in
    };

    PresetLibrary();

    /// By "Name" or "Folder/Name", exactly or else without regard to case. Null if there is none.
    const Preset* find(const std::string& name) const;
    /// All of them, without built-in ones that the user's folder holds as well.
    std::string list() const;
    std::vector<std::string> names() const;
    /// Whether a user's preset of that name keeps a built-in one from being found by its name alone.
    bool hidesBuiltIn(const std::string& name) const;

    static std::filesystem::path userFolder();

private:
    bool isShadowed(const Preset& builtIn) const;

    std::vector<Preset> presets_;
};

/// Whether `text` means a file and not a name in the library.
bool looksLikePresetFile(const std::string& text);

/// Loads a preset by its name, or a file by its path. UsageError if there is neither, Failure for a file that
/// is not a preset. The result is the preset's name as menus show it.
std::string loadNamedPreset(LimiterSettings& settings, const std::string& nameOrFile);

}  // namespace vanta
