// Our limiter and its parts beside those of others, on the same music, in one run.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "bench/compare/lv2_runner.hpp"
#include "bench/compare/null.hpp"
#include "bench/compare/rows.hpp"
#include "bench/compare/targets.hpp"

namespace {

using namespace vanta::bench;

struct Section {
    const char* name;
    void (*add)(Report&, const Target&, const Options&);
    bool everyTarget;  ///< worth its time with lesser instruction sets as well
};

constexpr std::array kSections = {
    Section{"styles", addStyles, true},         Section{"oversampled", addOversampled, true},
    Section{"32x", addHighestRate, true},       Section{"surround", addSurround, true},
    Section{"resting", addResting, true},       Section{"blocks", addWorstBlocks, true},
    Section{"transforms", addTransforms, true}, Section{"meters", addMeters, true},
    Section{"converters", addConverters, true}, Section{"limits", addLimits, false},
    Section{"shares", addShares, false},
};

struct Request {
    Options options;
    std::vector<std::string> targets;
    std::vector<std::string> sections;
    std::vector<std::string> notes;
    std::string before, json;
};

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
    }
    return "unknown";
}

std::vector<Target> chosenTargets(const std::vector<std::string>& names) {
    const std::vector<Target> here = targetsHere();
    if (names.empty()) return {here.front()};
    if (names.front() == "all") return here;
    std::vector<Target> chosen;
    for (const Target& target : here) {
        if (std::ranges::find(names, target.name) != names.end()) chosen.push_back(target);
    }
    if (chosen.size() != names.size()) {
        throw std::invalid_argument("--target: this machine has " + [&] {
            std::string list;
            for (const Target& target : here)
                list += fmt::format("{}{}", list.empty() ? "" : ", ", target.name);
            return list;
        }());
    }
    return chosen;
}

void describe(Report& report, const Request& request, const std::vector<Target>& targets) {
    const Options& options = request.options;
    std::string sets;
    for (const Target& target : targets) sets += fmt::format("{}{}", sets.empty() ? "" : ", ", target.title);
    report.note(
        fmt::format("Machine: {}. Compiler: {} {}. Instruction sets of our kernels: {}; of the peers: what "
                    "they choose.",
                    processorName(),
#ifdef __clang__
                    "clang",
#else
                    "g++",
#endif
                    __VERSION__, sets));
    report.note(fmt::format(
        "44.1 kHz, blocks of {}, {:.0f} dB of gain into every limiter, true peaks limited and "
        "metered. Rounds of {} frames in turn; a time is the sum of the fastest of {} runs of each "
        "passage, a ratio that of two such sums. `median` is the same of the median runs. "
        "Times and medians are those of the first instruction set. Bold: misses its reach.",
        options.blockFrames, options.gainDb, options.roundFrames, options.passes));
    for (const std::string& note : request.notes) report.note(note);
}

void compare(const Request& request) {
    const std::vector<Target> targets = chosenTargets(request.targets);
    Report report;
    if (!request.before.empty()) report.compareWith(request.before);
    describe(report, request, targets);
    for (const Target& target : targets) {
        use(target);
        for (const Section& section : kSections) {
            const bool wanted =
                request.sections.empty()
                    ? section.everyTarget || target.name == targets.front().name
                    : std::ranges::find(request.sections, section.name) != request.sections.end();
            if (!wanted) continue;
            fmt::print(stderr, "{}, {} ...\n", target.title, section.name);
            section.add(report, target, request.options);
        }
    }
    fmt::print("{}", report.markdown());
    if (!request.json.empty()) std::ofstream(request.json) << report.json();
}

void addOptions(CLI::App& app, Request& request) {
    Options& options = request.options;
    std::vector<std::string> names;
    for (const Section& section : kSections) names.emplace_back(section.name);
    app.add_option("--target", request.targets,
                   "instruction sets: all, or some of avx512, avx2, sse4, plain; the best")
        ->delimiter(',');
    app.add_option("--only", request.sections, "some of what is compared")
        ->delimiter(',')
        ->check(CLI::IsMember(names));
    app.add_option("--block", options.blockFrames, "frames in a host's block")->check(CLI::Range(16, 4096));
    app.add_option("--seconds", options.seconds, "music in a pass")->check(CLI::Range(1.0, 14.0));
    app.add_option("--passes", options.passes, "over the same music")->check(CLI::Range(1, 100));
    app.add_option("--gain", options.gainDb, "dB into every limiter")->check(CLI::Range(0.0, 30.0));
    app.add_option("--note", request.notes, "a line for the head of the report, such as versions of peers");
    app.add_option("--before", request.before, "the --json of an earlier run, whose ratios are shown as well")
        ->check(CLI::ExistingFile);
    app.add_option("--json", request.json, "write all figures to this file as well");
}

/// Times any plug-in on the music: "symbol=value" sets a port, by a number or by a label of the plug-in's
/// own.
void timePlugin(const std::string& uri, const std::vector<std::string>& ports, const Options& options) {
    for (const Music& whole : {song(options.seconds), bursts(options.seconds)}) {
        const Music music = whole.cut(options.framesOfRound());
        Lv2Runner plugin(uri, music, options.blockFrames);
        for (const std::string& port : ports) {
            const std::size_t equals = port.find('=');
            if (equals == std::string::npos) throw std::invalid_argument(port + ": write symbol=value");
            const std::string symbol = port.substr(0, equals), value = port.substr(equals + 1);
            char* end = nullptr;
            const float number = std::strtof(value.c_str(), &end);
            if (*end == '\0') {
                plugin.set(symbol, number);
            } else {
                plugin.set(symbol, value);
            }
        }
        Race race(Race::courseOver(music.frames(), options));
        race.enter(uri, [&](int blocks) { plugin.play(blocks); });
        race.run();
        fmt::print("{}: {:.1f} ns a frame, median {:.1f}; the last block peaks at {:.3f}\n", music.name,
                   race.nanoseconds(0), race.medianNanoseconds(0), plugin.peak());
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Measures our limiter beside others in one run, and prints Markdown."};
    Request request;
    addOptions(app, request);
    std::string first, second, third;
    double seconds = 10.0;
    CLI::App* null = app.add_subcommand("null", "compares renders of one name in two folders");
    null->add_option("old", first)->required()->check(CLI::ExistingDirectory);
    null->add_option("new", second)->required()->check(CLI::ExistingDirectory);
    null->add_option("rounded", third, "old renders of the input with other last bits")
        ->check(CLI::ExistingDirectory);
    CLI::App* music = app.add_subcommand("music", "writes what is played");
    music->add_option("folder", first)->required();
    music->add_option("--seconds", seconds)->check(CLI::Range(1.0, 14.0));
    std::vector<std::string> ports;
    CLI::App* lv2 = app.add_subcommand("lv2", "times any installed stereo LV2 plug-in");
    lv2->add_option("uri", first)->required();
    lv2->add_option("ports", ports, "symbol=value, by number or by label");
    CLI11_PARSE(app, argc, argv);
    try {
        if (*null) return printDifferences(first, second, third) ? 0 : 1;
        if (*music) {
            writeMusic(first, seconds);
            return 0;
        }
        if (*lv2) {
            timePlugin(first, ports, request.options);
        } else {
            compare(request);
        }
    } catch (const std::exception& error) {
        fmt::print(stderr, "vanta_compare: {}\n", error.what());
        return 2;
    }
    return 0;
}
