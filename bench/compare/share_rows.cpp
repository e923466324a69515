#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "bench/compare/instance.hpp"
#include "bench/compare/rows.hpp"
#include "bench/compare/sampler.hpp"
#include "bench/compare/symbols.hpp"

namespace vanta::bench {

namespace {

/// What the functions of a name belong to. The first that fits counts.
struct Part {
    const char* word;
    const char* part;
};

constexpr Part kParts[] = {
    {"SmartClipper", "smart clipper"},
    {"ollower", "followers of the capacitors"},
    {"apacitor", "followers of the capacitors"},
    {"followBy", "followers of the capacitors"},
    {"FastExponential", "followers of the capacitors"},
    {"interpolateHalfBand", "interpolation and decimation"},
    {"decimateHalfBand", "interpolation and decimation"},
    {"splitBranches", "interpolation and decimation"},
    {"mergeBranches", "interpolation and decimation"},
    {"vanta::sr::", "interpolation and decimation"},
    {"OfGroups", "interpolation and decimation"},
    {"libc.so", "memory moved by the C library"},
    {"Biquad", "biquads"},
    {"iquad", "biquads"},
    {"KFilter", "biquads"},
    {"PeakHold", "peak hold"},
    {"peakHold", "peak hold"},
    {"slidingMaximum", "peak hold"},
    {"unningMean", "running mean and RMS"},
    {"AveragingFilter", "running mean and RMS"},
    {"RMSFilter", "running mean and RMS"},
    {"fft", "convolvers"},
    {"FFT", "convolvers"},
    {"onvol", "convolvers"},
    {"multiplySpectra", "convolvers"},
    {"ModulationMatrix", "parameters and matrix"},
    {"Parameter", "parameters and matrix"},
    {"StagedControl", "parameters and matrix"},
    {"LevelMeter", "meters"},
    {"Loudness", "meters"},
    {"RealTimeAudioBuffer", "meters"},
    {"Delay", "delays"},
    {"Amplitude", "detectors and decibels"},
    {"ecibels", "detectors and decibels"},
    {"Detector", "detectors and decibels"},
    {"DBConverter", "detectors and decibels"},
    {"libm.so", "detectors and decibels"},
    {"kernel::", "other kernels: mixing, scaling, scans"},
};
constexpr const char* kRest = "the graph, the frame and the rest";
/// Of a style's time: what has less in every style goes with the rest.
constexpr double kSmallest = 0.01;
/// Functions that are named one by one.
constexpr std::size_t kNamed = 12;

using Shares = std::map<std::string, double>;

std::string partOf(const std::string& name) {
    // What a function takes is no part of it.
    const std::string function = name.substr(0, name.find('('));
    const auto found = std::ranges::find_if(
        kParts, [&](const Part& each) { return function.find(each.word) != std::string::npos; });
    return found == std::end(kParts) ? kRest : found->part;
}

/// A column of the table.
struct Case {
    std::string name;
    InstanceSettings settings;
};

/// All styles, and what makes the default one dear.
std::vector<Case> cases(const Options& options) {
    const InstanceSettings common{.gainDb = options.gainDb, .blockFrames = options.blockFrames};
    std::vector<Case> all;
    for (const StyleRow& style : kStyleTable) {
        all.push_back({std::string(style.name), common});
        all.back().settings.style = style.style;
    }
    all.push_back({"Modern 4x", common});
    all.back().settings.stages = 2;
    all.push_back({"Modern 7.1.2", common});
    all.back().settings.layout = findLayout("7.1.2").value();
    return all;
}

/// Share of each function in the time of an instance at work.
Shares functionShares(const InstanceSettings& settings, const Symbols& symbols, const Options& options) {
    const Music music = bursts(options.seconds, settings.layout).cut(options.framesOfRound());
    Instance instance(settings, music);
    instance.play(music.frames() / options.blockFrames);
    std::unordered_map<std::uintptr_t, int> counts;
    double all = 0.0;
    {
        const Sampler sampler;
        const double end = threadNanoseconds() + 1e9 * options.shareSeconds;
        while (threadNanoseconds() < end) instance.play(options.blocksInRound());
        for (const std::uintptr_t address : sampler.addresses()) ++counts[address];
    }
    Shares shares;
    for (const auto& [address, count] : counts) {
        const std::string name = symbols.nameOf(address);
        // The clock that ends the run, and where the system hands a stopped thread its signals.
        if (name == "linux-vdso.so.1") continue;
        shares[name] += count;
        all += count;
    }
    for (auto& [name, share] : shares) share /= all;
    return shares;
}

std::vector<std::pair<double, std::string>> largestFirst(const Shares& shares) {
    std::vector<std::pair<double, std::string>> sorted;
    for (const auto& [name, share] : shares) sorted.emplace_back(share, name);
    std::ranges::sort(sorted, std::ranges::greater());
    return sorted;
}

std::string table(const std::vector<Case>& columns, const std::vector<Shares>& styles) {
    Shares largest;
    for (const Shares& style : styles) {
        for (const auto& [part, share] : style) largest[part] = std::max(largest[part], share);
    }
    std::string text = "| part |", rule = "| --- |";
    for (const Case& column : columns) {
        text += fmt::format(" {} |", column.name);
        rule += " --: |";
    }
    text += "\n" + rule + "\n";
    for (const auto& [share, part] : largestFirst(largest)) {
        text += fmt::format("| {} |", part);
        for (const Shares& style : styles) {
            const auto found = style.find(part);
            text += fmt::format(" {:.0f} |", 100.0 * (found == style.end() ? 0.0 : found->second));
        }
        text += "\n";
    }
    return text;
}

/// Parts that are small in every style join the rest.
void gatherSmall(std::vector<Shares>& styles) {
    Shares largest;
    for (const Shares& style : styles) {
        for (const auto& [part, share] : style) largest[part] = std::max(largest[part], share);
    }
    for (Shares& style : styles) {
        for (const auto& [part, share] : largest) {
            if (share >= kSmallest || !style.contains(part)) continue;
            style[kRest] += style[part];
            style.erase(part);
        }
    }
}

}  // namespace

void addShares(Report& report, const Target& target, const Options& options) {
    const Symbols symbols;
    const std::vector<Case> columns = cases(options);
    std::vector<Shares> shares;
    Shares functions;
    for (const Case& column : columns) {
        Shares& parts = shares.emplace_back();
        for (const auto& [name, share] : functionShares(column.settings, symbols, options)) {
            parts[partOf(name)] += share;
            functions[name.substr(0, name.find('('))] += share / static_cast<double>(columns.size());
        }
    }
    gatherSmall(shares);
    std::string text =
        fmt::format("\n### Share of time, {}, per cent\n\n{}", target.title, table(columns, shares));
    text +=
        "\nThe functions with the largest shares, on average of all columns:\n\n| function | % |\n| --- | "
        "--: |\n";
    const auto largest = largestFirst(functions);
    for (std::size_t i = 0; i < std::min(kNamed, largest.size()); ++i) {
        text += fmt::format("| `{}` | {:.1f} |\n", largest[i].second, 100.0 * largest[i].first);
    }
    report.append(std::move(text));
}

}  // namespace vanta::bench
