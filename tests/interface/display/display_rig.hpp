#pragma once

#include <cmath>
#include <functional>
#include <sstream>
#include <vector>

#include "foundation/binary_data.hpp"
#include "foundation/resource.hpp"
#include "gui/animation/animator.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "interface/display/limiter_display.hpp"

namespace vanta::interface {

/// What is recorded at a sample, on both channels.
struct RecordedSample {
    float input = 0.0f;
    float output = 0.0f;
    float gain = 1.0f;
};

/// The limiter's display in an interface without a window, at a time that is told. Audio comes in batches of
/// whole blocks, as a processor hands it over.
template <typename Interface>
class BasicDisplayRig {
public:
    static constexpr int kBlock = 256;

    using Sample = RecordedSample;
    using Signal = std::function<Sample(std::int64_t)>;

    explicit BasicDisplayRig(float width = 800.0f, float height = 480.0f, float deviceScale = 1.0f,
                             double sampleRate = 48000.0)
        : ui(width, height, &readClock), animator(ui.template make<gui::Animator>()), rate(sampleRate) {
        addResources(gui::artworkResources());
        now = 0;
        ui.deviceBacking().setScale(deviceScale);
        animator.running = true;
        display = &ui.template make<LimiterDisplay>(&animator, levels);
        display->sampleRate = static_cast<float>(rate);
        display->setBounds(gui::Rect::ofSize(0.0f, 0.0f, width, height));
        display->parent = &ui.rootControl();
        const auto mapping = curveOf(MeterScale::Db48);
        display->curve = mapping;
        display->scale = (height - LimiterDisplay::kOffScale) / -mapping.toDisplay(-48.0f);
        display->grid().extras = std::vector<float>{-48.0f};
        display->grid().steps = &stepsOf(MeterScale::Db48);
        setMode(DisplayMode::Fast);
        ui.drainRelay();
        ui.rootControl().takeDirtyRect();
    }

    void setMode(DisplayMode mode) { display->setMode(mode, ui.rootControl().localBounds().width()); }

    /// A frame, after the audio of the time since the last one has come, as far as it fills a block and
    /// `heldBack` blocks have been let through.
    void frame(int ms, int heldBack = 0) {
        now += ms;
        const auto due = static_cast<std::int64_t>(static_cast<double>(now) * 0.001 * rate);
        const std::int64_t blocks = due / kBlock - heldBack - delivered / kBlock;
        if (audioRuns && blocks > 0) deliver(static_cast<int>(blocks));
        ui.frame();
    }
    /// Frames of these lengths in turn. The result is how many of them repainted something.
    int run(int totalMs, const std::vector<int>& frames, const std::vector<int>& heldBack = {0}) {
        int painted = 0;
        std::size_t i = 0;
        for (const std::int64_t end = now + totalMs; now < end; ++i) {
            frame(frames[i % frames.size()], heldBack[i % heldBack.size()]);
            if (!ui.rootControl().takeDirtyRect().isEmpty()) ++painted;
        }
        return painted;
    }
    /// As fast as most monitors.
    int run(int totalMs) { return run(totalMs, {17, 17, 16}); }

    void deliver(int blocks) {
        std::stringstream bytes;
        BinaryDataWriter writer(bytes);
        const auto write = [&](float Sample::*part) {
            for (const int value : {2, blocks, kBlock}) writer.writeInt(value);
            for (int block = 0; block < blocks; ++block) {
                for (int channel = 0; channel < 2; ++channel) {
                    for (int i = 0; i < kBlock; ++i)
                        writer.writeFloat(signal(delivered + block * kBlock + i).*part);
                }
            }
        };
        for (const auto part : {&Sample::input, &Sample::output, &Sample::gain}) write(part);
        for (int level = 0; level < levels.levelCount(); ++level) {
            for (int info = 0; info < wave::LevelSource::InfoCount; ++info) writer.writeFloat(loudness);
            writer.writeInt(wave::LevelSource::Maximum);
        }
        BinaryDataReader reader(bytes);
        levels.read(reader);
        delivered += static_cast<std::int64_t>(blocks) * kBlock;
    }

    LevelExchange levels{{2, 3, 3, 3, 0}};
    Interface ui;
    gui::Animator& animator;
    LimiterDisplay* display;
    double rate;
    Signal signal = [](std::int64_t) { return Sample{}; };
    float loudness = -180.0f;
    bool audioRuns = true;
    std::int64_t delivered = 0;  ///< samples
    static inline std::int64_t now = 0;

private:
    static std::int64_t readClock() { return now; }
};

using DisplayRig = BasicDisplayRig<gui::OffscreenInterface>;

}  // namespace vanta::interface
