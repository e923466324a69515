#include "app/window/screenshot.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/offscreen/png_writer.hpp"
#include "interface/layout/vanta_interface.hpp"

namespace vanta {
namespace {

/// Short enough for each frame of the display to find something new.
constexpr int kBlock = 256;
/// Sixty a second, in the whole milliseconds that the display's clock knows.
constexpr std::array<int, 3> kFrameMs{17, 17, 16};
/// What the display keeps waiting for frames and audio that come unevenly.
constexpr int kFramesBehind = 6;
constexpr double kUsualRate = 48000.0;

/// Milliseconds of the stream that is being drawn. An interface takes its clock as a plain function.
thread_local std::int64_t streamTime = 0;
std::int64_t readStreamTime() {
    return streamTime;
}

/// For what comes slowly to be there.
constexpr int kOpeningFrames = 60;

struct Openable {
    const char* name;
    void (*open)(interface::VantaInterface& interface);
};

const std::array<Openable, 6> kOpenables{{
    {"dither", [](interface::VantaInterface& interface) { interface.bottomBar().dither().button().click(); }},
    {"learn", [](interface::VantaInterface& interface) { interface.midiLearn().midiLearnMode = true; }},
    {"value",
     [](interface::VantaInterface& interface) {
         interface.valueDisplay().show(*interface.bindings().control(0));
     }},
    {"hint",
     [](interface::VantaInterface& interface) {
         interface.showInHintWindow(interface.model().parameterAt(0)->helpText,
                                    interface::HelpHints::kAlways);
     }},
    {"welcome",
     [](interface::VantaInterface& interface) { interface.postEvent(interface::event::kWelcome); }},
    {"about", [](interface::VantaInterface& interface) { interface.showAbout(); }},
}};

class Playback {
public:
    Playback(const Screenshot& wanted, double sampleRate)
        : shot_(wanted),
          rate_(sampleRate),
          model_(static_cast<VantaPlugin&>(wanted.plugin.model())),
          ui_(static_cast<float>(model_.interfaceWidth()), static_cast<float>(model_.interfaceHeight()),
              &readStreamTime),
          channels_(static_cast<std::size_t>(wanted.plugin.channelCount()), std::vector<float>(kBlock)) {
        ui_.deviceBacking().setScale(wanted.scale);
        shot_.plugin.activate(rate_, kBlock);
        // No picture is anybody's first sight of the program, unless it is to show that.
        model_.statics().settings.showWelcomeHint = shot_.opened == "welcome";
        interface_.emplace(ui_, model_);
        for (const Openable& each : kOpenables) {
            if (shot_.opened == each.name) open(each);
        }
    }

    void run() {
        while (static_cast<double>(played_) < shot_.endSeconds * rate_ && !inputEnded_) playBlock();
        const std::int64_t end = played_ + model_.latency();
        while (played_ < end) playBlock();
        for (int i = 0; i < kFramesBehind; ++i) frame();
    }
    void write(const std::filesystem::path& file) { gui::writePng(*ui_.picture(), file.string()); }

private:
    void open(const Openable& openable) {
        frame();
        openable.open(*interface_);
        for (int i = 0; i < kOpeningFrames; ++i) frame();
    }
    void playBlock() {
        std::array<float*, kMaxChannels> outputs{};
        std::array<const float*, kMaxChannels> inputs{};
        for (std::size_t i = 0; i < channels_.size(); ++i) inputs[i] = outputs[i] = channels_[i].data();
        const std::span<float* const> all(outputs.data(), channels_.size());
        const std::size_t frames = shot_.input && !inputEnded_ ? shot_.input->read(all, kBlock) : 0;
        for (float* channel : all) std::fill(channel + frames, channel + kBlock, 0.0f);
        inputEnded_ = inputEnded_ || (shot_.input && frames < kBlock);
        NoHostEvents events;
        shot_.plugin.process(
            {.inputs = {inputs.data(), all.size()}, .sideChain = {}, .outputs = all, .samples = kBlock},
            events);
        played_ += kBlock;
        while (static_cast<double>(played_) >= static_cast<double>(nextFrameMs()) * 0.001 * rate_) frame();
    }
    std::int64_t nextFrameMs() const { return streamTime + kFrameMs[frames_ % kFrameMs.size()]; }
    void frame() {
        streamTime = nextFrameMs();
        ++frames_;
        shot_.plugin.pump();
        ui_.frame();
        ui_.drainRelay();
    }

    const Screenshot& shot_;
    double rate_;
    VantaPlugin& model_;
    gui::OffscreenInterface ui_;
    std::optional<interface::VantaInterface> interface_;
    std::vector<std::vector<float>> channels_;
    std::int64_t played_ = 0;
    std::size_t frames_ = 0;
    bool inputEnded_ = false;
};

}  // namespace

const std::vector<std::string>& openableNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const Openable& each : kOpenables) all.emplace_back(each.name);
        return all;
    }();
    return names;
}

void writeScreenshot(const std::filesystem::path& file, const Screenshot& screenshot) {
    streamTime = 0;
    const double rate =
        screenshot.input ? static_cast<double>(screenshot.input->info().samplerate) : kUsualRate;
    Playback playback(screenshot, rate);
    playback.run();
    playback.write(file);
}

}  // namespace vanta
