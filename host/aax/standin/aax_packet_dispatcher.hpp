#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "aax_parameter.hpp"

/// Carries values of host parameters to the algorithm: a parameter that has changed is dirty, and its packet
/// goes out with the next dispatch. Any thread but the audio thread.
class AAX_CPacketDispatcher {
public:
    /// The most that a packet holds.
    static constexpr std::size_t kLargestPacket = 8;
    /// Writes the packet of a parameter.
    using Handler = std::function<void(const AAX_IParameter& parameter, void* packet)>;

    void Initialize(AAX_IController* controller) { controller_ = controller; }
    /// Dirty at first. AAX_ERROR_INVALID_ARGUMENT for a packet that is too large.
    AAX_Result RegisterPacket(const AAX_IParameter& parameter, AAX_CFieldIndex field, std::uint32_t size,
                              Handler handler);
    void SetDirty(AAX_CParamID id);
    /// The first error of the host's; what it did not take is still dirty.
    AAX_Result Dispatch();

private:
    struct Packet {
        Packet(const AAX_IParameter& its, AAX_CFieldIndex to, std::uint32_t bytes, Handler writer)
            : parameter(its), field(to), size(bytes), handler(std::move(writer)) {}

        const AAX_IParameter& parameter;
        AAX_CFieldIndex field;
        std::uint32_t size;
        Handler handler;
        std::atomic<bool> isDirty{true};
    };

    AAX_IController* controller_ = nullptr;
    std::deque<Packet> packets_;
    std::mutex dispatching_;
};
