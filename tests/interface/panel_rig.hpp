#pragma once

#include <array>
#include <utility>
#include <vector>

#include "gui/animation/animator.hpp"
#include "interface/loudness/vanta_meter_panel.hpp"
#include "tests/gui/test_interface.hpp"
#include "tests/interface/fake_source.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta::test {

/// What a panel reads: real parameters, and sources that a test sets.
class FakeLink final : public interface::MeterLink {
public:
    explicit FakeLink(ChannelLayout layout) : owner(layout), table(owner) {
        sources.resize(static_cast<std::size_t>(levelPosition(kMaxChannels, ChannelLevel::OutputPeak)));
    }

    const VantaParameters& parameters() const override { return table; }
    void choose(const AbstractPluginParameter& parameter, float value) override {
        choices.emplace_back(parameter.name(), value);
        set(*owner.parameterAt(parameter.index()), value);
    }
    ChannelLayout channelLayout() const override { return owner.channelLayout; }
    wave::LevelSource* level(int place) override { return &source(place); }
    wave::LevelSource* combinedLevel(ChannelLevel level) override {
        return &combined[static_cast<std::size_t>(level)];
    }
    void restartPicture() override { ++restarts; }

    void set(AbstractPluginParameter& parameter, float value) {
        parameter.setValue(value, 0);
        if (panel) panel->parameterChanged(parameter.index());
    }
    FakeSource& source(int place) { return sources[static_cast<std::size_t>(place)]; }
    FakeSource& loudness(ProgrammeLevel level) { return source(static_cast<int>(level)); }
    FakeSource& channel(int channel, ChannelLevel level) { return source(levelPosition(channel, level)); }

    RecordingOwner owner;
    VantaParameters table;
    std::vector<FakeSource> sources;
    std::array<FakeSource, 3> combined;
    std::vector<std::pair<std::string, float>> choices;
    int restarts = 0;
    interface::VantaMeterPanel* panel = nullptr;
};

/// A panel over such a link, beside a grid that stands for the main scale.
struct PanelRig {
    using Panel = interface::VantaMeterPanel;

    PanelRig(gui::TestInterface& interface, gui::Animator* animator, const gui::Rect& at,
             ChannelLayout layout, Panel::Form form)
        : link(layout), room(interface.make<gui::Control>()) {
        room.bounds = at;
        room.parent = interface.root;
        grid = &interface.make<interface::DisplayGridControl>();
        display = &interface.make<interface::LevelDisplay>();
        panel = &interface.make<Panel>(room, link, animator, form);
        link.panel = panel;
        display->offset = 57.0f;
        display->bounds = gui::Rect::ofSize(0.0f, 0.0f, at.width(), at.height());
        display->parent = &room;
        if (form == Panel::Form::Compact) return;
        grid->grid().setDisplay(display);
        grid->grid().margins = gui::Rect{0.0f, 56.0f, 40.0f, 39.0f};
        grid->grid().format = "%+.0f dB";
        grid->grid().minimumSpacing = 32.0f;
        grid->grid().labelInset = 4.0f;
        grid->grid().labelAlignment = gui::Alignment::Right;
        grid->grid().labelColor = gui::Color{255, 255, 255, 180};
        grid->grid().lineColor = gui::Color{255, 255, 255, 20};
        grid->bounds = gui::Rect::ofSize(0.0f, 0.0f, 44.0f, at.height());
        grid->parent = &room;
        panel->toFront();
        panel->setMainScale(display, {&grid->grid()});
    }

    FakeLink link;
    gui::Control& room;
    interface::DisplayGridControl* grid = nullptr;
    interface::LevelDisplay* display = nullptr;
    Panel* panel = nullptr;
};

}  // namespace vanta::test
