#pragma once

#include <array>
#include <atomic>
#include <vector>

#include <travesty/audio_processor.h>

#include "host/common/embedded_view.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/vst3/block_automation.hpp"
#include "host/vst3/buses.hpp"
#include "host/vst3/parameter_list.hpp"
#include "host/vst3/programs.hpp"
#include "host/vst3/reports.hpp"
#include "host/vst3/run_loop_timer.hpp"

namespace vanta::vst3 {

class ViewRole;

/// What the roles of one object share.
///
/// A timer of the host's run loop is the main thread's turn. For a host without one a thread of our own keeps
/// the model up to date while the instance is active and asks for restarts, and values reach the host with
/// blocks.
struct Instance {
    Instance(EmbeddedViewFactory viewFactory, ComObject& whole);

    /// The main thread's turn.
    void onTimer();
    /// Looks for a run loop at the frames of views, of which there may be several.
    void lookAtFrames();
    /// Loads a preset that was asked for with a block, and finds out what of that the host is to hear.
    void follow();
    /// To that of the buses, while no block runs.
    void changeLayout();

    ComObject& object;
    EmbeddedViewFactory views;
    Reports reports;
    HostedPlugin plugin;
    Programs programs;
    ParameterList parameters;
    BlockAutomation automation;
    Buses buses;
    /// Where the host has put the parameters of MIDI controllers, from 0 to 1.
    std::array<std::atomic<double>, ParameterList::kControllers> controllers{};
    v3_process_setup setup{V3_REALTIME, V3_SAMPLE_32, 1024, 44100.0};
    std::atomic<bool> active{false};
    std::atomic<int> activeLatency{0};  ///< in samples, as the host has read it
    std::vector<ViewRole*> openViews;   ///< in a window
    std::vector<ViewRole*> allViews;
    RunLoopTimer timer;
};

}  // namespace vanta::vst3
