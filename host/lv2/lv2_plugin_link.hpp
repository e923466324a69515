#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <span>
#include <vector>

#include "foundation/realtime.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/lv2/lv2_messages.hpp"
#include "host/lv2/lv2_parts.hpp"
#include "host/lv2/record_ring.hpp"

namespace vanta {

/// A plug-in's end of the road to an interface that cannot reach it. The audio thread only carries parts
/// between the ports and two queues; what they say is dealt with on the thread that pumps. Without an
/// interface that reports now and then nothing is sent, and one that is frozen only misses what it is not
/// there for.
class Lv2PluginLink {
public:
    explicit Lv2PluginLink(int parameterCount);

    // Audio thread.

    /// A part from the interface. What is too much is dropped: the interface says it again.
    VANTA_REALTIME void hear(std::span<const std::byte> part) { inbound_.push(part); }
    /// Of the next part for the interface; 0 if there is none.
    VANTA_REALTIME std::size_t nextSize();
    VANTA_REALTIME void takeNext(std::span<std::byte> target) { outbound_.pop(target); }
    VANTA_REALTIME void controllerMoved(int number) { controller_.store(number); }

    // The thread that pumps.

    /// Whether the interface has changed what a session keeps.
    bool service(HostedPlugin& plugin);

private:
    using Clock = std::chrono::steady_clock;

    bool take(const Lv2Report& report, HostedPlugin& plugin);
    bool takeSurroundings(const Lv2Report& report, HostedPlugin& plugin);
    void tellNews(HostedPlugin& plugin);
    void tellLevels(HostedPlugin& plugin);
    bool send(std::span<const std::byte> message);

    RecordRing inbound_;
    RecordRing outbound_;
    std::atomic<bool> isOpen_{false};
    std::atomic<int> controller_{-1};

    MessageAssembler assembler_;
    std::vector<std::byte> part_;
    std::int32_t interface_ = 0;
    Clock::time_point now_{};
    Clock::time_point lastReport_{};
    Clock::time_point newsSent_{};
    Clock::time_point levelsSent_{};
    std::uint32_t messages_ = 0;
    Clock::time_point surroundingsSent_{};
    std::int32_t number_ = 0;              ///< of the last news
    std::int32_t surroundingsNumber_ = 0;  ///< of the last with surroundings
    std::int32_t arrived_ = 0;             ///< the last that the interface says it has
    std::int32_t heard_ = 0;               ///< of the last report
    bool isAllDue_ = false;
    std::vector<std::uint8_t> commands_;
    std::vector<float> toldValues_;
    Lv2Standing told_;
    float toldRate_ = 0.0f;
};

}  // namespace vanta
