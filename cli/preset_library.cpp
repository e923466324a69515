#include "cli/preset_library.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "cli/suggestion.hpp"
#include "foundation/ascii.hpp"
#include "foundation/failure.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "limiter/model/vanta_product.hpp"
#include "plugin/presets/preset_manager.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "plugin/settings/product_settings.hpp"

namespace vanta {

namespace {

using Preset = PresetLibrary::Preset;
namespace fs = std::filesystem;

void addFolder(const PresetFolder& folder, const std::string& shown, std::vector<Preset>& presets) {
    for (const auto& entry : folder.entries) {
        presets.push_back({shown, entry->name, entry->label, entry->path, {}});
    }
    for (const auto& sub : folder.folders) {
        addFolder(*sub, shown.empty() ? sub->name : shown + "/" + sub->name, presets);
    }
}

/// A folder's number orders it and is not shown.
std::string shownName(const std::string& folder) {
    return folder.starts_with('_') ? folder.substr(folder.find_first_not_of("_0123456789 ")) : folder;
}

std::vector<Preset> builtInPresets() {
    std::vector<Preset> presets;
    for (ArchivedFile& file : readFolder(factoryArchive(), "FactoryPresets")) {
        const fs::path path = file.path;
        const std::string name = path.stem().string();
        presets.push_back({shownName(path.parent_path().string()), name, name, {}, std::move(file.bytes)});
    }
    return presets;
}

std::string fullName(const Preset& preset) {
    return preset.folder.empty() ? preset.name : preset.folder + "/" + preset.name;
}

void loadFile(LimiterSettings& settings, const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error))
        throw Failure(fmt::format("{}: is not a regular file", file.string()));
    if (!loadPresetFile(settings, file, LockOutputRule::Ignore))
        throw Failure(fmt::format("{}: is not a preset of this limiter, or is damaged; see 'vanta presets'",
                                  file.string()));
}

}  // namespace

PresetLibrary::PresetLibrary() {
    PresetManager manager;
    manager.rescan(userFolder().string());
    if (const auto older = firstVersionPresetFolder(vantaProduct())) {
        manager.addFolder(older->string(), "V1 Preset Folder");
    }
    addFolder(manager, {}, presets_);
    for (const auto& extra : manager.extraFolders()) addFolder(*extra, extra->name, presets_);
    for (Preset& preset : builtInPresets()) presets_.push_back(std::move(preset));
}

fs::path PresetLibrary::userFolder() {
    return presetFolder(vantaProduct());
}

const Preset* PresetLibrary::find(const std::string& name) const {
    using Same = std::function<bool(const std::string&, const std::string&)>;
    for (const Same& same : {Same(std::equal_to<>()), Same(equalsIgnoringCase)}) {
        for (const Preset& preset : presets_) {
            if (same(preset.name, name) || same(fullName(preset), name)) return &preset;
        }
    }
    return nullptr;
}

std::string PresetLibrary::list() const {
    std::string text;
    std::string heading;
    std::string folder;
    for (const Preset& preset : presets_) {
        // Most user folders hold the built-in presets as files.
        if (preset.file.empty() && isShadowed(preset)) continue;
        const std::string place =
            preset.file.empty() ? "Built in" : fmt::format("In {}", userFolder().string());
        if (place != heading) {
            text += fmt::format("{}{}\n", heading.empty() ? "" : "\n", place);
            folder.clear();
        }
        if (preset.folder != folder) text += fmt::format("\n{}\n", preset.folder);
        heading = place;
        folder = preset.folder;
        text += fmt::format("  {}\n", preset.label);
    }
    return text;
}

bool PresetLibrary::isShadowed(const Preset& builtIn) const {
    return std::any_of(presets_.begin(), presets_.end(), [&](const Preset& other) {
        return !other.file.empty() && fullName(other) == fullName(builtIn);
    });
}

bool PresetLibrary::hidesBuiltIn(const std::string& name) const {
    return std::ranges::any_of(presets_, [&](const Preset& preset) {
        return preset.file.empty() && equalsIgnoringCase(preset.name, name);
    });
}

std::vector<std::string> PresetLibrary::names() const {
    std::vector<std::string> result;
    for (const Preset& preset : presets_) result.push_back(preset.name);
    return result;
}

bool looksLikePresetFile(const std::string& text) {
    return text.find('/') != std::string::npos || fs::path(text).extension() == ".qmp";
}

std::string loadNamedPreset(LimiterSettings& settings, const std::string& nameOrFile) {
    std::error_code error;
    if (fs::exists(nameOrFile, error)) {
        loadFile(settings, nameOrFile);
        return fs::path(nameOrFile).stem().string();
    }
    const PresetLibrary library;
    const Preset* const preset = library.find(nameOrFile);
    if (!preset && looksLikePresetFile(nameOrFile))
        throw Failure(fmt::format("{}: no such file", nameOrFile));
    if (!preset) {
        throw UsageError(fmt::format("unknown preset '{}'{}; see 'vanta presets'", nameOrFile,
                                     suggestion(nameOrFile, library.names())));
    }
    if (preset->file.empty()) {
        loadPreset(settings, preset->record, LockOutputRule::Ignore);
    } else {
        loadFile(settings, preset->file);
    }
    return preset->name;
}

}  // namespace vanta
