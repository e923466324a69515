#include "plugin/model/generic_plugin.hpp"

namespace vanta {

void GenericPlugin::buildSources() {
    const int levels = globalLevelSources + channelCount(channelLayout) * levelSourcesPerChannel;
    for (int i = 0; i < audioSourceCount; ++i) audioSources.push_back(std::make_unique<AudioSourceProxy>());
    for (int i = 0; i < levels; ++i) levelSources.push_back(std::make_unique<LevelSourceProxy>());
    for (int i = 0; i < spectrumSourceCount; ++i) {
        spectrumSources.push_back(std::make_unique<SpectrumSourceProxy>());
    }
    combinedSources.resize(static_cast<std::size_t>(levelSourcesPerChannel));
}

void GenericPlugin::takeLevelCommands(std::vector<std::uint8_t>& commands) {
    commands.clear();
    for (const auto& source : levelSources) commands.push_back(source->takeCommand());
}

void GenericPlugin::readLevelData(BinaryDataReader& reader) {
    for (const auto& source : audioSources) source->read(reader);
    for (const auto& source : levelSources) source->read(reader);
    for (const auto& source : spectrumSources) source->read(reader);
    // What was recorded before a new interface came is not what it is to show.
    if (!listenerAttaching.exchange(false)) return;
    for (const auto& source : audioSources) source->unlock();
}

CombinedLevelSource& GenericPlugin::combinedLevelSource(int index) {
    auto& combined = combinedSources[static_cast<std::size_t>(index)];
    if (!combined) {
        combined = std::make_unique<CombinedLevelSource>();
        for (int c = 0; c < channelCount(channelLayout); ++c) {
            const int place = globalLevelSources + c * levelSourcesPerChannel + index;
            combined->set(static_cast<std::size_t>(c), &levelSource(place));
        }
    }
    return *combined;
}

}  // namespace vanta
