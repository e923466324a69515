#include "interface/page/limiter_page.hpp"

#include "foundation/resource.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/tree/root_control.hpp"

namespace vanta::interface {
namespace {

constexpr int kFramesPerSecond = 60;

gui::Animator& makeAnimator(gui::UserInterface& interface) {
    addResources(gui::artworkResources());
    auto& animator = interface.make<gui::Animator>();
    animator.framesPerSecond = kFramesPerSecond;
    animator.running = true;
    return animator;
}

}  // namespace

LimiterPage::LimiterPage(gui::UserInterface& interface, const VantaParameters& parameters,
                         LevelExchange& levels, float sampleRate)
    : ui_(interface),
      parameters_(parameters),
      animator_(&makeAnimator(interface)),
      display_(&interface.make<LimiterDisplay>(animator_, levels)) {
    ui_.loadBackdrop("Background");
    display_->sampleRate = sampleRate;
    display_->setBounds(ui_.rootControl().localBounds());
    display_->parent = &ui_.rootControl();
    follow();
}

void LimiterPage::follow() {
    const auto mode = static_cast<DisplayMode>(parameters_.displayMode.currentIndex());
    display_->setMode(mode, ui_.rootControl().localBounds().width());
    const bool isShown = mode != DisplayMode::Off && !parameters_.bypass.mapped();
    if (isShown != (display_->displayAlpha > 0)) display_->showPicture(isShown);
    followScale();
}

void LimiterPage::followScale() {
    const auto kind = static_cast<MeterScale>(parameters_.meterScale.currentIndex());
    const LevelCurve mapping = curveOf(kind);
    const float range = kind == MeterScale::Loudness ? 32.0f : rangeOf(kind);
    display_->curve = mapping;
    display_->scale =
        (ui_.rootControl().localBounds().height() - LimiterDisplay::kOffScale) / -mapping.toDisplay(-range);
    display_->grid().steps = &stepsOf(kind);
    display_->showSlowLevel(kind, static_cast<ProgrammeLevel>(parameters_.loudnessTimeScale.currentIndex()));
}

}  // namespace vanta::interface
