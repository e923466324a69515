#include "interface/layout/advanced_panel.hpp"

#include <algorithm>
#include <cmath>

#include "gui/animation/move_animation.hpp"
#include "gui/controls/shape.hpp"
#include "interface/hints/hint_texts.hpp"
#include "interface/layout/captions.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

/// Of the panel, in a root of 480.
constexpr float kTop = 331.0f;
constexpr int kBackdropAlpha = 50;
/// Below the captions, and where it begins to end: the lines of a restless curve are brighter than its fill.
constexpr gui::Color kShade{8, 9, 12, 72};
constexpr gui::Color kNoShade{8, 9, 12, 0};
constexpr float kShadeEnd = 0.45f;
constexpr float kHiddenPart = 23.0f;  ///< that stays in sight
constexpr float kShownInset = 24.0f;  ///< that lies beyond the left margin
constexpr float kMost = 29.0f;
constexpr int kNeverHit = 255;

/// From the root of 480 to the panel.
Rect inPanel(float x, float y, float width, float height) {
    return Rect::ofSize(x, y - kTop, width, height);
}

}  // namespace

float leftMargin(float rootWidth) {
    const float whole = std::trunc(rootWidth);
    return std::clamp(std::trunc(whole * 0.025f - 16.0f), 0.0f, kMost);
}

AdvancedPanel::AdvancedPanel(const LayoutContext& context)
    : context_(context),
      panel_(&makePanel()),
      inside_(&makeInside()),
      limiting_(makeLimiting()),
      channelLink_(makeChannelLink()) {
    const ParentScope inside(context.factory(), *inside_);
    addCaption(context.factory(), {143.0f, 357.0f - kTop}, "LOOKAHEAD");
    addCaption(context.factory(), {235.0f, 357.0f - kTop}, "ATTACK");
    addCaption(context.factory(), {314.0f, 357.0f - kTop}, "RELEASE");
    addCaption(context.factory(), {437.0f, 357.0f - kTop}, "CHANNEL LINK");
    styleCaption_ = &addCaption(context.factory(), {0.0f, 377.0f - kTop}, "STYLE", gui::Alignment::Left);
    addButtons();
    wasShown_ = isShown();
}

gui::AnimatedControl& AdvancedPanel::makePanel() const {
    ControlFactory& factory = context_.factory();
    auto& panel =
        factory.add<gui::AnimatedControl>(Rect::ofSize(0.0f, kTop, kWidth, kHeight), factory.animator());
    panel.anchor = gui::anchor::kLeft | gui::anchor::kBottom;
    const ParentScope inPanelScope(factory, panel);
    gui::Image& backdrop = factory.addImage({-30.0f, 0.0f}, "AdvancedBackground.png");
    backdrop.alpha = kBackdropAlpha;
    // Within the rim.
    auto& shade = factory.add<gui::Shape>(Rect{0.0f, 1.0f, kWidth - kHiddenPart - 1.0f, kHeight});
    shade.gradient = gui::Gradient(kShade, kShade, kShadeEnd, kNoShade);
    shade.direction = gui::Shape::Direction::Down;
    shade.hitThreshold = kNeverHit;
    return panel;
}

gui::Control& AdvancedPanel::makeInside() const {
    const ParentScope onPanel(context_.factory(), *panel_);
    auto& inside = context_.factory().add<gui::Control>(Rect::ofSize(0.0f, 0.0f, kWidth, kHeight));
    return inside;
}

ChannelLinkGroup AdvancedPanel::makeChannelLink() const {
    const ParentScope inside(context_.factory(), *inside_);
    return ChannelLinkGroup(context_, {376.0f, 359.0f - kTop});
}

LimitingControls AdvancedPanel::makeLimiting() const {
    const ParentScope inside(context_.factory(), *inside_);
    return LimitingControls(context_, {.style = inPanel(9.0f, 382.0f, 84.0f, 20.0f),
                                       .lookahead = {114.0f, 360.0f - kTop},
                                       .attack = {206.0f, 360.0f - kTop},
                                       .release = {285.0f, 360.0f - kTop}});
}

/// Both do the same, so that a click on either brings back what the other has done.
void AdvancedPanel::addButtons() {
    ControlFactory& factory = context_.factory();
    heading_ = &factory.addButton(inPanel(0.0f, 343.0f, 80.0f, 20.0f), ButtonStyle::Transparent, "ADVANCED");
    heading_->textAlignment = gui::Alignment::Left;
    heading_->textOffset = 8.0f;
    heading_->text().fontName = std::string(kSemiBold);
    heading_->text().fontSize = 7.25f;
    heading_->text().letterSpacing = kCaptionSpacing;
    heading_->text().color = gui::Color{213, 222, 255, 255};
    heading_->onClick.addHandler(this, &AdvancedPanel::headingClicked);
    const ParentScope onPanel(factory, *panel_);
    tab_ =
        &factory.addButton<gui::ToggleButton>(inPanel(500.0f, 336.0f, 24.0f, 20.0f), ButtonStyle::Advanced);
    context_.bind(context_.plugin.showAdvanced, *tab_);
    const std::string hint = hintText("Advanced Panel");
    tab_->hint = hint;
    heading_->hint = hint;
    tab_->accessibleName = std::string("Advanced Panel");
    heading_->accessibleName = std::string("Advanced Panel");
}

void AdvancedPanel::headingClicked(void*) {
    tab_->changeTo(tab_->value == 0 ? 1 : 0);
}

bool AdvancedPanel::isShown() const {
    return context_.plugin.showAdvanced.mapped();
}

float AdvancedPanel::target() const {
    const float margin = leftMargin(context_.root().localBounds().width());
    return isShown() ? margin - kShownInset : kHiddenPart - kWidth;
}

std::vector<gui::Rect> AdvancedPanel::covered() const {
    if (!isShown()) return {};
    const gui::Point origin{target(), panel_->bounds.value().top};
    return {Rect::ofSize(0.0f, 0.0f, kWidth - kHiddenPart, kHeight).translated(origin),
            tab_->bounds.value().translated(origin)};
}

void AdvancedPanel::place() {
    if (gui::Animator* animator = context_.factory().animator()) animator->cancel(&panel_->bounds);
    const float margin = leftMargin(context_.root().localBounds().width());
    // Whatever the margin, both stand at the window's edge.
    heading_->setLeft(28.0f - margin);
    const float style = 32.0f - margin;
    limiting_.style().setLeft(style);
    styleCaption_->setLeft(style + 4.0f);
    panel_->setLeft(target());
    inside_->visible = isShown();
}

/// Starts where a motion that is under way has come to.
void AdvancedPanel::move() {
    if (!panel_->animator()) return place();
    inside_->visible = true;
    auto* const motion = new gui::MoveAnimation(*panel_, {target(), panel_->bounds.value().top});
    motion->duration = kMoveMs;
    motion->motion = gui::AnimationMotion::EaseOut;
    motion->onFinished.addHandler(this, &AdvancedPanel::arrived);
}

/// What is out of sight is no place for the keyboard.
void AdvancedPanel::arrived(void*) {
    inside_->visible = isShown();
}

void AdvancedPanel::follow(const ParameterChange& change) {
    limiting_.follow(change);
    if (!change.concerns(context_.plugin.showAdvanced) || isShown() == wasShown_) return;
    wasShown_ = isShown();
    move();
}

}  // namespace vanta::interface
