// Writes the descriptions of the LV2 plug-ins, and the factory presets as hosts offer them.

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "limiter/model/vanta_plugin.hpp"
#include "tools/lv2_bundle/interface_description.hpp"
#include "tools/lv2_bundle/plugin_description.hpp"
#include "tools/lv2_bundle/preset_descriptions.hpp"

namespace {

using namespace vanta;

/// What is built must not depend on who builds it, nor leave anything in that user's folders.
void forgetTheUser() {
    for (const char* folder :
         {"HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DOCUMENTS_DIR"}) {
        ::setenv(folder, "/dev/null", 1);
    }
}

void write(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw std::runtime_error(fmt::format("cannot write {}", path.string()));
}

void writeBundles(const std::filesystem::path& pluginBundle, const std::filesystem::path& presetBundle) {
    write(pluginBundle / "manifest.ttl", pluginManifest());
    write(pluginBundle / kInterfaceFile, describeInterface());
    for (const Lv2Layout& layout : lv2Layouts()) {
        VantaPlugin model(layout.layout);
        loadInitialPreset(model);
        write(pluginBundle / descriptionFile(layout), describePlugin(layout, model));
    }
    VantaPlugin model(kStereoLayout);
    const std::vector<Lv2Preset> presets = readFactoryPresets(model);
    write(presetBundle / "manifest.ttl", presetManifest(presets));
    write(presetBundle / kPresetFile, describePresets(presets));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fmt::print(stderr, "usage: lv2_bundle PLUGIN_BUNDLE PRESET_BUNDLE\n");
        return 2;
    }
    try {
        forgetTheUser();
        writeBundles(argv[1], argv[2]);
    } catch (const std::exception& error) {
        fmt::print(stderr, "lv2_bundle: {}\n", error.what());
        return 1;
    }
    return 0;
}
