#include "app/true_peak_check.hpp"

#include <array>
#include <vector>

#include "app/audio_file_reader.hpp"
#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "foundation/numbers.hpp"
#include "host/offline/measuring_streams.hpp"

namespace vanta {

double judgeTruePeak(const std::filesystem::path& path) {
    constexpr std::size_t kBlock = 4096;
    AudioFileReader file(path);
    const auto width = static_cast<std::size_t>(file.channelCount());
    ChannelMapping asTheyStand;
    for (std::size_t c = 0; c < width; ++c) asTheyStand.fileChannel.push_back(static_cast<int>(c));
    file.setMapping(asTheyStand);

    StreamJudge judge(file.channelCount());
    std::vector<float> samples(width * kBlock);
    std::vector<float*> channels(width);
    for (std::size_t c = 0; c < width; ++c) channels[c] = samples.data() + c * kBlock;
    const std::vector<const float*> read(channels.begin(), channels.end());
    for (std::size_t frames = kBlock; frames == kBlock;) {
        frames = file.read(channels, kBlock);
        judge.process(read, frames);
        if (interruptRequested()) throw Interrupted();
    }
    return dbFromGain(judge.finish());
}

}  // namespace vanta
