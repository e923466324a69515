#include "plugin/metering/level_exchange.hpp"

namespace vanta {
namespace {

template <typename Source>
void build(std::vector<std::unique_ptr<Source>>& sources, int count) {
    for (int i = 0; i < count; ++i) sources.push_back(std::make_unique<Source>());
}

}  // namespace

LevelExchange::LevelExchange(const LevelCounts& counts) {
    build(audio_, counts.audio);
    build(levels_, counts.globalLevels + counts.channels * counts.levelsPerChannel);
    build(spectra_, counts.spectra);
    build(combined_, counts.levelsPerChannel);
    for (int index = 0; index < counts.levelsPerChannel; ++index) {
        for (int c = 0; c < counts.channels; ++c) {
            const int place = counts.globalLevels + c * counts.levelsPerChannel + index;
            combinedLevel(index).set(static_cast<std::size_t>(c), &level(place));
        }
    }
}

void LevelExchange::takeCommands(std::vector<std::uint8_t>& commands) {
    commands.clear();
    for (const auto& source : levels_) commands.push_back(source->takeCommand());
}

void LevelExchange::read(BinaryDataReader& reader) {
    for (const auto& source : audio_) source->read(reader);
    for (const auto& source : levels_) source->read(reader);
    for (const auto& source : spectra_) source->read(reader);
    if (!anew_.exchange(false)) return;
    for (const auto& source : audio_) source->unlock();
}

}  // namespace vanta
