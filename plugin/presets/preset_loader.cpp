#include "plugin/presets/preset_loader.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vanta {

PresetLoader::PresetLoader(GenericParameterOwner* owner, std::string magic)
    : owner_(owner), magic_(std::move(magic)) {}

void PresetLoader::finish(int /*version*/) {}

std::string PresetLoader::magic(int /*version*/) const {
    return magic_;
}

void PresetLoader::prepare(int /*version*/) {}

bool PresetLoader::acceptVersion(int /*version*/) {
    return true;
}

namespace {

bool accepts(PresetLoader& loader, int version, int requiredVersion) {
    return requiredVersion == kAnyVersion ? loader.acceptVersion(version) : version == requiredVersion;
}

void readValues(PresetLoader& loader, BinaryDataReader& reader, int storedCount) {
    const int count = loader.parameterCount();
    const int held = std::clamp(storedCount, 0, count);
    for (int i = 0; i < held; ++i) {
        const float value = reader.readFloat();
        if (reader.failed()) return;
        if (std::isfinite(value)) {
            loader.setValue(i, value);
        } else {
            loader.setDefault(i);
        }
    }
    for (int i = held; i < count; ++i) loader.setDefault(i);
}

}  // namespace

bool readPreset(PresetLoader& loader, BinaryDataReader& reader, int requiredVersion,
                const std::string& alternativeMagic) {
    const std::string tag = reader.readHeader();
    if (reader.failed()) return false;
    const int version = reader.version();
    if (tag != (alternativeMagic.empty() ? loader.magic(version) : alternativeMagic)) return false;
    if (!accepts(loader, version, requiredVersion)) return false;
    const int storedCount = reader.readInt();
    if (reader.failed()) return false;

    std::optional<ChangeBlock> block;
    if (loader.owner()) block.emplace(*loader.owner());
    loader.prepare(version);
    readValues(loader, reader, storedCount);
    loader.finish(version);
    return !reader.failed();
}

}  // namespace vanta
