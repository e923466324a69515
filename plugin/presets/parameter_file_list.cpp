#include "plugin/presets/parameter_file_list.hpp"

#include <cstdint>
#include <istream>
#include <utility>

#include "foundation/file_replacement.hpp"
#include "plugin/presets/collection_preset_loader.hpp"
#include "plugin/presets/preset_loader.hpp"

namespace vanta {
namespace {

constexpr std::uintmax_t kHeaderBytes = 12;

std::vector<AbstractPluginParameter*> allOf(const GenericParameterOwner& owner) {
    std::vector<AbstractPluginParameter*> all;
    for (int i = 0; i < owner.parameterCount(); ++i) all.push_back(owner.parameterAt(i));
    return all;
}

/// Whether the record at the stream's start is one of this list.
bool holdsRecord(const ParameterFileList& list, std::istream& stream, int version) {
    BinaryDataReader reader(stream);
    return reader.expectHeader(list.magic()) && reader.version() == version &&
           reader.readInt() == list.size() && !reader.failed();
}

bool fitsInPlace(const ParameterFileList& list, const std::filesystem::path& path, int version) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || size != kHeaderBytes + 4u * static_cast<std::uintmax_t>(list.size())) return false;
    BinaryFileReader reader(path);
    return holdsRecord(list, reader.stream(), version);
}

void writeHeader(const ParameterFileList& list, BinaryDataWriter& writer, int version) {
    writer.writeHeader(list.magic(), version);
    writer.writeInt(list.size());
}

bool writeWhole(const ParameterFileList& list, const std::filesystem::path& path, int version) {
    return replaceFile(path, [&](std::ostream& file) {
        BinaryDataWriter writer(file);
        return writeValues(list, writer, version);
    });
}

}  // namespace

ParameterFileList::ParameterFileList(GenericParameterOwner& owner, std::string magic,
                                     std::vector<AbstractPluginParameter*> parameters)
    : owner_(&owner), magic_(std::move(magic)), parameters_(std::move(parameters)) {}

ParameterFileList::ParameterFileList(GenericParameterOwner& owner, std::string magic)
    : ParameterFileList(owner, std::move(magic), allOf(owner)) {}

std::vector<float> valuesOf(const ParameterFileList& list) {
    std::vector<float> values;
    values.reserve(list.parameters().size());
    for (const AbstractPluginParameter* parameter : list.parameters()) values.push_back(parameter->value());
    return values;
}

void setValues(const ParameterFileList& list, const std::vector<float>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) list.parameters()[i]->setValue(values[i], 0);
}

bool writeValues(const ParameterFileList& list, BinaryDataWriter& writer, int version, int first, int count) {
    const bool inPlace = first != kWholeFile;
    if (inPlace) {
        auto* stream = dynamic_cast<std::iostream*>(&writer.stream());
        if (!stream || !holdsRecord(list, *stream, version)) return false;
        stream->seekp(0);
    }
    writeHeader(list, writer, version);
    for (int i = 0; i < list.size(); ++i) {
        if (inPlace && (i < first || i - first >= count)) {
            writer.skip();
        } else {
            writer.writeFloat(list.parameters()[static_cast<std::size_t>(i)]->value());
        }
    }
    return !writer.failed();
}

bool writeFile(const ParameterFileList& list, const std::filesystem::path& path, int version, int first,
               int count) {
    if (first == kWholeFile || !fitsInPlace(list, path, version)) return writeWhole(list, path, version);
    BinaryFileWriter writer(path);
    return writeValues(list, writer, version, first, count) && writer.flush();
}

bool loadCollection(const ParameterFileList& list, const std::filesystem::path& path, int version) {
    BinaryFileReader reader(path);
    CollectionPresetLoader loader(list.owner(), list.magic(), list.parameters());
    return readPreset(loader, reader, version);
}

}  // namespace vanta
