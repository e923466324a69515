#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "host/common/host_parameters.hpp"
#include "host/lv2/lv2_interface_link.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "host/lv2/lv2_messages.hpp"
#include "host/lv2/lv2_parts.hpp"

namespace vanta {

/// Where an interface cannot reach the plug-in: an instance of its own, without audio, that is kept in step
/// with the plug-in's. Values go through the ports and come back from the plug-in, which has the last word;
/// all else travels in messages. On the interface's thread.
class Lv2Mirror final : public Lv2InterfaceLink, private HostCallbacks, private LevelFeed {
public:
    /// Hands a part to the host.
    using Send = std::function<void(std::span<const std::byte> part)>;

    Lv2Mirror(const Lv2Layout& layout, Send send);
    /// Takes leave.
    ~Lv2Mirror() override;

    HostedPlugin& plugin() override { return plugin_; }
    const Lv2Control& control(int index) const override { return controls_[static_cast<std::size_t>(index)]; }
    PendingEdits& edits() override { return edits_; }
    void valueTold(int index, float shown, Clock::time_point now) override;
    void portSays(int index, float shown, Clock::time_point now) override;
    void receive(std::span<const std::byte> part) override;
    void idle(Clock::time_point now) override;

private:
    /// A value that was sent and has not come back yet.
    struct Awaited {
        float shown = 0.0f;
        Clock::time_point until{};
        std::optional<float> other;  ///< what came instead, in own numbers
    };
    /// What the last report said.
    struct Sent {
        Lv2Standing standing;
        std::vector<std::uint8_t> commands;
        int replacements = 0;
    };

    void parameterEdited(int index, Edit edit, float value) override;
    void endEdits() override;
    void latencyChanged() override {}
    void pumpRequested() override {}
    void exchange(LevelExchange& levels) override;

    void takeOver(const Lv2News& news);
    void takeLevels(const Lv2Levels& levels);
    void takeValue(int index, float own, Clock::time_point now);
    void heard(std::int32_t number);
    void giveUpAwaiting(Clock::time_point now);
    void report(Clock::time_point now, bool isLeaving);

    const Send send_;
    const std::int32_t interface_;
    PendingEdits edits_;
    HostedPlugin plugin_;
    const std::vector<HostParameter> parameters_;
    std::vector<Lv2Control> controls_;
    std::vector<std::optional<Awaited>> awaited_;  ///< for each parameter

    MessageAssembler assembler_;
    std::uint32_t messages_ = 0;
    std::int32_t heardNews_ = 0;
    std::int32_t reportedNews_ = 0;  ///< that the plug-in knows to have arrived
    bool isConnected_ = false;       ///< the plug-in has said what it is
    bool isTakingOver_ = false;      ///< what changes comes from the plug-in
    Lv2Standing known_;              ///< to both ends
    int replacements_ = 0;           ///< of all values, by the user
    int knownReplacements_ = 0;
    std::int32_t number_ = 0;   ///< of the last report that said something
    std::optional<Sent> sent_;  ///< the same, unless the plug-in has it
    Clock::time_point reportedAt_{};

    std::mutex levels_;  ///< for what follows, as pictures are drawn on another thread
    std::vector<std::vector<std::byte>> records_;
    std::vector<std::uint8_t> commands_;
};

}  // namespace vanta
