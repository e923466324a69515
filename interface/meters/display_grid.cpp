#include "interface/meters/display_grid.hpp"

#include <cmath>

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

constexpr float kUsualSteps[] = {3.0f, 6.0f, 10.0f};

}  // namespace

DisplayGrid::DisplayGrid(gui::Control& control)
    : control_(control), labels_(control.ui().createBitmap()), text_(control.ui().createText()) {
    control.ui().deviceBacking().addListener(*this);
}

DisplayGrid::DisplayGrid(LevelDisplay& display) : DisplayGrid(static_cast<gui::Control&>(display)) {
    setDisplay(&display);
}

DisplayGrid::~DisplayGrid() {
    if (display_) display_->removeMappingObserver(*this);
    control_.ui().deviceBacking().removeListener(*this);
}

void DisplayGrid::setDisplay(LevelDisplay* display) {
    if (display == display_) return;
    if (display_) display_->removeMappingObserver(*this);
    display_ = display;
    if (display_) display_->addMappingObserver(*this);
    invalidate();
}

void DisplayGrid::invalidate() {
    state_ = State::Dirty;
    ++revision_;
    control_.markDirty();
}

void DisplayGrid::propertyChanged(AbstractProperty& property) {
    const bool isLook = &property == &lineColor || &property == &showLines || &property == &showLabels;
    if (isLook) return control_.markDirty();
    const bool isPosition = &property != &labelColor && &property != &fontSize;
    if (isPosition) return invalidate();
    if (state_ == State::LabelsPainted) state_ = State::TicksFound;
    control_.markDirty();
}

float DisplayGrid::deviceScale() const {
    return control_.ui().deviceBacking().scale();
}

LevelDisplay* DisplayGrid::mappedDisplay() const {
    return display_ && display_->orientation == orientation.value() ? display_ : nullptr;
}

bool DisplayGrid::isDecibel() const {
    const LevelDisplay* mapped = mappedDisplay();
    return mapped && mapped->domain == LevelDisplay::LevelDomain::Decibel;
}

float DisplayGrid::extent() const {
    const gui::Rect& all = control_.localBounds();
    return orientation == Orientation::Vertical ? all.height() : all.width();
}

float DisplayGrid::levelToPosition(float level) const {
    const float plain = level - labelShift;
    if (const LevelDisplay* mapped = mappedDisplay()) return mapped->levelToPosition(plain) + positionShift;
    const float last = extent() - 1.0f;
    const float along = (plain - minimum) * last / (maximum - minimum);
    return (orientation == Orientation::Vertical ? last - along : along) + positionShift;
}

float DisplayGrid::positionToLevel(float position) const {
    const float plain = position - positionShift;
    if (const LevelDisplay* mapped = mappedDisplay()) return mapped->positionToLevel(plain) + labelShift;
    const float last = extent() - 1.0f;
    const float along = orientation == Orientation::Vertical ? last - plain : plain;
    return along * (maximum - minimum) / last + minimum + labelShift;
}

/// A window can be too small for its scale: below nothing, lengths turn negative.
bool DisplayGrid::hasExtent() const {
    const LevelDisplay* mapped = mappedDisplay();
    if (isDecibel()) return std::isfinite(mapped->scale.value()) && mapped->scale > 0.0f;
    return extent() > 1.0f;
}

std::span<const float> DisplayGrid::stepList() const {
    if (!isDecibel()) return {};
    if (!steps.value() || steps.value()->empty()) return kUsualSteps;
    return *steps.value();
}

GridRange DisplayGrid::range() const {
    const bool isVertical = orientation == Orientation::Vertical;
    const gui::Rect& inset = margins;
    GridRange result{.start = isVertical ? inset.top : inset.left,
                     .end = extent() - (isVertical ? inset.bottom : inset.right),
                     .direction = 1,
                     .levelSign = isVertical ? -1 : 1,
                     .spacing = minimumSpacing,
                     .origin = tickOrigin,
                     .wholeSteps = format.value().find(".0") != std::string::npos,
                     .steps = stepList(),
                     .extras = extras.value(),
                     .deviceScale = deviceScale()};
    // A level meter that lies down is counted from 0 dB, at its right, on.
    if (!isVertical && isDecibel()) {
        std::swap(result.start, result.end);
        result.direction = -1;
        result.levelSign = -1;
    }
    return result;
}

const std::vector<Tick>& DisplayGrid::ticks() {
    if (foundFor_ != control_.localBounds()) state_ = State::Dirty;
    if (state_ == State::Dirty) {
        foundFor_ = control_.localBounds();
        ticks_ = hasExtent() ? findTicks(*this, range()) : std::vector<Tick>{};
        state_ = State::TicksFound;
    }
    return ticks_;
}

}  // namespace vanta::interface
