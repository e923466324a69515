#include "host/lv2/lv2_plugin_link.hpp"

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>

#include "foundation/binary_data.hpp"
#include "host/lv2/thinned_levels.hpp"

namespace vanta {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kInbound = std::size_t{1} << 14;
constexpr std::size_t kOutbound = std::size_t{1} << 16;
/// Left free by levels, for what must not wait.
constexpr std::size_t kForNews = std::size_t{1} << 13;
constexpr auto kNewsInterval = 15ms;
constexpr auto kLevelsInterval = 33ms;
/// After which news are said again.
constexpr auto kPatience = 500ms;
/// Interfaces report four times a second.
constexpr auto kLongestSilence = 3s;

/// That the preset is modified the interface sees on its own, when the values come.
bool isKnown(const Lv2Standing& standing, Lv2Standing told) {
    told.preset.modified |= standing.preset.modified;
    return standing == told;
}

}  // namespace

Lv2PluginLink::Lv2PluginLink(int parameterCount)
    : inbound_(kInbound), outbound_(kOutbound), toldValues_(static_cast<std::size_t>(parameterCount)) {}

std::size_t Lv2PluginLink::nextSize() {
    if (!isOpen_.load()) outbound_.clear();
    return outbound_.nextSize();
}

bool Lv2PluginLink::service(HostedPlugin& plugin) {
    bool changed = false;
    now_ = Clock::now();
    while (const std::size_t size = inbound_.nextSize()) {
        part_.resize(size);
        inbound_.pop(part_);
        const auto message = assembler_.add(part_);
        const auto report = message ? readReport(*message) : std::nullopt;
        if (report) changed |= take(*report, plugin);
    }
    if (isOpen_ && now_ - lastReport_ > kLongestSilence) isOpen_.store(false);
    if (!isOpen_) return changed;
    if (now_ - newsSent_ >= kNewsInterval) tellNews(plugin);
    if (now_ - levelsSent_ >= kLevelsInterval) tellLevels(plugin);
    return changed;
}

// From the interface

bool Lv2PluginLink::take(const Lv2Report& report, HostedPlugin& plugin) {
    const bool isOurs = report.interface == interface_;
    if (report.isLeaving) {
        if (isOurs) isOpen_.store(false);
    } else if (!isOurs) {
        interface_ = report.interface;
        heard_ = 0;
        isAllDue_ = true;
    }
    // Who was silent for long, as under an open menu, goes on where it was: what has changed here since is
    // told.
    if (!report.isLeaving) isOpen_.store(true);
    lastReport_ = now_;
    arrived_ = report.heard;
    if (report.number <= 0 || (isOurs && report.number == heard_)) return false;
    // What it does not know yet it must not overwrite: it hears of that first.
    if (isAllDue_ || arrived_ < surroundingsNumber_ || !isKnown(Lv2Standing(plugin.model()), told_))
        return false;
    heard_ = report.number;
    commands_.resize(std::max(commands_.size(), report.commands.size()));
    for (std::size_t i = 0; i < report.commands.size(); ++i) commands_[i] |= report.commands[i];
    return takeSurroundings(report, plugin);
}

bool Lv2PluginLink::takeSurroundings(const Lv2Report& report, HostedPlugin& plugin) {
    using Kind = Lv2Surroundings::Kind;
    const Lv2Surroundings& given = report.surroundings;
    bool changed = false;
    if (given.kind == Kind::Whole && plugin.restoreState(given.session)) {
        toldValues_ = plugin.model().parameterValues();
        changed = true;
    }
    if (given.kind == Kind::ButValues) changed = plugin.restoreSurroundings(given.session);
    if (!given.controllers.empty()) takeControllers(plugin.model(), given.controllers);
    told_ = Lv2Standing(plugin.model());
    return changed;
}

// To the interface

bool Lv2PluginLink::send(std::span<const std::byte> message) {
    if (outbound_.room() < ringBytesOf(message.size())) return false;
    splitMessage(++messages_, message, [this](std::span<const std::byte> part) { outbound_.push(part); });
    return true;
}

void Lv2PluginLink::tellNews(HostedPlugin& plugin) {
    // It has reported since, and does not have them.
    const auto isLate = [this](std::int32_t number, Clock::time_point sent) {
        return arrived_ < number && lastReport_ - sent > kPatience;
    };
    const bool isLost = isLate(number_, newsSent_) || isLate(surroundingsNumber_, surroundingsSent_);
    const bool all = isAllDue_ || isLost;
    const std::vector<float> values = plugin.model().parameterValues();
    const float rate = plugin.model().sampleRate();
    const Lv2Standing standing(plugin.model());
    Lv2News news;
    news.number = number_ + 1;
    news.heard = heard_;
    news.sampleRate = rate;
    news.controller = controller_.load();
    for (std::size_t i = 0; i < values.size() && !all; ++i) {
        if (values[i] != toldValues_[i]) news.values.emplace_back(static_cast<int>(i), values[i]);
    }
    const bool isNewStanding = all || !isKnown(standing, told_);
    if (isNewStanding) {
        using Kind = Lv2Surroundings::Kind;
        news.surroundings = {all ? Kind::Whole : Kind::ButValues, plugin.saveState(), standing.controllers};
    }
    if (!isNewStanding && news.values.empty() && news.controller < 0 && rate == toldRate_) return;
    if (!send(bytesOf(news))) return;
    controller_.compare_exchange_strong(news.controller, -1);
    number_ = news.number;
    newsSent_ = now_;
    if (isNewStanding) {
        surroundingsNumber_ = number_;
        surroundingsSent_ = now_;
    }
    isAllDue_ = false;
    toldValues_ = values;
    told_ = standing;
    toldRate_ = rate;
}

void Lv2PluginLink::tellLevels(HostedPlugin& plugin) {
    // Nobody takes it away: audio does not run.
    if (outbound_.room() < kOutbound / 2 + kForNews) return;
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    plugin.exchangeLevels(std::exchange(commands_, {}), writer);
    const std::string record = stream.str();
    const auto thinned = thinLevels(std::as_bytes(std::span(record)), plugin.model().audioSourceCount);
    levelsSent_ = now_;
    if (thinned) send(bytesOf(Lv2Levels{heard_, *thinned}));
}

}  // namespace vanta
