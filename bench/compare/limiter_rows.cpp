#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "bench/compare/instance.hpp"
#include "bench/compare/lv2_runner.hpp"
#include "bench/compare/rows.hpp"
#include "foundation/numbers.hpp"

namespace vanta::bench {

namespace {

constexpr const char* kNsFrame = "ns a frame";
/// Far below any threshold, and well above what counts as silence.
constexpr float kQuiet = 0.01f;
/// After which the slowest release has come to rest: Punchy's takes more than half a minute.
constexpr double kSettleSeconds = 60.0;

/// For what takes long.
Race::Course shortCourseOver(const Music& music, const Options& options) {
    Race::Course course = Race::courseOver(music.frames(), options);
    course.passes = std::min(course.passes, 3);
    return course;
}

InstanceSettings settingsOf(const StyleRow& style, const Options& options, int stages = 0) {
    return {
        .style = style.style, .stages = stages, .gainDb = options.gainDb, .blockFrames = options.blockFrames};
}

/// A race of instances that it owns. What they play outlives it.
class Stable {
public:
    explicit Stable(const Race::Course& course) : race(course) {}

    std::size_t enter(std::string name, const InstanceSettings& settings, const Music& music) {
        instances_.push_back(std::make_unique<Instance>(settings, music));
        return race.enter(std::move(name),
                          [instance = instances_.back().get()](int blocks) { instance->play(blocks); });
    }
    Instance& last() { return *instances_.back(); }
    /// All styles, one after the other.
    void enterStyles(const Options& options, const Music& music, int stages = 0) {
        for (const StyleRow& style : kStyleTable) {
            enter(std::string(style.name), settingsOf(style, options, stages), music);
        }
    }
    void add(Report& report, std::size_t contender, std::size_t to, std::string work, Reach reach = {}) {
        report.add({std::move(work), race.nanoseconds(contender), race.nanoseconds(to),
                    race.ratio(contender, to), reach});
    }

    Race race;

private:
    std::vector<std::unique_ptr<Instance>> instances_;
};

void addStylesOn(const Music& music, Report& report, const Options& options) {
    Stable stable(Race::courseOver(music.frames(), options));
    Lv2Runner dpl("http://gareus.org/oss/lv2/dpl#stereo", music, options.blockFrames);
    dpl.set("gain", static_cast<float>(options.gainDb));
    dpl.set("threshold", 0.0f);
    dpl.set("truepeak", 1.0f);
    const std::size_t peer = stable.race.enter("dpl", [&](int blocks) { dpl.play(blocks); });
    stable.enterStyles(options, music);
    stable.race.run();

    std::size_t cheapest = peer + 1;
    for (std::size_t i = peer + 1; i <= peer + kStyleTable.size(); ++i) {
        stable.add(report, i, peer, fmt::format("{}, {}", stable.race.name(i), music.name), {0.85, 1.0});
        if (stable.race.nanoseconds(i) < stable.race.nanoseconds(cheapest)) cheapest = i;
    }
    stable.add(report, cheapest, peer, fmt::format("the cheapest style, {}", music.name), {0.5, 0.65});
}

void addOversampledOn(const Music& music, Report& report, const Options& options) {
    Stable stable(shortCourseOver(music, options));
    const std::array<const char*, 2> qualities{"Full x8(2L)", "Full x8(3L)"};
    std::vector<std::unique_ptr<Lv2Runner>> peers;
    for (const char* quality : qualities) {
        peers.push_back(std::make_unique<Lv2Runner>("http://lsp-plug.in/plugins/lv2/limiter_stereo", music,
                                                    options.blockFrames));
        Lv2Runner& peer = *peers.back();
        peer.set(peer.symbolOf(quality), quality);
        peer.set("g_in", static_cast<float>(gainFromDb(options.gainDb)));
        stable.race.enter(quality, [&peer](int blocks) { peer.play(blocks); });
    }
    stable.enterStyles(options, music, 2);
    stable.race.run();

    // The two cost the same within a few per cent; the shorter filter is the one to beat.
    constexpr std::size_t peer = 0;
    stable.add(report, 1, peer, fmt::format("{} beside {}, {}", qualities[1], qualities[0], music.name));
    for (std::size_t i = 2; i < 2 + kStyleTable.size(); ++i) {
        stable.add(report, i, peer, fmt::format("{}, {}", stable.race.name(i), music.name),
                   Reach::both(0.55));
    }
}

}  // namespace

void addStyles(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Styles at the base rate beside x42-dpl with true peaks", kNsFrame, "x42-dpl");
    addStylesOn(song(options.seconds).cut(options.framesOfRound()), report, options);
    addStylesOn(bursts(options.seconds).cut(options.framesOfRound()), report, options);
}

void addResting(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Instances at rest beside themselves at work", kNsFrame, "at work");
    const Music busy = bursts(options.seconds).cut(options.framesOfRound());
    const Music quiet = busy.scaled(kQuiet), silent = busy.scaled(0.0f);
    Stable stable(Race::courseOver(busy.frames(), options));
    const auto enterResting = [&](const StyleRow& style, const Music& rest) {
        stable.enter(std::string(style.name), settingsOf(style, options), busy);
        stable.last().play(busy.frames() / options.blockFrames);
        stable.last().change(rest);
        // In whole turns of the music, so that all contenders play the same passage in the same round.
        const auto turns = static_cast<int>(kSettleSeconds * Music::kRate) / rest.frames() + 1;
        stable.last().play(turns * rest.frames() / options.blockFrames);
    };
    for (const StyleRow& style : kStyleTable) {
        stable.enter(std::string(style.name), settingsOf(style, options), busy);
        enterResting(style, silent);
        enterResting(style, quiet);
    }
    stable.race.run();
    for (std::size_t i = 0; i < 3 * kStyleTable.size(); i += 3) {
        const std::string& style = stable.race.name(i);
        stable.add(report, i + 1, i, fmt::format("{}, silence", style), Reach::both(0.1));
        stable.add(report, i + 2, i, fmt::format("{}, below the threshold", style), Reach::both(0.5));
    }
}

void addOversampled(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Styles at 4x beside the lsp-plugins limiter at full x8", kNsFrame, "lsp limiter");
    addOversampledOn(song(options.seconds / 2).cut(options.framesOfRound()), report, options);
    addOversampledOn(bursts(options.seconds / 2).cut(options.framesOfRound()), report, options);
}

void addHighestRate(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Styles at 32x beside the time that the music takes", kNsFrame, "real time");
    const Music music = bursts(options.seconds / 4).cut(options.framesOfRound());
    Stable stable(shortCourseOver(music, options));
    stable.enterStyles(options, music, 5);
    stable.race.run();
    const double realTime = 1e9 / Music::kRate;
    for (std::size_t i = 0; i < kStyleTable.size(); ++i) {
        const double own = stable.race.nanoseconds(i);
        report.add({stable.race.name(i),
                    own,
                    realTime,
                    {own / realTime, stable.race.medianNanoseconds(i) / realTime},
                    Reach::both(0.1)});
    }
}

void addSurround(Report& report, const Target& target, const Options& options) {
    report.begin(target, "7.1.2 beside stereo", kNsFrame, "stereo");
    const ChannelLayout layout = findLayout("7.1.2").value();
    const Music stereo = bursts(options.seconds / 2).cut(options.framesOfRound());
    const Music surround = bursts(options.seconds / 2, layout).cut(options.framesOfRound());
    Stable stable(shortCourseOver(stereo, options));
    for (const StyleRow& style : kStyleTable) {
        InstanceSettings settings = settingsOf(style, options);
        stable.enter(std::string(style.name), settings, stereo);
        settings.layout = layout;
        stable.enter(std::string(style.name), settings, surround);
    }
    stable.race.run();
    for (std::size_t i = 0; i < 2 * kStyleTable.size(); i += 2) {
        stable.add(report, i + 1, i, stable.race.name(i), Reach::both(5.0));
    }
}

}  // namespace vanta::bench
