#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/text/x11_text.hpp"
#include "interface/layout/vanta_interface.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "tests/host/in_process_host.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::interface {
namespace {

/// What WCAG 2 asks of text.
constexpr double kLeast = 4.5;

double luminance(gui::Color color) {
    const auto linear = [](int byte) {
        const double v = byte / 255.0;
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(gui::Pixel a, gui::Pixel b) {
    const double first = luminance(gui::toColor(a)) + 0.05, second = luminance(gui::toColor(b)) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

/// What a text is rendered into: drawn somewhere, it tells whose it is.
struct TextPicture final : gui::Bitmap {
    using Bitmap::Bitmap;
    const gui::Text* owner = nullptr;
};

/// A page that measures each text that is drawn on it, against what lay there before.
class MeasuringPage final : public gui::Bitmap {
public:
    using Bitmap::Bitmap;

    void drawBitmap(const gui::Bitmap& bitmap, const gui::Rect& target, gui::Point source,
                    int alpha) override {
        const auto* picture = dynamic_cast<const TextPicture*>(&bitmap);
        if (!picture || alpha == 0) return Bitmap::drawBitmap(bitmap, target, source, alpha);
        const gui::DeviceRect at = gui::toDevice(target, scale());
        const gui::DevicePoint from{gui::toDevice(source.x, scale()), gui::toDevice(source.y, scale())};
        std::vector<std::pair<gui::DevicePoint, gui::Pixel>> ground;
        for (int y = at.top; y < at.bottom; ++y) {
            for (int x = at.left; x < at.right; ++x) {
                const gui::DevicePoint in{x - at.left + from.x, y - at.top + from.y};
                if (!pixelRect().contains({x, y}) || !bitmap.pixelRect().contains(in)) continue;
                // Ink, not its soft edge.
                if (gui::opacityOf(bitmap.row(in.y)[in.x]) >= inkOf(*picture))
                    ground.push_back({{x, y}, row(y)[x]});
            }
        }
        Bitmap::drawBitmap(bitmap, target, source, alpha);
        if (ground.empty()) return;
        std::vector<double> found;
        for (const auto& [place, before] : ground) found.push_back(contrast(row(place.y)[place.x], before));
        // All but a few pixels, such as those on a line of the grid.
        const auto tenth = found.begin() + static_cast<std::ptrdiff_t>(found.size() / 10);
        std::ranges::nth_element(found, tenth);
        const auto known = worst.try_emplace(picture->owner->text.value(), *tenth).first;
        known->second = std::min(known->second, *tenth);
    }

    std::map<std::string, double> worst;

private:
    static int inkOf(const TextPicture& picture) {
        int most = 1;
        for (int y = 0; y < picture.pixelRect().bottom; ++y) {
            for (int x = 0; x < picture.pixelRect().right; ++x)
                most = std::max(most, gui::opacityOf(picture.row(y)[x]));
        }
        return most * 9 / 10;
    }
};

std::int64_t now = 0;
std::int64_t readNow() {
    return now;
}

struct Window final : gui::OffscreenInterface {
    Window(float width, float height) : OffscreenInterface(width, height, &readNow) {}
    ~Window() override { shutDown(); }
    std::unique_ptr<gui::Text> createText() override {
        auto picture = std::make_unique<TextPicture>(deviceBacking());
        TextPicture& drawn = *picture;
        auto text = std::make_unique<gui::X11Text>(deviceBacking(), std::move(picture));
        drawn.owner = text.get();
        return text;
    }
    std::map<std::string, double> measured() {
        MeasuringPage page(deviceBacking());
        page.setLogicalSize(rootControl().localBounds().width(), rootControl().localBounds().height());
        rootControl().drawTree(page.canvas());
        return page.worst;
    }
};

/// Loud music for as long as it takes to fill all meters and the display.
class Scene {
public:
    Scene(int sizeRow, const std::vector<std::pair<std::string, float>>& values) {
        model().settings().loaded = false;
        model().settings().interfaceLayout = sizeRow;
        model().statics().settings.showWelcomeHint = false;
        for (const auto& [name, value] : values) {
            for (int i = 0; i < model().parameterCount(); ++i) {
                if (model().parameterAt(i)->displayName == name) model().parameterAt(i)->setValue(value, 1);
            }
        }
        window_.emplace(static_cast<float>(model().interfaceWidth()),
                        static_cast<float>(model().interfaceHeight()));
        window_->deviceBacking().setScale(2.0f);
        interface_.emplace(*window_, model());
        run(3500);
    }
    void run(int milliseconds) {
        for (const std::int64_t end = now + milliseconds; now < end;) {
            now += kFrameMs;
            for (int i = 0; i < kFrameMs * kRate / 1000; i += kBlock) playBlock();
            host_.idle();
            window_->frame();
            window_->drainRelay();
        }
    }
    VantaPlugin& model() { return static_cast<VantaPlugin&>(host_.model()); }
    VantaInterface& interface() { return *interface_; }
    Window& window() { return *window_; }

private:
    static constexpr int kRate = 8000;
    static constexpr int kBlock = 128;
    static constexpr int kFrameMs = 32;

    void playBlock() {
        std::array<const float*, 2> inputs{music_.data() + played_, music_.data() + played_ + 1};
        std::array<float*, 2> outputs{output_[0].data(), output_[1].data()};
        host_.process(inputs, outputs, kBlock);
        played_ = (played_ + kBlock) % (music_.size() - 2 * kBlock);
    }

    test::UserHome home_;
    test::InProcessHost host_{kStereoLayout, kRate};
    std::optional<Window> window_;
    std::optional<VantaInterface> interface_;
    std::vector<float> music_ = test::pinkNoise(7, kRate, 0.5);
    std::array<std::array<float, kBlock>, 2> output_{};
    std::size_t played_ = 0;
};

struct Look {
    const char* name;
    int sizeRow;  ///< 0 is Compact
    float meterScale;
    float advanced;
};

class Contrast : public ::testing::TestWithParam<Look> {};

/// All that is written anywhere, over full meters and a full display, as it looks in the end.
TEST_P(Contrast, OfAllTextsIsEnough) {
    const auto& [name, row, meterScale, advanced] = GetParam();
    // Dither is on: what is off is greyed.
    Scene scene(row, {{"Gain", 15.0f},
                      {"Display Mode", static_cast<float>(VantaParameters::DisplayMode::Fast)},
                      {"Meter Scale", meterScale},
                      {"Show Advanced Controls", advanced},
                      {"Dithering", 1.0f}});
    VantaInterface& ui = scene.interface();
    const auto expectReadable = [&](const char* state, std::size_t texts) {
        scene.run(600);
        const std::map<std::string, double> measured = scene.window().measured();
        EXPECT_GE(measured.size(), texts) << state;
        for (const auto& [text, worst] : measured) EXPECT_GE(worst, kLeast) << state << ": " << text;
    };
    expectReadable("at work", 17);
    ui.midiLearn().midiLearnMode = true;
    expectReadable("MIDI learn", 18);
    ui.midiLearn().midiLearnMode = false;
    ui.valueDisplay().show(*ui.bindings().control(0));
    expectReadable("a value", 18);
    ui.valueDisplay().hide();
    ui.showInHintWindow(ui.model().parameterAt(0)->helpText, HelpHints::kAlways);
    ui.bottomBar().dither().button().click();
    expectReadable("a hint, and the dither panel", 19);
    ui.showAbout();
    expectReadable("a dialog", 20);
}

INSTANTIATE_TEST_SUITE_P(Looks, Contrast,
                         ::testing::Values(Look{"CompactLevels", 0, 0.0f, 0.0f},
                                           Look{"CompactLoudness", 0, 6.0f, 0.0f},
                                           Look{"Levels", 1, 0.0f, 0.0f}, Look{"Loudness", 1, 6.0f, 1.0f}),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace vanta::interface
