// Measures files with libebur128, for a comparison of whole commands: loudness, range, maxima and true peak.

#include <ebur128.h>
#include <sndfile.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

struct CloseFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
struct CloseMeter {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

bool measure(const char* name) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, CloseFile> file(sf_open(name, SFM_READ, &info));
    if (!file) return false;
    const auto channels = static_cast<unsigned>(info.channels);
    const std::unique_ptr<ebur128_state, CloseMeter> meter(
        ebur128_init(channels, static_cast<unsigned long>(info.samplerate),
                     EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_S | EBUR128_MODE_TRUE_PEAK |
                         EBUR128_MODE_HISTOGRAM));
    // A maximum of every 100 ms.
    const sf_count_t stride = info.samplerate / 10;
    std::vector<float> samples(static_cast<std::size_t>(stride) * channels);
    double momentary = -70.0, shortTerm = -70.0;
    for (sf_count_t frames = stride; frames == stride;) {
        frames = sf_readf_float(file.get(), samples.data(), stride);
        ebur128_add_frames_float(meter.get(), samples.data(), static_cast<std::size_t>(frames));
        double now = -70.0;
        if (ebur128_loudness_momentary(meter.get(), &now) == EBUR128_SUCCESS)
            momentary = std::max(momentary, now);
        if (ebur128_loudness_shortterm(meter.get(), &now) == EBUR128_SUCCESS)
            shortTerm = std::max(shortTerm, now);
    }
    double integrated = 0.0, range = 0.0, peak = 0.0;
    ebur128_loudness_global(meter.get(), &integrated);
    ebur128_loudness_range(meter.get(), &range);
    for (unsigned c = 0; c < channels; ++c) {
        double channelPeak = 0.0;
        ebur128_true_peak(meter.get(), c, &channelPeak);
        peak = std::max(peak, channelPeak);
    }
    std::printf("%s %.2f LUFS, %.1f LU, max M %.1f, max S %.1f, true peak %.4f\n", name, integrated, range,
                momentary, shortTerm, peak);
    return true;
}

}  // namespace

int main(int count, char** names) {
    bool all = true;
    for (int i = 1; i < count; ++i) all &= measure(names[i]);
    return all ? 0 : 1;
}
