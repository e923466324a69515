#include "interface/loudness/vanta_meter_panel.hpp"

#include <algorithm>

#include "gui/animation/value_animation.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

/// The bottom bar of the interface covers the panel's lower end.
constexpr float kTopBar = 40.0f;
constexpr float kBottomBar = 27.0f;
constexpr gui::Color kGround{8, 9, 12, 140};
constexpr gui::Color kSeam{0, 0, 0, 153};

}  // namespace

VantaMeterPanel::VantaMeterPanel(gui::UserInterface& interface, gui::Control& owner, MeterLink& meterLink,
                                 gui::Animator* animatedBy, Form shownForm)
    : AnimatedControl(interface, animatedBy), link_(meterLink), form_(shownForm) {
    anchor = isCompact() ? gui::anchor::kAll : gui::anchor::kTop | gui::anchor::kRight | gui::anchor::kBottom;
    buildMeters();
    buildLoudness();
    buildLabels();
    buildButtons();
    buildMenus();
    parent = &owner;
    setMainScale(nullptr, {});
    channelLayoutChanged();
    parameterChanged(kAllParameters);
}

VantaMeterPanel::~VantaMeterPanel() {
    if (animator()) {
        for (LevelMeterDisplay* meter : meters_) animator()->cancel(&meter->barAlpha);
        for (LevelPeakLabel* label : peakLabels_) animator()->cancel(&label->alpha);
    }
    removeAllChildren();
}

MeterScale VantaMeterPanel::meterScale() const {
    return static_cast<MeterScale>(parameters().meterScale.currentIndex());
}

float VantaMeterPanel::meterWidth() const {
    return std::max(32.0f, 12.0f * static_cast<float>(channelCount(link_.channelLayout())));
}

float VantaMeterPanel::fittingWidth() const {
    if (isCompact()) return parent.value()->localBounds().width();
    return 2.0f * meterWidth() + (isLoudness() ? kLoudnessWidth : 0.0f);
}

gui::Rect VantaMeterPanel::place() const {
    const gui::Rect& room = parent.value()->localBounds();
    return {room.right - fittingWidth(), 0.0f, room.right, room.bottom};
}

/// It grows to the left, over what it shows there.
void VantaMeterPanel::takePlace(bool animated) {
    const gui::Rect target = place();
    const bool fillsHeight =
        gui::isSame(bounds, {bounds.value().left, target.top, target.right, target.bottom});
    if (animator()) animator()->cancel(&bounds);
    if (!animated || !animator() || !fillsHeight || isCompact()) {
        bounds = target;
        layOut();
        return;
    }
    auto* growth = new gui::ValueAnimation<gui::Rect, Property<gui::Rect>>(*animator(), this, bounds, target);
    growth->motion = gui::AnimationMotion::EaseOut;
}

void VantaMeterPanel::setMainScale(LevelDisplay* display, std::vector<DisplayGrid*> grids) {
    mainDisplay_ = display;
    mainGrids_ = std::move(grids);
    loudnessDisplay_->setGrids(mainGrids_.empty() ? nullptr : mainGrids_.front(), &loudnessGrid_->grid());
    applyScale();
}

void VantaMeterPanel::channelLayoutChanged() {
    for (ChannelLayoutLevelMeterDelegate& delegate : delegates_) {
        delegate.channelLayoutChanged(link_.channelLayout());
    }
    takePlace(false);
    applyScale();
}

void VantaMeterPanel::keepOffBottom(float height) {
    if (std::exchange(offBottom_, height) == height) return;
    layOut();
    applyScale();
}

void VantaMeterPanel::keepReadableBeside(const gui::Rect& covered) {
    if (gui::isSame(std::exchange(covered_, covered), covered)) return;
    layOut();
}

void VantaMeterPanel::resized() {
    AnimatedControl::resized();
    const gui::Control* owner = parent;
    if (owner && animator() && placedBounds().bottom != owner->localBounds().bottom) {
        // The window has another size since the growth began.
        animator()->cancel(&bounds);
        bounds = place();
    }
    layOut();
    // While the panel grows sideways its scale stays.
    const float height = localBounds().height();
    if (std::exchange(scaledHeight_, height) != height) applyScale();
}

/// Some colours end with a pixel.
void VantaMeterPanel::refreshTree() {
    AnimatedControl::refreshTree();
    applyScale();
}

void VantaMeterPanel::paint(gui::Canvas& canvas) {
    if (isCompact()) return;
    const gui::Rect& all = localBounds();
    const float bottom = all.bottom - kBottomBar;
    canvas.fillRect({0.0f, kTopBar, all.right, bottom}, kGround);
    canvas.fillRect({0.0f, kTopBar, 1.0f, bottom}, kSeam);
}

}  // namespace vanta::interface
