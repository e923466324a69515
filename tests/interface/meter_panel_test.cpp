#include <gtest/gtest.h>

#include <memory>

#include "tests/gui/pictures.hpp"
#include "tests/interface/panel_rig.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;
using test::PanelRig;
using Panel = VantaMeterPanel;

void play(PanelRig& rig) {
    const int count = channelCount(rig.link.channelLayout());
    for (int c = 0; c < count; ++c) {
        const float at = static_cast<float>(c);
        rig.link.channel(c, ChannelLevel::OutputPeak).values = {-2.1f - at, -1.0f - at, -1.0f};
        rig.link.channel(c, ChannelLevel::RmsOrLoudness).values = {-13.4f - at, -11.0f - at, -10.0f};
        rig.link.channel(c, ChannelLevel::Gain).values = {-3.1f + 0.3f * at, -4.6f, -4.6f};
    }
    rig.link.combined[0].values = {-2.1f, -1.0f, -1.0f};
    rig.link.combined[2].values = {-3.1f, -4.6f, -4.6f};
    rig.link.loudness(ProgrammeLevel::Momentary).values = {-11.4f, -10.2f, -9.8f};
    rig.link.loudness(ProgrammeLevel::ShortTerm).values = {-12.8f, -12.0f, -11.9f};
    rig.link.loudness(ProgrammeLevel::Integrated).values = {-14.2f, -180.0f, -180.0f, 5.8f, -17.6f};
}

class MeterPanelPicture : public testing::TestWithParam<float> {
protected:
    void expectLooks(const std::string& name) {
        ui.drainRelay();
        ui.setScale(GetParam());
        ui.drainRelay();
        ui.advance(400);
        test::expectPicture(*ui.picture(), test::atScale(name, GetParam()), 1);
    }
    PanelRig& add(const Rect& at, ChannelLayout layout, Panel::Form form) {
        rigs.push_back(std::make_unique<PanelRig>(ui, animator, at, layout, form));
        play(*rigs.back());
        return *rigs.back();
    }
    void make(float width, float height) {
        ui.rootControl().bounds = Rect::ofSize(0.0f, 0.0f, width, height);
        animator = &ui.make<gui::Animator>();
        animator->framesPerSecond = 60;
        animator->running = true;
    }
    std::vector<std::unique_ptr<PanelRig>> rigs;
    gui::TestInterface ui{400.0f, 300.0f};
    gui::Animator* animator = nullptr;
};

TEST_P(MeterPanelPicture, RegularForm) {
    make(1000.0f, 480.0f);
    ui.loadBackdrop("Background");
    float x = 0.0f;
    const auto next = [&](float width, ChannelLayout layout, MeterScale scale) -> PanelRig& {
        PanelRig& rig = add(Rect::ofSize(x, 0.0f, width, 480.0f), layout, Panel::Form::Regular);
        rig.link.set(rig.link.table.meterScale, static_cast<float>(scale));
        x += width + 6.0f;
        return rig;
    };
    next(108.0f, kStereoLayout, MeterScale::Db48).link.channel(0, ChannelLevel::OutputPeak).values = {
        1.0f, 1.5f, 1.5f};
    next(108.0f, kStereoLayout, MeterScale::K14).link.combined[0].values[2] = 0.2f;
    PanelRig& integrated = next(306.0f, kStereoLayout, MeterScale::Loudness);
    integrated.link.set(integrated.link.table.loudnessMeterTarget, -14.0f);
    integrated.link.set(integrated.link.table.loudnessTimeScale, 2.0f);
    PanelRig& relative = next(386.0f, 6, MeterScale::Loudness);
    relative.link.set(relative.link.table.loudnessMeterTarget, -20.5f);
    relative.link.set(relative.link.table.loudnessMeterScale, 1.0f);
    relative.link.set(relative.link.table.loudnessMeterOrigin, 1.0f);
    relative.link.set(relative.link.table.loudnessRecording, 0.0f);
    relative.link.set(relative.link.table.unityGain, 1.0f);
    expectLooks("panel");
}

TEST_P(MeterPanelPicture, CompactForm) {
    make(655.0f, 290.0f);
    ui.loadBackdrop("SmallLayoutBackground");
    PanelRig& plain = add(Rect::ofSize(0.0f, -90.0f, 655.0f, 290.0f), kStereoLayout, Panel::Form::Compact);
    plain.link.set(plain.link.table.meterScale, static_cast<float>(MeterScale::K14));
    PanelRig& loud = add(Rect::ofSize(0.0f, 10.0f, 655.0f, 290.0f), kStereoLayout, Panel::Form::Compact);
    loud.link.set(loud.link.table.loudnessMeterTarget, -14.0f);
    loud.link.set(loud.link.table.meterScale, static_cast<float>(MeterScale::Loudness));
    expectLooks("panel-compact");
}

INSTANTIATE_TEST_SUITE_P(Scales, MeterPanelPicture, testing::Values(1.0f, 1.5f, 2.0f));

}  // namespace
}  // namespace vanta::interface
