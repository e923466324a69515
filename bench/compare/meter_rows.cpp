#include <ebur128.h>
#include <fmt/format.h>

#include <cmath>
#include <memory>
#include <vector>

#include "bench/compare/instance.hpp"
#include "bench/compare/rows.hpp"
#include "bench/meter_rig.hpp"

namespace vanta::bench {

namespace {

constexpr int kBlock = MeterRig::kBlock;

/// From one look at the figures to the next, about 100 ms.
constexpr int kLook = 17;

class Ebur128 {
public:
    Ebur128(const Music& music, int mode)
        : meter_(ebur128_init(2, static_cast<unsigned long>(Music::kRate), mode)), frames_(music.frames()) {
        for (int i = 0; i < frames_; ++i) {
            for (const auto& channel : music.channels)
                interleaved_.push_back(channel[static_cast<std::size_t>(i)]);
        }
    }
    void block() {
        ebur128_add_frames_float(meter_.get(), interleaved_.data() + 2 * at_, kBlock);
        at_ = (at_ + kBlock) % frames_;
        if (++blocks_ % kLook != 0) return;
        ebur128_loudness_momentary(meter_.get(), &figure_);
        ebur128_loudness_shortterm(meter_.get(), &figure_);
        ebur128_loudness_global(meter_.get(), &figure_);
        ebur128_loudness_range(meter_.get(), &figure_);
    }

private:
    struct Destroy {
        void operator()(ebur128_state* meter) const { ebur128_destroy(&meter); }
    };
    std::unique_ptr<ebur128_state, Destroy> meter_;
    int frames_, at_ = 0, blocks_ = 0;
    double figure_ = 0.0;
    std::vector<float> interleaved_;
};

}  // namespace

void addMeters(Report& report, const Target& target, const Options& options) {
    report.begin(target, "All meters of a stereo instance", "ns a frame", "peer");
    Options round = options;
    round.blockFrames = kBlock;
    const Music music = song(options.seconds / 2).cut(round.framesOfRound());
    MeterRig plain(music.channels, Music::kRate, false), truePeak(music.channels, Music::kRate, true);
    constexpr int kLoudness =
        EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_HISTOGRAM;
    Ebur128 peer(music, kLoudness), peerTruePeak(music, kLoudness | EBUR128_MODE_TRUE_PEAK);

    Race race({.passages = music.frames() / round.framesOfRound(),
               .passes = options.passes,
               .blocks = round.blocksInRound(),
               .itemsPerBlock = kBlock});
    float seen = 0.0f;
    auto own = [&seen, looks = 0](MeterRig& rig) mutable {
        rig.run();
        if (++looks % kLook == 0) seen += rig.look();
    };
    race.enter("plain", repeat([&, own]() mutable { own(plain); }));
    race.enter("true peak", repeat([&, own]() mutable { own(truePeak); }));
    race.enter("libebur128", repeat([&] { peer.block(); }));
    race.enter("libebur128, true peak", repeat([&] { peerTruePeak.block(); }));
    std::vector<std::unique_ptr<Instance>> instances;
    for (const StyleRow& style : kStyleTable) {
        instances.push_back(std::make_unique<Instance>(
            InstanceSettings{.style = style.style, .gainDb = options.gainDb}, music));
        race.enter(std::string(style.name),
                   [&, i = instances.size() - 1](int blocks) { instances[i]->play(blocks); });
    }
    race.run();
    std::size_t cheapest = 4;
    for (std::size_t i = 4; i < 4 + kStyleTable.size(); ++i) {
        if (race.nanoseconds(i) < race.nanoseconds(cheapest)) cheapest = i;
    }
    const auto add = [&](std::string work, std::size_t contender, std::size_t to, Reach reach) {
        report.add({std::move(work), race.nanoseconds(contender), race.nanoseconds(to),
                    race.ratio(contender, to), reach});
    };
    add("loudness, beside libebur128", 0, 2, {});
    add("loudness and true peaks, beside libebur128", 1, 3, {});
    add("loudness and true peaks, beside the cheapest style", 1, cheapest, Reach::both(0.1));
    if (std::isnan(seen)) report.note("The meters read no number.");
}

}  // namespace vanta::bench
