// Packs preset sources into the archive that the program carries.

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <sstream>
#include <stdexcept>

#include "foundation/binary_data.hpp"
#include "foundation/whole_file.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/presets/parameter_file_list.hpp"
#include "tools/compile_presets/archive_writer.hpp"
#include "tools/compile_presets/preset_source.hpp"

namespace {

using namespace vanta;

constexpr std::string_view kUsage =
    R"(usage: compile_presets OUT.cpp FOLDER COMMON PRESET...
       pack FOLDER/PRESET.preset, each on top of FOLDER/COMMON, into one C++ source
)";

/// A parameter table by itself.
class ParameterTable final : public GenericPluginBase, public VantaParameters {
public:
    ParameterTable() : GenericPluginBase(0), VantaParameters(static_cast<GenericPluginBase&>(*this)) {}
    void beginChange() override {}
    void endChange() override {}
    void parameterChanged(int, float, int) override {}
};

std::string presetRecord(const std::filesystem::path& common, const std::filesystem::path& source) {
    ParameterTable table;
    applyPresetSource(table, readWholeFile(common), common.string());
    applyPresetSource(table, readWholeFile(source), source.string());
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    writeValues(ParameterFileList(table, std::string(kPresetTag)), writer, kPresetVersion);
    return stream.str();
}

void addPreset(ArchiveNode& presets, const std::filesystem::path& relative, std::string record) {
    ArchiveNode* folder = &presets;
    for (const auto& part : relative.parent_path()) folder = &folder->child(part.string(), true);
    folder->child(relative.filename().string() + ".qmp", false).content = std::move(record);
}

std::string sourceOf(const std::string& archive) {
    std::string bytes;
    for (std::size_t i = 0; i < archive.size(); ++i) {
        bytes += i % 24 == 0 ? "\n    " : "";
        bytes += fmt::format("{},", static_cast<unsigned char>(archive[i]));
    }
    return fmt::format(
        "#include \"limiter/factory/factory_archive.hpp\"\n\nnamespace vanta {{\nnamespace {{\n\n"
        "constexpr unsigned char kArchive[] = {{{}}};\n\n}}  // namespace\n\n"
        "std::span<const std::byte> factoryArchive() {{\n    return "
        "std::as_bytes(std::span(kArchive));\n}}\n\n"
        "}}  // namespace vanta\n",
        bytes);
}

void compileAll(std::span<const std::string> arguments) {
    const std::filesystem::path folder = arguments[1];
    ArchiveNode root;
    root.child("ApplicationData", true);
    for (const std::string& preset : arguments.subspan(3)) {
        // The suffix is added as text: a name may hold a dot.
        const std::filesystem::path source = (folder / preset).string() + ".preset";
        addPreset(root.child("FactoryPresets", true), preset, presetRecord(folder / arguments[2], source));
    }
    std::ofstream out(arguments[0], std::ios::trunc);
    out << sourceOf(writeSetupArchive(root));
    out.close();
    if (!out)
        throw std::runtime_error(fmt::format("cannot write {}: {}", arguments[0], std::strerror(errno)));
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 4) {
        fmt::print(stderr, "{}", kUsage);
        return 2;
    }
    try {
        compileAll(arguments);
    } catch (const std::exception& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
