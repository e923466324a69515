#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "plugin/midi/midi_message.hpp"

namespace vanta::test {

/// A host of one plug-in format. It loads the built module as any host does and speaks to it through nothing
/// but the format's own interface; what it hands on stands in the order of our layouts, whatever the order
/// of the format. Its constructing thread is its main thread. Formats may lack what they cannot say: see the
/// traits.
class FormatHost {
public:
    struct Traits {
        std::string name;
        std::string module;                  ///< path of what is loaded
        bool isSampleAccurate = true;        ///< values take effect at their sample, else with the block
        std::vector<ChannelLayout> layouts;  ///< that the format offers
        bool hasCallsBesideBlocks = true;    ///< of the main thread, while another runs a block
        bool hasValuesInBlocks = true;       ///< else the host sets them on other threads
        bool hasOfflineMode = true;          ///< of the calls that render blocks
        bool hasWindows = false;             ///< of the calls for a window
        bool resizesWindows = true;          ///< hosts may; else plug-ins alone do
        bool callsForGestures = true;        ///< at once; else they come with the next block
    };
    struct Size {
        int width = 0;
        int height = 0;
        bool operator==(const Size&) const = default;
    };
    /// What a user has done to a control, as the plug-in tells it.
    struct Edit {
        enum class Kind { Begin, Value, End } kind;
        int index;
        double value = 0.0;  ///< in the parameter's own numbers
    };
    struct Change {
        int offset;
        int index;
        double value;  ///< in the parameter's own numbers
    };
    struct Midi {
        int offset;
        MidiMessage message;
    };
    struct Block {
        std::span<const float* const> inputs;
        std::span<const float* const> sideChain;  ///< empty, or as many as the layout has
        std::span<float* const> outputs;
        int samples = 0;
        std::span<const Change> changes;  ///< in the order of time
        std::span<const Midi> midi;       ///< likewise
    };

    virtual ~FormatHost() = default;
    virtual const Traits& traits() const = 0;

    // Main thread.

    /// Instantiates and activates. False if the plug-in refuses.
    virtual bool open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) = 0;
    /// Deactivates and activates again, with the same instance.
    virtual bool reactivate(double sampleRate, int largestBlock) = 0;
    virtual void setOffline(bool offline) = 0;
    /// What the plug-in tells of its parameters, in own numbers.
    virtual int parameterCount() const = 0;
    virtual double value(int index) const = 0;
    /// A control of the host's, moved while no block runs.
    virtual void setValue(int index, double value) = 0;
    virtual int latency() const = 0;
    /// The state as a session holds it; `chunk` limits what its streams take at a time, 0 for all at once.
    virtual std::vector<std::byte> save(int chunk = 0) = 0;
    virtual bool restore(std::span<const std::byte> bytes, int chunk = 0) = 0;
    /// What a main loop does: timers, callbacks, requested restarts.
    virtual void idle() = 0;
    /// Of these, the callbacks that may run beside a block.
    virtual void callBack() {}

    // The plug-in's window, which `idle` serves.

    /// In a window of the X server that the environment names, as large as the plug-in wants.
    virtual bool openWindow(unsigned long /*parent*/) { return false; }
    virtual void closeWindow() {}
    /// As the plug-in tells it.
    virtual Size windowSize() const { return {}; }
    virtual void resizeWindow(Size /*size*/) {}
    /// Lets go of the instance while its window is open, and of that afterwards.
    virtual void dropWithWindow() {}
    /// Edits since the last call, in their order.
    virtual std::vector<Edit> takeEdits() { return {}; }
    /// Sizes that the plug-in has asked for. They are granted, a while later, unless the host refuses.
    std::vector<Size> wantedSizes;
    bool refusesSizes = false;
    /// Runs within what the window calls when a control is touched or another size wanted, and so with all
    /// the locks that are held then.
    std::function<void()> onWindowCall = [] {};

    // Any thread.

    /// Sets a value where the format lets any thread do so, from 0 to 1.
    virtual void touch(int, double) {}

    // Audio thread.

    virtual void process(const Block& block) = 0;
};

inline std::vector<ChannelLayout> allLayouts() {
    std::vector<ChannelLayout> all(kChannelLayoutCount);
    std::iota(all.begin(), all.end(), ChannelLayout{0});
    return all;
}

/// Each of these is defined by the folder of its format.
std::unique_ptr<FormatHost> makeClapHost();
std::unique_ptr<FormatHost> makeVst3Host();
std::unique_ptr<FormatHost> makeLv2Host();
/// The same, where windows do not reach their instance.
std::unique_ptr<FormatHost> makeLv2BridgeHost();
std::unique_ptr<FormatHost> makeAaxHost();

}  // namespace vanta::test
