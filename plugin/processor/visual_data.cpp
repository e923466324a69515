#include "foundation/binary_data.hpp"
#include "plugin/metering/level_source_proxies.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"

namespace vanta {

namespace {

void writeAudio(const wave::AudioSource& source, BinaryDataWriter& writer) {
    writer.writeInt(source.channelCount());
    writer.writeInt(source.frameCount());
    writer.writeInt(source.blockLength());
    for (int frame = 0; frame < source.frameCount(); ++frame) {
        for (int channel = 0; channel < source.channelCount(); ++channel) {
            writer.writeFloats(
                {source.block(frame, channel), static_cast<std::size_t>(source.blockLength())});
        }
    }
}

void writeLevels(wave::LevelSource& source, BinaryDataWriter& writer) {
    for (int info = 0; info < wave::LevelSource::InfoCount; ++info) {
        writer.writeFloat(source.value(static_cast<wave::LevelSource::Info>(info)));
    }
    writer.writeInt(source.infoWord());
}

void writeSpectrum(const wave::SpectrumSource& source, BinaryDataWriter& writer) {
    writer.writeInt(source.spectrumCount());
    writer.writeInt(static_cast<int>(source.data().size()));
    writer.writeFloats(source.data());
}

}  // namespace

void GenericPluginProcessor::writeVisualData(BinaryDataWriter& writer) {
    idleSamples_.store(0);
    for (wave::AudioSource* source : audioSources) source->lock();
    for (wave::SpectrumSource* source : spectrumSources) source->lock();
    for (const wave::AudioSource* source : audioSources) writeAudio(*source, writer);
    for (wave::LevelSource* source : levelSources) writeLevels(*source, writer);
    for (const wave::SpectrumSource* source : spectrumSources) writeSpectrum(*source, writer);
    for (wave::SpectrumSource* source : spectrumSources) source->unlock();
    for (wave::AudioSource* source : audioSources) source->unlock();
}

void GenericPluginProcessor::applyLevelCommands(std::span<const std::uint8_t> commands) {
    for (std::size_t i = 0; i < commands.size() && i < levelSources.size(); ++i) {
        LevelSourceProxy::apply(commands[i], *levelSources[i]);
    }
}

}  // namespace vanta
