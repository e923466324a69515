#include "tests/support/sound_files.hpp"

#include <ebur128.h>

#include <algorithm>
#include <cmath>

namespace vanta::test {

SecondOpinion secondOpinion(const std::vector<std::filesystem::path>& files) {
    std::vector<Sound> sounds;
    for (const auto& file : files) sounds.push_back(readSound(file));
    return secondOpinion(sounds);
}

SecondOpinion secondOpinion(const std::vector<Sound>& sounds) {
    constexpr int kMode =
        EBUR128_MODE_I | EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK;
    SecondOpinion opinion{-HUGE_VAL, 0.0, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    std::vector<ebur128_state*> meters;
    for (const Sound& sound : sounds) {
        const std::size_t width = sound.channels.size();
        const std::size_t frames = sound.channels[0].size();
        const auto step = static_cast<std::size_t>(sound.sampleRate / 100);
        std::vector<float> interleaved(frames * width);
        for (std::size_t i = 0; i < interleaved.size(); ++i)
            interleaved[i] = sound.channels[i % width][i / width];
        meters.push_back(
            ebur128_init(static_cast<unsigned>(width), static_cast<unsigned long>(sound.sampleRate), kMode));
        for (std::size_t at = 0; at < frames; at += step) {
            ebur128_add_frames_float(meters.back(), interleaved.data() + at * width,
                                     std::min(step, frames - at));
            double lufs = 0.0;
            ebur128_loudness_momentary(meters.back(), &lufs);
            if (at + step >= step * 40) opinion.momentary = std::max(opinion.momentary, lufs);
            ebur128_loudness_shortterm(meters.back(), &lufs);
            if (at + step >= step * 300) opinion.shortTerm = std::max(opinion.shortTerm, lufs);
        }
        for (unsigned c = 0; c < width; ++c) {
            double peak = 0.0;
            ebur128_true_peak(meters.back(), c, &peak);
            opinion.truePeak = std::max(opinion.truePeak, db(peak));
        }
    }
    ebur128_loudness_global_multiple(meters.data(), meters.size(), &opinion.integrated);
    ebur128_loudness_range_multiple(meters.data(), meters.size(), &opinion.range);
    for (ebur128_state*& meter : meters) ebur128_destroy(&meter);
    return opinion;
}

}  // namespace vanta::test
