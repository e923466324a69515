#include "tests/fuzz/fuzz_targets.hpp"

#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/bitmap_error.hpp"
#include "gui/graphics/bitmap_filer.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/preset_maps.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "limiter/resources/style_resources.hpp"
#include "limiter/styles/style_check.hpp"
#include "limiter/styles/style_patch.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_source.hpp"
#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/midi/controller_mapping.hpp"
#include "plugin/model/session_state.hpp"
#include "plugin/presets/preset_map.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "plugin/settings/settings_file.hpp"
#include "tests/support/engine_rig.hpp"
#include "tests/support/random_patch.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::fuzz {
namespace {

class Table final : public GenericPluginBase, public VantaParameters {
public:
    Table() : GenericPluginBase(0), VantaParameters(static_cast<GenericPluginBase&>(*this)) {}
    void beginChange() override {}
    void endChange() override {}
    void parameterChanged(int, float, int) override {}
};

/// gtest's checks are not there under a fuzzer, and assert is not in a release.
void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

/// A folder that is gone when the process ends.
const std::filesystem::path& scratch() {
    static const test::TempFolder folder;
    return folder.path;
}

void requireInRange(const GenericPluginBase& table, std::span<const float> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const AbstractPluginParameter& parameter = *table.parameterAt(static_cast<int>(i));
        require(values[i] >= parameter.minimum() && values[i] <= parameter.maximum(),
                "a value leaves its range");
    }
}

void requireInRange(const GenericPluginBase& table) {
    std::vector<float> values;
    for (int i = 0; i < table.parameterCount(); ++i) values.push_back(table.parameterAt(i)->value());
    requireInRange(table, values);
}

void runPreset(std::string_view bytes) {
    Table table;
    loadPreset(table, bytesOf(bytes), LockOutputRule::Honour);
    requireInRange(table);
}

void runPresetMap(std::string_view bytes) {
    BinaryMemoryReader reader(bytesOf(bytes));
    const auto map = readPresetMap(reader);
    if (!map) return;
    require(4 * (map->oldToNew.size() + map->added.size()) <= bytes.size(), "more entries than bytes");
    map->fits(VantaParameters::kParameterCount);
}

void runControllerMap(std::string_view bytes) {
    constexpr int kParameters = VantaParameters::kParameterCount;
    BinaryMemoryReader reader(bytesOf(bytes));
    ControllerMapping map(kParameters);
    map.read(reader);
    for (int i = 0; i < MidiControlled::kControllerCount; ++i) {
        const int target = map.targetOf(i);
        require(target >= -1 && target < kParameters, "a target that does not exist");
        require(target == -1 || map.controllerOf(target) == i, "a target with two controllers");
    }
}

/// An instance of a user whose home is the scratch folder. One is enough: a state that was refused has to
/// leave it alone, and one that was taken replaces all that the last one set.
VantaPlugin& instance() {
    struct Home {
        Home() {
            ::setenv("HOME", scratch().c_str(), 1);
            for (const char* name :
                 {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DOCUMENTS_DIR"}) {
                ::setenv(name, (scratch() / name).c_str(), 1);
            }
        }
    };
    static const Home home;
    static VantaPlugin plugin(kStereoLayout);
    return plugin;
}

void runSession(std::string_view bytes) {
    VantaPlugin& plugin = instance();
    const std::vector<std::byte> before = writeSessionState(plugin);
    const bool taken = readSessionState(plugin, bytesOf(bytes));
    requireInRange(plugin);
    for (int slot = 0; slot < CompareStates::kSlots; ++slot) {
        requireInRange(plugin, plugin.compareStates().state(slot).values);
    }
    const std::vector<std::byte> after = writeSessionState(plugin);
    require(taken || after == before, "a refused state leaves its mark");
    require(readSessionState(plugin, after), "a stored state that can't be read");
    require(writeSessionState(plugin) == after, "a state that is stored otherwise than it was read");
    plugin.toggleCompare();
    requireInRange(plugin);
}

void runSettings(std::string_view bytes) {
    const std::filesystem::path path = scratch() / "settings.conf";
    test::writeBytes(path, std::string(bytes));
    SettingsFile file(path);
    for (const char* name : {"A", "B", "T", "R", "X"}) file.get(name);
    file.set("A", std::string("new"));
    require(file.save(path), "settings that can't be saved");
    const SettingsFile again(path);
    require(again.state() == SettingsFile::State::Sound, "saved settings that can't be read");
    require(again.get("A") == SettingValue(std::string("new")), "a saved value that is not there");
}

void runArchive(std::string_view bytes) {
    const std::filesystem::path folder = scratch() / "archive" / "in";
    std::filesystem::create_directories(folder.parent_path());
    extractFolder(bytesOf(bytes), "FactoryPresets", folder, true);
    std::filesystem::remove_all(folder);
    for (const auto& left : std::filesystem::directory_iterator(scratch() / "archive")) {
        require(false, left.path().c_str());
    }
    readFolder(bytesOf(bytes), "FactoryPresets");
}

void runPNG(std::string_view bytes) {
    gui::DeviceBacking backing;
    gui::Bitmap bitmap(backing);
    BinaryMemoryReader file(bytesOf(bytes));
    try {
        gui::readBitmap(bitmap, file.stream());
    } catch (const gui::EBitmap&) {
        return;
    }
    require(!bitmap.isEmpty(), "a picture without pixels");
    for (int y = 0; y < bitmap.pixelRect().bottom; ++y) {
        for (int x = 0; x < bitmap.pixelRect().right; ++x) {
            const gui::Pixel pixel = bitmap.row(y)[x];
            require(bitmap.hasAlpha || gui::opacityOf(pixel) == 255, "opacity that is not told of");
            require(static_cast<int>(pixel & 255u) <= gui::opacityOf(pixel), "a colour beyond its opacity");
        }
    }
}

/// The engine built to capacity, with a sound that goes on. What a record says need not have been checked.
void runEngine(std::span<const float> values) {
    static test::EngineRig rig(DynamicsEngineConfiguration(),
                               {test::Signal(600, 0.7f), test::pinkNoise(1, 600, 0.3)});
    for (test::VectorSource& signal : rig.signals) signal.rewind();
    rig.set(values);
    rig.run({256, 1, 255});
    for (test::Signal& channel : rig.out) {
        for (const float sample : channel) require(std::isfinite(sample), "a sample that is not finite");
        channel.clear();
    }
}

const EngineLayout& patchLayout() {
    static const EngineLayout layout(patchConfiguration());
    return layout;
}

void runStyle(std::string_view bytes) {
    std::vector<float> values;
    try {
        values = readStyleRecord(bytesOf(bytes));
    } catch (const StyleError&) {
        return;
    }
    if (checkStyle(patchLayout(), values).empty()) {
        const std::string source = writeStyleSource(patchLayout(), values);
        require(parseStyleSource(patchLayout(), source, "x").size() == values.size(),
                "a source that is refused");
    }
    runEngine(values);
}

void runStyleSource(std::string_view bytes) {
    try {
        runEngine(readStylePatch(bytes, "x.style").values);
    } catch (const StyleError&) {
    }
}

std::string asText(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::vector<std::string> presetSamples() {
    const auto older = [](const std::string& tag, int version, int values) {
        std::ostringstream stream;
        BinaryDataWriter writer(stream);
        writer.writeHeader(tag, version);
        writer.writeInt(values);
        for (int i = 0; i < values; ++i) writer.writeFloat(0.5f);
        return stream.str();
    };
    return {asText(readFolder(factoryArchive(), "FactoryPresets").front().bytes),
            older(std::string(kPresetTag), 1, 28), older("Vntr", 3, 19)};
}

std::vector<std::string> presetMapSamples() {
    registerPresetMaps();
    BinaryResourceReader reader(presetMapName(std::string(kPresetTag), 1));
    return {std::string(std::istreambuf_iterator<char>(reader.stream()), {})};
}

std::vector<std::string> controllerMapSamples() {
    ControllerMapping map(VantaParameters::kParameterCount);
    for (int i = 0; i < VantaParameters::kParameterCount; ++i) map.assign(3 * i, i);
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    map.write(writer);
    return {stream.str()};
}

std::vector<std::string> sessionSamples() {
    VantaPlugin& plugin = instance();
    plugin.toggleCompare();
    plugin.gain.setValue(6.5f, 0);
    return {asText(writeSessionState(plugin))};
}

std::vector<std::string> settingsSamples() {
    return {"# c\n[Integers]\nA=1\nB=-5\n\n[Texts]\nT=a\\nb\n\n[Raw Texts]\nR=ff00\n\n[Bytes]\nX=0102ff\n"};
}

/// The factory archive up to its first files, which a fuzzer gets through faster than through all.
std::vector<std::string> archiveSamples() {
    return {asText(factoryArchive()).substr(0, 1200)};
}

std::vector<std::string> styleSamples() {
    return {asText(styleResources().front().bytes),
            asText(writeStyleRecord(test::randomPatch(patchLayout(), 1)))};
}

std::vector<std::string> styleSourceSamples() {
    return {writeStyleSource(patchLayout(), readStyleRecord(styleResources().front().bytes))};
}

std::string chunk(const std::string& type, const std::string& data) {
    const auto size = static_cast<char>(data.size());
    return std::string("\0\0\0", 3) + size + type + data + "....";  // nobody reads the checksum
}

/// Stored rather than deflated, so that damage gets as far as the rows; one with opacity, one without, with
/// every filter, and cut into two pieces.
std::vector<std::string> pngSamples() {
    std::vector<std::string> samples;
    for (const char type : {'\2', '\6'}) {
        const std::size_t rowBytes = type == '\6' ? 16 : 12;
        std::string rows;
        for (char filter = 0; filter < 6; ++filter) {
            rows += filter;
            for (std::size_t i = 0; i < rowBytes; ++i) rows += static_cast<char>(37 * i);
        }
        uLongf size = compressBound(static_cast<uLong>(rows.size()));
        std::string data(size, '\0');
        compress2(reinterpret_cast<Bytef*>(data.data()), &size, reinterpret_cast<const Bytef*>(rows.data()),
                  static_cast<uLong>(rows.size()), Z_NO_COMPRESSION);
        data.resize(size);
        samples.push_back("\x89PNG\r\n\x1A\n" +
                          chunk("IHDR", std::string("\0\0\0\4\0\0\0\6\10", 9) + type + std::string(3, '\0')) +
                          chunk("gAMA", std::string("\0\0\xB1\x8F", 4)) + chunk("IDAT", data.substr(0, 40)) +
                          chunk("IDAT", data.substr(40)) + chunk("IEND", ""));
    }
    return samples;
}

constexpr Target kTargets[] = {
    {"preset", runPreset, presetSamples},
    {"preset_map", runPresetMap, presetMapSamples},
    {"controller_map", runControllerMap, controllerMapSamples},
    {"session", runSession, sessionSamples},
    {"settings", runSettings, settingsSamples},
    {"archive", runArchive, archiveSamples},
    {"png", runPNG, pngSamples, 2048},
    {"style", runStyle, styleSamples, 256},
    {"style_source", runStyleSource, styleSourceSamples, 256},
};

}  // namespace

std::span<const Target> targets() {
    return kTargets;
}

}  // namespace vanta::fuzz
