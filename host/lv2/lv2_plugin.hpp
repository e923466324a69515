#pragma once

#include <lv2/atom/atom.h>
#include <lv2/state/state.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/lv2/lv2_events.hpp"
#include "host/lv2/lv2_features.hpp"
#include "host/lv2/lv2_instance.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "host/lv2/lv2_port_values.hpp"
#include "host/lv2/lv2_ports.hpp"
#include "host/lv2/lv2_uris.hpp"

namespace vanta {

/// An instance as LV2 hosts drive it. Nobody ever calls it on a main thread, so a thread of ours pumps it.
class Lv2Plugin final {
public:
    /// `features` must map URIs, and the rate be one that HostedPlugin takes.
    Lv2Plugin(const Lv2Layout& layout, double sampleRate, const Lv2Features& features);
    ~Lv2Plugin();
    Lv2Plugin(const Lv2Plugin&) = delete;
    Lv2Plugin& operator=(const Lv2Plugin&) = delete;

    // While no block runs.

    void connectPort(std::uint32_t index, void* data);
    void activate();

    // Any thread but the audio thread.

    LV2_State_Status save(LV2_State_Store_Function store, LV2_State_Handle handle);
    LV2_State_Status restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);

    // Audio thread.

    VANTA_REALTIME void run(std::uint32_t samples);
    /// In place of a block that cannot be.
    VANTA_REALTIME void silence(std::uint32_t samples);

private:
    /// Audio buffers in the order of the layout; null where the host has connected none.
    struct Buffers {
        std::array<const float*, kMaxChannels> inputs{};
        std::array<const float*, kMaxChannels> sideChain{};
        std::array<float*, kMaxChannels> outputs{};
    };

    std::span<const float* const> sideChain() const;
    void askForPortChanges();
    void takePortValues();
    void start(std::uint32_t samples);
    void process(int samples);
    void hearInterface();
    void notify();
    std::byte* addEvent(std::size_t bytes, std::size_t room);

    const Lv2Uris uris_;
    const Lv2PortChangeRequest* const portRequests_;
    const int largestBlock_;
    const double sampleRate_;
    const std::size_t keyChannel_;  ///< of the side chain, where that is mono: the first of the ports
    const std::shared_ptr<Lv2Instance> instance_;
    HostedPlugin& plugin_;
    Lv2PortValues& values_;
    const std::vector<Lv2Port> ports_;

    Buffers buffers_;
    float* latency_ = nullptr;
    const LV2_Atom_Sequence* events_ = nullptr;
    LV2_Atom_Sequence* notifications_ = nullptr;

    std::vector<HostEvent> changes_;  ///< of this block, from the control ports
    Lv2Transport transport_;
    bool isStarting_ = true;
    bool stateMayHaveChanged_ = false;  ///< and the host does not know yet
};

}  // namespace vanta
