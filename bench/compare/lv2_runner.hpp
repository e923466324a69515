#pragma once

#include <lilv/lilv.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bench/compare/music.hpp"

namespace vanta::bench {

/// A plug-in of somebody else's, found by its URI among those that are installed, playing a piece of music
/// round and round. It is offered numbers for URIs, the length of blocks, and a worker whose work is done
/// between blocks.
class Lv2Runner {
public:
    /// Throws std::runtime_error if it is not installed or does not start. The music outlives the runner, and
    /// has whole blocks.
    Lv2Runner(const std::string& uri, const Music& music, int blockFrames);
    ~Lv2Runner();
    Lv2Runner(const Lv2Runner&) = delete;
    Lv2Runner& operator=(const Lv2Runner&) = delete;

    /// Throws std::invalid_argument if there is no such input.
    void set(std::string_view symbol, float value);
    /// To the value that the plug-in itself gives this label, such as "Full x8(2L)" of "ovs".
    void set(std::string_view symbol, std::string_view label);
    /// The symbol of the input that has a value of this label; empty if there is none.
    std::string symbolOf(std::string_view label) const;

    void play(int blocks);
    /// The largest magnitude in the last block of output.
    float peak() const;

private:
    struct Port {
        std::string symbol;
        bool isInput = false;
        float value = 0.0f;
        bool isControl = false;
        std::vector<std::uint64_t> events;  ///< a sequence, which lies at a multiple of 8 bytes
        std::unordered_map<std::string, float> labels;
    };
    struct FreeWorld {
        void operator()(LilvWorld* world) const { lilv_world_free(world); }
    };
    struct FreeInstance {
        void operator()(LilvInstance* instance) const { lilv_instance_free(instance); }
    };

    void readPorts(const LilvPlugin& plugin);
    void readLabels(const LilvPlugin& plugin, const LilvPort& port, Port& to) const;
    void instantiate(const LilvPlugin& plugin, int blockFrames);
    void connect();
    void clearEvents();
    void work();
    Port& input(std::string_view symbol);
    LV2_URID number(const char* uri);

    std::unique_ptr<LilvWorld, FreeWorld> world_;
    std::unordered_map<std::string, LV2_URID> numbers_;
    LV2_URID_Map map_{};
    LV2_Worker_Schedule schedule_{};
    std::int32_t largestBlock_ = 0;
    float rate_ = static_cast<float>(Music::kRate);
    std::array<LV2_Options_Option, 5> options_{};
    LV2_URID sequenceType_ = 0, roomType_ = 0;
    std::vector<std::vector<std::byte>> jobs_, answers_;
    const LV2_Worker_Interface* worker_ = nullptr;

    std::vector<Port> ports_;
    std::vector<std::uint32_t> audioIn_, audioOut_;
    const Music& music_;
    int blockFrames_;
    int position_ = 0;
    std::vector<std::vector<float>> output_;
    std::unique_ptr<LilvInstance, FreeInstance> instance_;
};

}  // namespace vanta::bench
