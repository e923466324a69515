#include "interface/display/limiter_display.hpp"

namespace vanta::interface {
namespace {

constexpr float kSlowSpeed = 30.0f;
constexpr float kSlowDownDrift = 0.75f;

/// Columns a second: a wide picture holds them longer.
float speedFor(float rootWidth) {
    if (rootWidth > 1500.0f) return 180.0f;
    return rootWidth > 900.0f ? 120.0f : 90.0f;
}

}  // namespace

LimiterDisplay::LimiterDisplay(gui::UserInterface& interface, gui::Animator* animatedBy,
                               LevelExchange& levels)
    : LevelTimeDisplay(interface, animatedBy), levels_(levels) {
    offset = kZeroPosition;
    lineOffset = 16.0f;
    anchor = gui::anchor::kLeft | gui::anchor::kTop | gui::anchor::kRight | gui::anchor::kBottom;
    incomingLine().load("IncomingLine");
    peakLabel().load("DisplayPeakLabel");
    addCurves();
    labelCurve = Reduction;
    setHairlines();
    grid().margins = gui::Rect{0.0f, 56.0f, 0.0f, 39.0f};
    grid().lineColor = gui::Color{255, 255, 255, 20};
    grid().labelColor = gui::Color{255, 255, 255, 180};
    grid().format = "%+.0f dB";
    grid().labelInset = 2.0f;
    grid().minimumSpacing = 32.0f;
}

void LimiterDisplay::addCurves() {
    const auto audio = [this](RecordedAudio which) { return &levels_.audio(static_cast<int>(which)); };
    addAudioCurve(audio(RecordedAudio::Input), RealTimeOperation::Maximum, {255, 255, 255, 127}, {},
                  {255, 250, 238, 204});
    curveAt(Input).bottomColor = gui::Color{97, 111, 157, 71};
    addAudioCurve(audio(RecordedAudio::Output), RealTimeOperation::Maximum, {150, 158, 185, 178}, {},
                  {166, 193, 255, 178});
    curveAt(Output).bottomColor = gui::Color{99, 110, 153, 71};
    addAudioCurve(audio(RecordedAudio::Gain), RealTimeOperation::Minimum, {192, 46, 63, 204},
                  {192, 46, 63, 127}, {});
    curveAt(Reduction).topMargin = static_cast<int>(kZeroPosition);
    curveAt(Reduction).lineWidth = 2.0f;
    curveAt(Reduction).restLevel = 1.0f;
    addLevelCurve(&levels_.level(static_cast<int>(ProgrammeLevel::Momentary)), {231, 179, 115, 204}, {},
                  {247, 191, 92, 25});
    curveAt(SlowLevel).bottomColor = gui::Color{};
    for (const int fast : {Input, Output, Reduction}) curveAt(fast).release = 0.6f;
}

void LimiterDisplay::setHairlines() {
    const float pixel = 1.0f / ui().deviceBacking().scale();
    curveAt(Input).lineWidth = pixel;
    curveAt(Output).lineWidth = pixel;
}

void LimiterDisplay::refreshTree() {
    LevelTimeDisplay::refreshTree();
    setHairlines();
}

void LimiterDisplay::setMode(DisplayMode mode, float rootWidth) {
    penDrift = mode == DisplayMode::SlowDown ? kSlowDownDrift : 0.0f;
    if (mode == DisplayMode::Off) return;
    if (mode == DisplayMode::Infinite) {
        speed = 0.0f;
    } else {
        speed = mode == DisplayMode::Slow ? kSlowSpeed : speedFor(rootWidth);
    }
}

void LimiterDisplay::showSlowLevel(MeterScale meterScale, ProgrammeLevel timeScale) {
    const ProgrammeLevel shown = meterScale == MeterScale::Loudness ? timeScale : ProgrammeLevel::Momentary;
    wave::LevelSource* slow = &levels_.level(static_cast<int>(shown));
    if (isKScale(meterScale)) slow = &levels_.combinedLevel(static_cast<int>(ChannelLevel::RmsOrLoudness));
    curveAt(SlowLevel).levelSource = slow;
}

}  // namespace vanta::interface
