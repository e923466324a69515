#include "interface/layout/top_bar.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr float kTop = 9.0f;
constexpr float kHeight = 48.0f;  ///< the last 8 units are its shadow
constexpr float kSolidHeight = 40.0f;
constexpr int kNeverHit = 255;
constexpr float kLogoWidth = 300.0f;
constexpr float kLogoTile = 100.0f;
constexpr float kLeastPresets = 166.0f;
constexpr float kLeastPresetsInCompact = 120.0f;
constexpr float kMostPresets = 400.0f;
/// Margins, caret and the mark of a preset that has been changed.
constexpr float kBesideName = 36.0f;

Rect sized(float width) {
    return Rect::ofSize(0.0f, 0.0f, width, 20.0f);
}

}  // namespace

BarBand::BarBand(float rootWidth)
    : whole(static_cast<int>(rootWidth)),
      left(static_cast<float>(std::max((whole - kBand) / 2, 0))),
      width(static_cast<float>(std::min(whole, kBand) - 2)) {}

TopBar::TopBar(const LayoutContext& context)
    : context_(context),
      picture_(&context.factory().addImage({}, "LogoBar.png")),
      ground_(&context.factory().add<gui::Control>(gui::Rect{})),
      row_(context.factory(), context.root()) {
    // The shadow lies over buttons of the meters, which are to be clicked through it.
    picture_->hitThreshold = kNeverHit;
    picture_->stretchMode = gui::Image::StretchMode::Stretched;
    picture_->tile = kLogoTile;
    QuillmarkPluginInterface& frame = context.frame;
    const ParentScope inBar(context.factory(), row_.bar());
    frame.addCommandButton(Command::Undo, sized(24.0f));
    frame.addCommandButton(Command::Redo, sized(24.0f));
    row_.addGap(16.0f);
    frame.addCommandButton(Command::Compare, sized(24.0f));
    frame.addCommandButton(Command::Copy, sized(34.0f));
    row_.addGap(20.0f);
    frame.addCommandButton(Command::PreviousPreset, sized(20.0f));
    HotspotButton& presets = frame.addPresetsButton(sized(kLeastPresets));
    presets.textOffset = kBesideCaret;
    for (int part = 0; part < presets.lineCount; ++part) presets.text(part).color = kValueColor;
    presets_ = &presets;
    frame.addCommandButton(Command::NextPreset, sized(20.0f));
    row_.addGap(20.0f);
    context.bind(context.plugin.lockOutput,
                 context.factory().addPictureToggle(sized(66.0f), "OutputLockOff.png", "OutputLockOn.png"));
    row_.addGap(2.0f);
    frame.addHelpButton(sized(38.0f));
    lastGap_ = &row_.addGap(2.0f);
    fullScreen_ = &frame.addCommandButton(Command::FullScreen, sized(22.0f));
}

void TopBar::layOut(bool isCompact) {
    gui::RootControl& root = context_.root();
    const BarBand band(root.localBounds().width());
    picture_->setBounds({0.0f, 0.0f, root.localBounds().width(), kHeight});
    ground_->setBounds({0.0f, 0.0f, root.localBounds().width(), kSolidHeight});
    lastGap_->visible = !band.isWide();
    fullScreen_->parent = band.isWide() ? static_cast<gui::Control*>(&root) : &row_.bar();
    if (band.isWide()) {
        fullScreen_->anchor = gui::anchor::kTop | gui::anchor::kRight;
        fullScreen_->setPosition({static_cast<float>(band.whole) - 24.0f, kTop});
    }
    row_.setFlexible(*presets_, isCompact ? kLeastPresetsInCompact : kLeastPresets, kMostPresets);
    // What the controls of Compact need leaves less to the logo.
    const float logo = isCompact ? std::max(band.width - row_.leastWidth(), 0.0f) : kLogoWidth;
    row_.place(band.left + logo, kTop, band.width - logo);
    presets_->text().maxWidth = presets_->bounds.value().width() - kBesideName;
}

}  // namespace vanta::interface
