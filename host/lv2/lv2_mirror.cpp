#include "host/lv2/lv2_mirror.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <random>
#include <utility>

#include "foundation/binary_data.hpp"
#include "host/lv2/thinned_levels.hpp"

namespace vanta {
namespace {

using namespace std::chrono_literals;

/// So that the plug-in knows that somebody is there, and after which a report that nobody has heard is said
/// again.
constexpr auto kReportInterval = 250ms;
/// Older readings are dropped where nobody draws: two seconds.
constexpr std::size_t kMostRecords = 64;

std::int32_t newInterface() {
    static std::atomic<std::uint32_t> last{std::random_device()()};
    return static_cast<std::int32_t>(last.fetch_add(2) | 1u);
}

/// Ports are texts and floats of six digits in some hosts.
bool isAbout(float a, float b) {
    return std::abs(a - b) <= 1e-6f + 1e-5f * std::abs(b);
}

}  // namespace

Lv2Mirror::Lv2Mirror(const Lv2Layout& layout, Send send)
    : send_(std::move(send)),
      interface_(newInterface()),
      edits_(hostParameterCount()),
      plugin_(*this, layout.layout),
      parameters_(describeParameters(plugin_.model())),
      awaited_(parameters_.size()) {
    for (const HostParameter& described : parameters_) {
        controls_.emplace_back(*plugin_.model().parameterAt(described.index), described);
    }
    plugin_.setLevelFeed(*this);
}

Lv2Mirror::~Lv2Mirror() {
    report(Clock::now(), true);
}

// What the user does

void Lv2Mirror::parameterEdited(int index, Edit edit, float value) {
    if (!isTakingOver_) edits_.add(index, edit, value);
}

/// A preset, a compare slot or a step of undo: the plug-in takes over all values together.
void Lv2Mirror::endEdits() {
    if (!isTakingOver_) ++replacements_;
}

void Lv2Mirror::valueTold(int index, float shown, Clock::time_point now) {
    awaited_[static_cast<std::size_t>(index)] = {shown, now + kPortPatience, {}};
}

void Lv2Mirror::exchange(LevelExchange& levels) {
    std::vector<std::uint8_t> asked;
    levels.takeCommands(asked);
    const std::lock_guard held(levels_);
    commands_.resize(std::max(commands_.size(), asked.size()));
    for (std::size_t i = 0; i < asked.size(); ++i) commands_[i] |= asked[i];
    for (const auto& record : records_) {
        BinaryMemoryReader reader(record);
        levels.read(reader);
    }
    records_.clear();
}

// What the plug-in says

void Lv2Mirror::receive(std::span<const std::byte> part) {
    const auto message = assembler_.add(part);
    if (!message) return;
    if (const auto levels = readLevels(*message)) {
        takeLevels(*levels);
    } else if (const auto news = readNews(*message)) {
        takeOver(*news);
    }
}

void Lv2Mirror::heard(std::int32_t number) {
    if (!sent_ || number != number_) return;
    known_ = std::move(sent_->standing);
    knownReplacements_ = sent_->replacements;
    sent_.reset();
}

void Lv2Mirror::takeLevels(const Lv2Levels& levels) {
    heard(levels.heard);
    auto record = thickenLevels(levels.thinned, plugin_.model().audioSourceCount);
    if (!record) return;
    const std::lock_guard held(levels_);
    if (records_.size() == kMostRecords) records_.erase(records_.begin());
    records_.push_back(std::move(*record));
}

void Lv2Mirror::takeValue(int index, float own, Clock::time_point now) {
    if (index < 0 || index >= static_cast<int>(controls_.size()) || !std::isfinite(own)) return;
    std::optional<Awaited>& awaited = awaited_[static_cast<std::size_t>(index)];
    if (awaited && now < awaited->until) {
        // What was on its way before is older than what the user has set.
        if (!isAbout(control(index).shown(own), awaited->shown)) {
            awaited->other = own;
            return;
        }
        awaited.reset();
    }
    plugin_.hostValueStands(index, static_cast<double>(own));
}

void Lv2Mirror::portSays(int index, float shown, Clock::time_point now) {
    const auto own = control(index).own(shown);
    if (!own || isAbout(control(index).shown(plugin_.model().parameterAt(index)->value()), shown)) return;
    takeValue(index, *own, now);
}

void Lv2Mirror::takeOver(const Lv2News& news) {
    using Kind = Lv2Surroundings::Kind;
    heard(news.heard);
    if (news.number == heardNews_) return;
    const auto now = Clock::now();
    GenericPlugin& model = plugin_.model();
    isTakingOver_ = true;
    for (const auto& [index, own] : news.values) takeValue(index, own, now);
    // What follows from the values first, such as the mark that the preset is modified.
    plugin_.pump();
    const Lv2Surroundings& given = news.surroundings;
    const bool isWhole = given.kind == Kind::Whole && plugin_.restoreState(given.session);
    if (given.kind == Kind::ButValues) plugin_.restoreSurroundings(given.session);
    if (!given.controllers.empty()) takeControllers(model, given.controllers);
    isTakingOver_ = false;
    if (given.kind != Kind::None) known_ = Lv2Standing(model);
    // What undo leads back to is what the plug-in was, not what this began as.
    if (isWhole && !std::exchange(isConnected_, true)) model.interfaceOpened();
    if (news.sampleRate > 0.0f && news.sampleRate != model.sampleRate()) model.setSampleRate(news.sampleRate);
    if (news.controller >= 0) model.eventQueue().post(ControllerMoved{news.controller});
    heardNews_ = news.number;
}

// In turns

void Lv2Mirror::giveUpAwaiting(Clock::time_point now) {
    for (std::size_t i = 0; i < awaited_.size(); ++i) {
        if (!awaited_[i] || now < awaited_[i]->until) continue;
        const auto other = std::exchange(awaited_[i], {})->other;
        if (other) plugin_.hostValueStands(static_cast<int>(i), static_cast<double>(*other));
    }
}

void Lv2Mirror::idle(Clock::time_point now) {
    plugin_.pump();
    giveUpAwaiting(now);
    report(now, false);
}

void Lv2Mirror::report(Clock::time_point now, bool isLeaving) {
    const bool isDue = now - reportedAt_ >= kReportInterval || reportedNews_ != heardNews_ || isLeaving;
    if (sent_ && !isDue) return;
    Sent sending{isConnected_ ? Lv2Standing(plugin_.model()) : known_, {}, replacements_};
    {
        const std::lock_guard held(levels_);
        sending.commands = std::exchange(commands_, {});
    }
    if (sent_) {
        // Said once more, with what has come since.
        sending.commands.resize(std::max(sending.commands.size(), sent_->commands.size()));
        for (std::size_t i = 0; i < sent_->commands.size(); ++i) sending.commands[i] |= sent_->commands[i];
    }
    if (!std::ranges::any_of(sending.commands, [](std::uint8_t each) { return each != 0; })) {
        sending.commands.clear();
    }
    const bool isReplaced = isConnected_ && replacements_ != knownReplacements_;
    const bool isNew = sending.standing != known_ || isReplaced || !sending.commands.empty();
    if (!isNew && !isDue) return;
    Lv2Report said{interface_, heardNews_, isNew ? ++number_ : 0, isLeaving, sending.commands, {}};
    if (sending.standing != known_ || isReplaced) {
        using Kind = Lv2Surroundings::Kind;
        said.surroundings = {isReplaced ? Kind::Whole : Kind::ButValues, plugin_.saveState(), {}};
        if (sending.standing.controllers != known_.controllers) {
            said.surroundings.controllers = sending.standing.controllers;
        }
    }
    reportedAt_ = now;
    reportedNews_ = heardNews_;
    sent_.reset();
    if (isNew) sent_ = std::move(sending);
    splitMessage(++messages_, bytesOf(said), send_);
}

}  // namespace vanta
