#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "foundation/channel_layout.hpp"
#include "gui/text/x11_text.hpp"
#include "interface/layout/regular_form.hpp"
#include "interface/layout/vanta_interface.hpp"
#include "tests/host/in_process_host.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

/// WCAG 2.1, success criterion 1.4.3: for text of any size but large, with what is disabled left out.
constexpr double kLeastContrast = 4.5;

struct TextPicture final : gui::Bitmap {
    using Bitmap::Bitmap;
    const gui::Text* text = nullptr;
};

/// Knows whether somebody has put text into it, as scales do that keep all their numbers in one picture.
struct Layer final : gui::Bitmap {
    using Bitmap::Bitmap;
    void drawBitmap(const Bitmap& bitmap, const gui::Rect& target, gui::Point source, int alpha) override {
        if (const auto* picture = dynamic_cast<const TextPicture*>(&bitmap)) lastText = picture->text->text;
        Bitmap::drawBitmap(bitmap, target, source, alpha);
    }
    std::string lastText;
};

struct ReadDesktop final : Desktop {
    using Desktop::Desktop;
    std::unique_ptr<gui::Bitmap> createBitmap() override { return std::make_unique<Layer>(deviceBacking()); }
    std::unique_ptr<gui::Text> createText() override {
        auto picture = std::make_unique<TextPicture>(deviceBacking());
        TextPicture& known = *picture;
        auto text = std::make_unique<gui::X11Text>(deviceBacking(), std::move(picture));
        known.text = text.get();
        return text;
    }
};

double luminance(gui::Pixel pixel) {
    const auto linear = [&](int shift) {
        const double c = static_cast<double>(pixel >> shift & 255u) / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
}

double contrast(double a, double b) {
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// Draws two pages, one of them without its texts, and knows where these are.
class Reader final : public gui::Canvas::Owner {
public:
    explicit Reader(ReadDesktop& desktop) : page_(desktop.deviceBacking()), bare_(desktop.deviceBacking()) {
        const gui::Rect& all = desktop.root->localBounds();
        for (gui::Bitmap* each : {&page_, &bare_}) each->setLogicalSize(all.width(), all.height());
        gui::Canvas canvas(*this);
        canvas.clip = page_.logicalRect();
        desktop.root->drawTree(canvas);
    }

    struct Reading {
        std::string name;
        double contrast;
    };
    /// Of each text that nothing covers. What a sheet dims cannot be used.
    std::vector<Reading> readings() const {
        std::vector<Reading> all;
        for (const Ink& ink : inks_) {
            double front = 0.0, ground = 0.0;
            int seen = 0;
            for (const Letter& at : ink.letters) {
                const gui::Pixel now = page_.row(at.y)[at.x];
                const bool isHidden = ink.around.empty() && now == bare_.row(at.y)[at.x];
                if (now != at.drawn || isHidden) continue;
                ++seen;
                front += luminance(now);
                ground += luminance(bare_.row(at.y)[at.x]);
            }
            if (seen == 0 || 2 * seen < static_cast<int>(ink.letters.size())) continue;
            if (!ink.around.empty()) {
                ground = 0.0;
                for (const auto& [x, y] : ink.around) ground += luminance(page_.row(y)[x]);
                ground *= seen / static_cast<double>(ink.around.size());
            }
            all.push_back({ink.name, contrast(front / seen, ground / seen)});
        }
        return all;
    }

    float scale() const override { return page_.scale(); }
    void drawBitmap(const gui::Bitmap& bitmap, const gui::Rect& target, gui::Point source,
                    int alpha) override {
        const auto* text = dynamic_cast<const TextPicture*>(&bitmap);
        const auto* layer = dynamic_cast<const Layer*>(&bitmap);
        const bool isLive = text || (layer && !layer->lastText.empty());
        const bool isLetters = layer && kLetters.contains(layer->imageName());
        page_.drawBitmap(bitmap, target, source, alpha);
        if (!isLive) bare_.drawBitmap(bitmap, target, source, alpha);
        const bool isShadow = text && text->text->color.value() == gui::Color{0, 0, 0, 255};
        const bool isFading = alpha < 255 && text && text->text->text.value().ends_with(" dB");
        if (alpha <= kDisabledAlpha || isShadow || isFading) return;
        if (isLive) note(bitmap, target, source, text ? text->text->text.value() : layer->lastText, true);
        if (isLetters) note(bitmap, target, source, bitmap.imageName(), false);
    }
    void drawBitmapMasked(const gui::Bitmap& bitmap, const gui::Rect& target, gui::Point source,
                          const gui::Bitmap& mask, gui::Point maskSource, int alpha) override {
        both([&](gui::Bitmap& on) { on.drawBitmapMasked(bitmap, target, source, mask, maskSource, alpha); });
    }
    void drawLine(gui::Point from, gui::Point to, gui::Color color, float width,
                  const gui::Rect& clip) override {
        both([&](gui::Bitmap& on) { on.drawLine(from, to, color, width, clip); });
    }
    void drawCurves(const gui::CurveSet& set, const gui::Rect& clip, const gui::Rect& area, gui::Point origin,
                    gui::Canvas::CurveOrientation orientation, int alpha) override {
        both([&](gui::Bitmap& on) { on.drawCurves(set, clip, area, origin, orientation, alpha); });
    }
    void fillRect(const gui::Rect& rect, gui::Color color) override {
        both([&](gui::Bitmap& on) { on.fillRect(rect, color); });
    }
    gui::Color pixelAt(gui::Point point) const override { return page_.pixelAt(point); }
    void drawPoint(gui::Point point, gui::Color color) override {
        both([&](gui::Bitmap& on) { on.drawPoint(point, color); });
    }

private:
    using Place = std::pair<int, int>;
    /// Pixels from a letter to its ground, beyond its soft edge.
    static constexpr int kAround = 3;
    struct Letter {
        int x, y;
        gui::Pixel drawn;
    };
    struct Ink {
        std::string name;
        std::vector<Letter> letters;  ///< pixels that are letters and nothing else
        std::vector<Place> around;    ///< of a picture's letters, which bring some ground along
    };
    /// Pictures that stand on what moves. Others bring their ground along.
    static inline const std::set<std::string> kLetters{"MeterLabelsHor",
                                                       "MeterLabelsVer",
                                                       "LoudnessLabels",
                                                       "GainLabel.png",
                                                       "OutputLevelLabelsDB.png",
                                                       "OutputLevelLabelsDBTP.png",
                                                       "StereoLinkLabelsNormal.png",
                                                       "StereoLinkLabelsSurround.png"};

    template <typename Draw>
    void both(const Draw& draw) {
        draw(page_);
        draw(bare_);
    }

    /// Letters are those pixels that the text or the picture covers most.
    void note(const gui::Bitmap& bitmap, const gui::Rect& target, gui::Point source, const std::string& name,
              bool isLive) {
        const gui::DeviceRect at = gui::toDevice(target, scale()).intersected(page_.pixelRect());
        const int dx = gui::toDevice(source.x, scale()) - at.left;
        const int dy = gui::toDevice(source.y, scale()) - at.top;
        const auto strength = [&](int x, int y) {
            const gui::Pixel pixel = bitmap.row(y + dy)[x + dx];
            return isLive ? 255.0 - static_cast<double>(pixel >> 24) : 255.0 * luminance(pixel);
        };
        double most = 0.0;
        const auto each = [&](const auto& visit) {
            for (int y = at.top; y < at.bottom; ++y) {
                for (int x = at.left; x < at.right; ++x) visit(x, y);
            }
        };
        each([&](int x, int y) { most = std::max(most, strength(x, y)); });
        if (most < 16.0) return;
        Ink ink{
            .name = fmt::format("{} at {},{}", name, target.left, target.top), .letters = {}, .around = {}};
        std::set<Place> near, around;
        each([&](int x, int y) {
            if (strength(x, y) < 0.9 * most) return;
            ink.letters.push_back({x, y, page_.row(y)[x]});
            for (int i = -kAround; !isLive && i <= kAround; ++i) {
                for (int j = -kAround; j <= kAround; ++j) {
                    const Place place{std::clamp(x + i, at.left, at.right - 1),
                                      std::clamp(y + j, at.top, at.bottom - 1)};
                    (std::max(std::abs(i), std::abs(j)) < kAround ? near : around).insert(place);
                }
            }
        });
        std::ranges::set_difference(around, near, std::back_inserter(ink.around));
        inks_.push_back(std::move(ink));
    }

    gui::Bitmap page_;
    gui::Bitmap bare_;
    std::vector<Ink> inks_;
};

/// An instance with its interface, which can play something loud.
class Contrast : public ::testing::TestWithParam<int> {
protected:
    void open(ChannelLayout layout = kStereoLayout) {
        channels_ = channelTypes(layout).size();
        close();
        host.emplace(layout, 48000.0f);
        plugin().settings().loaded = false;
        plugin().settings().interfaceLayout = GetParam();
        plugin().statics().settings.showWelcomeHint = false;
        desktop.emplace(static_cast<float>(plugin().interfaceWidth()),
                        static_cast<float>(plugin().interfaceHeight()));
        desktop->setScale(2.0f);
        ui.emplace(*desktop, plugin());
        // Nothing is half faded.
        pass(600, 0.0f);
    }
    void close() {
        ui.reset();
        desktop.reset();
        host.reset();
    }
    ~Contrast() override { close(); }

    VantaPlugin& plugin() { return static_cast<VantaPlugin&>(host->model()); }
    void set(AbstractPluginParameter& parameter, int value) {
        parameter.setValue(static_cast<float>(value), 0);
        desktop->drainRelay();
    }
    /// Bursts of a tone, some beyond full scale: where the edge of a curve runs up and down, its lines are
    /// brighter than what they enclose.
    void pass(int milliseconds, float level) {
        constexpr int kBlock = 480;
        std::vector<std::vector<float>> channels(channels_, std::vector<float>(kBlock));
        std::vector<float*> all;
        for (auto& channel : channels) all.push_back(channel.data());
        for (int at = 0; at < milliseconds; at += 10) {
            for (auto& channel : channels) {
                const float burst = level * std::pow(0.9f, static_cast<float>(at * 7 / 10 % 41));
                for (int i = 0; i < kBlock; ++i)
                    channel[static_cast<std::size_t>(i)] = burst * std::sin(0.31f * static_cast<float>(i));
            }
            host->process(std::vector<const float*>(all.begin(), all.end()), all, kBlock);
            host->idle();
            desktop->advance(10);
            desktop->tickFrameTimers();
            desktop->drainRelay();
        }
    }
    void expectReadable(const std::string& state, std::size_t texts) {
        pass(400, loud_);
        const std::vector<Reader::Reading> readings = Reader(*desktop).readings();
        EXPECT_GE(readings.size(), texts) << state;
        for (const Reader::Reading& each : readings) {
            if (each.contrast < kLeastContrast && failures_.insert(each.name).second)
                ADD_FAILURE() << fmt::format("{:.2f} : 1 {} ({})", each.contrast, each.name, state);
        }
    }

    FactoryHome home;
    std::optional<test::InProcessHost> host;
    std::optional<ReadDesktop> desktop;
    std::optional<VantaInterface> ui;
    float loud_ = 0.0f;

private:
    std::size_t channels_ = 2;
    std::set<std::string> failures_;  ///< each is told once
};

TEST_P(Contrast, OfAllTextsIsEnoughAtRestAndOnFullMeters) {
    for (const char* layout : {"stereo", "7.1.2"}) {
        open(*findLayout(layout));
        for (const float level : {0.0f, 4.0f}) {
            loud_ = level;
            for (int scale = 0; scale <= static_cast<int>(plugin().meterScale.maximum()); ++scale) {
                set(plugin().meterScale, scale);
                set(plugin().showAdvanced, scale % 2);
                expectReadable(fmt::format("{}, level {}, meter scale {}", layout, level, scale), 20);
            }
            for (int time = 0; time < 3; ++time) {
                set(plugin().loudnessTimeScale, time);
                expectReadable(fmt::format("{}, level {}, loudness of time scale {}", layout, level, time),
                               24);
            }
            for (int mode = 0; mode <= static_cast<int>(plugin().displayMode.maximum()); ++mode) {
                set(plugin().displayMode, mode);
                set(plugin().meterScale, mode);
                expectReadable(fmt::format("{}, level {}, display mode {}", layout, level, mode), 20);
            }
            set(plugin().displayMode, 0);
        }
    }
}

TEST_P(Contrast, OfAllTextsIsEnoughInWhatOpens) {
    const std::vector<std::pair<const char*, std::function<void()>>> states{
        {"other settings",
         [&] {
             for (AbstractPluginParameter* each : std::initializer_list<AbstractPluginParameter*>{
                      &plugin().truePeakMetering, &plugin().truePeakLimiting})
                 set(*each, 0);
             set(plugin().lockOutput, 1);
             set(plugin().dithering, 5);
         }},
        {"unity gain", [&] { set(plugin().unityGain, 1); }},
        {"side chain", [&] { set(plugin().sideChainTriggering, 1); }},
        {"audition", [&] { set(plugin().auditionLimiting, 1); }},
        {"bypass", [&] { set(plugin().bypass, 1); }},
        {"dither", [&] { ui->bottomBar().dither().button().click(); }},
        {"learn", [&] { ui->midiLearn().midiLearnMode = true; }},
        {"learn, chosen",
         [&] {
             plugin().statics().controllers.assign(21, 0);
             ui->midiLearn().midiLearnMode = true;
             ui->midiLearn().setTarget(0);
         }},
        {"value", [&] { ui->valueDisplay().show(*ui->bindings().control(0)); }},
        {"hint", [&] { ui->showInHintWindow(plugin().gain.helpText, HelpHints::kAlways); }},
        {"welcome", [&] { ui->postEvent(event::kWelcome); }},
        {"about", [&] { ui->showAbout(); }},
    };
    for (const auto& [name, enter] : states) {
        for (const float level : {0.0f, 4.0f}) {
            loud_ = 0.0f;
            open();
            set(plugin().showAdvanced, 1);
            loud_ = level;
            enter();
            pass(level > 0.0f ? 7000 : 100, level);
            // A sheet dims all the rest.
            expectReadable(fmt::format("{}, level {}", name, level), 3);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, Contrast, ::testing::Values(0, 1));

}  // namespace
}  // namespace vanta::interface
