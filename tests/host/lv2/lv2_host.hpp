#pragma once

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/midi/midi.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/offline/limiter_settings.hpp"
#include "tests/host/formats/format_host.hpp"

namespace vanta::test {

/// What a host offers to an instance beyond the numbers for URIs.
struct Lv2Offers {
    bool options = true;       ///< sizes of blocks
    bool portRequests = true;  ///< the plug-in may ask for values at its ports
    bool instance = true;      ///< a window gets its handle
    /// Where plug-ins come from; null: from the built bundles.
    const LV2_Descriptor* (*module)(std::uint32_t index) = nullptr;
};

class Lv2Window;

/// A host on lilv, which finds plug-ins and presets in the built bundles, as any LV2 host does.
class Lv2Host final : public FormatHost {
public:
    explicit Lv2Host(Lv2Offers offers = {});
    ~Lv2Host() override;

    const Traits& traits() const override;
    bool open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) override;
    bool reactivate(double sampleRate, int largestBlock) override;
    void setOffline(bool offline) override { control("freewheel") = offline ? 1.0f : 0.0f; }
    int parameterCount() const override;
    double value(int index) const override;
    void setValue(int index, double value) override;
    int latency() const override;
    std::vector<std::byte> save(int chunk) override;
    bool restore(std::span<const std::byte> bytes, int chunk) override;
    /// For a window alone: a plug-in is called for blocks, and for nothing else.
    void idle() override;
    bool openWindow(unsigned long parent) override;
    void closeWindow() override;
    Size windowSize() const override;
    void resizeWindow(Size size) override;
    void dropWithWindow() override;
    std::vector<Edit> takeEdits() override;
    void process(const Block& block) override;

    // What only LV2 has.

    struct Port {
        std::string symbol;
        std::string designation;  ///< a URI, or empty
        std::string group;        ///< likewise
        bool isInput = false;
        bool isAudio = false;
        bool isControl = false;
        bool isMain = false;
        int channel = -1;  ///< of an audio port, its place in the layout
        float value = 0.0f;
    };
    static std::string uriOf(ChannelLayout layout);
    static LilvWorld* world();
    static const LilvPlugin* pluginOf(ChannelLayout layout);

    void close();
    LilvInstance* instance() const { return instance_; }
    std::vector<Port>& ports() { return ports_; }
    float& control(std::string_view symbol);
    LV2_URID_Map* map() { return &map_; }
    /// The same for all hosts of the process, as a state holds such numbers.
    static LV2_URID urid(const char* uri);
    void run(int samples);
    /// Room for events that come out of a block, in bytes.
    void setNotificationRoom(std::size_t bytes) { room_ = bytes; }
    /// An event of the next block. False: there is no room left.
    bool addEvent(const LV2_Atom& atom);
    /// What came out of the last block.
    const LV2_Atom_Sequence& notified() const {
        return *reinterpret_cast<const LV2_Atom_Sequence*>(notified_.data());
    }
    /// Types of the objects that came out of the last block.
    std::vector<std::string> notifications() const;
    /// The bytes of the state alone, and what the plug-in says to those.
    std::vector<std::byte> state() const;
    LV2_State_Status restoreState(std::span<const std::byte> bytes, const char* type);
    /// How lilv stores and brings back a session or a preset.
    std::string saveTurtle();
    void restore(const LilvState* state);
    const LimiterSettings& table() const { return table_; }
    /// What a window tells, with values as they are shown.
    void noteEdit(const Edit& edit) { edits_.push_back(edit); }

private:
    /// The published interface of requests for ports, said once more.
    struct PortRequest {
        void* handle;
        int (*request)(void* host, std::uint32_t index, float value);
    };

    struct Stored;
    class Turn;

    const LV2_State_Interface& states() const;
    LV2_State_Status restore(Stored& stored);
    LilvInstance* instantiate(const LilvPlugin* plugin, const LV2_Feature* const* features) const;
    void readPorts(ChannelLayout layout);
    void connectControls();
    void addMidi(const Midi& midi);
    float shown(int index, double own) const;

    const LV2_URID sequenceType_ = urid(LV2_ATOM__Sequence);
    const LV2_URID chunkType_ = urid(LV2_ATOM__Chunk);
    const LV2_URID midiType_ = urid(LV2_MIDI__MidiEvent);
    const Lv2Offers offers_;
    LimiterSettings table_;
    LilvInstance* instance_ = nullptr;
    std::atomic_flag audioRuns_;  ///< a block, or what the main thread does between blocks
    Traits traits_;
    std::unique_ptr<Lv2Window> window_;
    std::vector<Edit> edits_;
    std::size_t granted_ = 0;  ///< of the sizes that were wanted
    ChannelLayout layout_ = 0;
    double sampleRate_ = 0.0;
    std::vector<Port> ports_;
    std::vector<std::uint64_t> events_;  ///< sequences lie at multiples of 8 bytes
    std::vector<std::uint64_t> notified_;
    std::size_t room_;
    bool isStale_ = true;  ///< nothing has run since the ports were moved

    PortRequest portRequest_{};
    LV2_URID_Map map_{};
    LV2_URID_Unmap unmap_{};
};

}  // namespace vanta::test
