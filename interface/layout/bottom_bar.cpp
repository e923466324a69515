#include "interface/layout/bottom_bar.hpp"

#include "gui/controls/value_control.hpp"
#include "interface/layout/captions.hpp"
#include "interface/layout/top_bar.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr float kHeight = 27.0f;
constexpr float kPictureHeight = 28.0f;
constexpr float kRowAbove = 23.0f;  ///< from the row's top to the lower edge of the root
constexpr float kTile = 50.0f;
constexpr float kCornerFrom = 60.0f;
constexpr float kCornerWidth = 62.0f;
constexpr float kMost = 10000.0f;
constexpr float kSpare = 4.0f;  ///< at the right end

Rect sized(float width, float height = 20.0f) {
    return Rect::ofSize(0.0f, 0.0f, width, height);
}

}  // namespace

BottomBar::BottomBar(const LayoutContext& context)
    : context_(context),
      picture_(&context.factory().addImage({}, "BottomBar.png")),
      corner_(&context.factory().addImage({}, "BottomBar.png")),
      row_(context.factory(), context.root()) {
    picture_->stretchMode = gui::Image::StretchMode::Stretched;
    picture_->tile = kTile;
    corner_->origin = gui::Point{kCornerFrom, 0.0f};
    corner_->setSize(kCornerWidth, kPictureHeight);
    corner_->anchor = gui::anchor::kRight | gui::anchor::kBottom;
    const ParentScope inBar(context.factory(), row_.bar());
    addMidi();
    addProcessing();
    addOutput();
    addGap(0.0f, 3.0f);
    resize_ = &context.frame.addSizesButton(sized(20.0f));
}

gui::Control& BottomBar::addGap(float regular, float compact) {
    gui::Control& gap = row_.addGap(regular);
    gaps_.push_back({&gap, regular, compact});
    return gap;
}

gui::Label& BottomBar::addText(float width, const std::string& text) {
    return context_.factory().addLabel(sized(width), text);
}

void BottomBar::addMidi() {
    addGap(8.0f, 6.0f);
    light_ = &context_.factory().add<gui::Light>(sized(14.0f, 14.0f), context_.factory().animator(),
                                                 &context_.frame.styles().light());
    addGap(2.0f, 0.0f);
    context_.frame.addCommandButton(Command::MidiLearn, sized(72.0f));
    context_.frame.addMidiMenuButton(sized(20.0f));
    addGap(28.0f, 8.0f);
}

void BottomBar::addProcessing() {
    ControlFactory& factory = context_.factory();
    context_.bind(context_.plugin.truePeakLimiting,
                  factory.addPictureToggle(sized(80.0f), "ButtonTruePeakLimitingOff.png",
                                           "ButtonTruePeakLimitingOn.png"));
    addGap(28.0f, 8.0f);
    addText(78.0f, "Oversampling:");
    gui::SelectButton& oversampling = factory.addSelectButton(sized(40.0f));
    oversampling.textOffset = 6.0f;
    oversampling.overlayMargin = 2.0f;
    context_.bindChoice(context_.plugin.oversampling, oversampling);
    addGap(28.0f, 8.0f);
    addText(41.0f, "Dither:");
    dither_ = std::make_unique<DitherMenu>(context_);
    flexible_ = &addGap(0.0f, 14.0f);
}

void BottomBar::addOutput() {
    ControlFactory& factory = context_.factory();
    bypassLabel_ = &factory.addLabel(sized(46.0f), "Bypass", gui::Alignment::Right);
    addGap(6.0f, 0.0f);
    context_.bind(context_.plugin.bypass, addToggle(factory, {}, "Red", "Bypass"));
    addGap(8.0f, 7.0f);
    outputLevel_ =
        &factory.add<gui::Button>(sized(52.0f), factory.animator(),
                                  &Styles::makePictureStyle(context_.frame.ui(), "OutputLightsOff.png", {}));
    outputLevel_->textAlignment = gui::Alignment::Center;
    outputLevel_->text().fontSize = 7.5f;
    outputLevel_->text().color = kValueColor;
    outputLevel_->hint = context_.plugin.outputLevel.helpText;
    outputLevel_->accessibleName = context_.plugin.outputLevel.displayName;
    outputLevel_->onClick.addHandler(this, &BottomBar::typeOutputLevel);
    gui::Control& gap = addGap(0.0f, 7.0f);
    gui::Control& group = factory.add<gui::Control>(sized(OutputToggles::kWidth, OutputToggles::kHeight));
    const ParentScope inGroup(factory, group);
    toggles_ = std::make_unique<OutputToggles>(context_, gui::Point{});
    compactOnly_ = {outputLevel_, &gap, &group};
}

/// The control that the output level is bound to does what this one is asked for.
void BottomBar::typeOutputLevel(void*) {
    if (gui::ValueControl* original = context_.frame.bindings().control(context_.plugin.outputLevel.index()))
        context_.frame.valueDisplay().beginTyping(*original);
}

void BottomBar::setForm(bool isCompact) {
    dither_->setForm(isCompact);
    for (const Gap& gap : gaps_) gap.control->setWidth(isCompact ? gap.compact : gap.regular);
    for (gui::Control* control : compactOnly_) control->visible = isCompact;
    bypassLabel_->visible = !isCompact;
}

void BottomBar::layOut(bool isCompact) {
    gui::RootControl& root = context_.root();
    const Rect all = root.content();
    const BarBand band(all.width());
    setForm(isCompact);
    picture_->setBounds(Rect::ofSize(0.0f, all.height() - kHeight, all.width(), kPictureHeight));
    corner_->setBounds(Rect::ofSize(static_cast<float>(band.whole) - kCornerWidth, all.height() - kHeight,
                                    kCornerWidth, kPictureHeight));
    corner_->visible = band.isWide();
    resize_->parent = band.isWide() ? static_cast<gui::Control*>(corner_) : &row_.bar();
    if (band.isWide()) resize_->setPosition({kCornerWidth - 22.0f, 5.0f});
    row_.setFlexible(*flexible_, 0.0f, kMost);
    row_.place(band.left, all.height() - kRowAbove, band.width, isCompact ? 0.0f : kSpare);
    dither_->place();
}

void BottomBar::follow(const ParameterChange& change) {
    const VantaPlugin& plugin = context_.plugin;
    if (change.concerns(plugin.dithering, plugin.noiseShaping)) dither_->follow();
    if (change.concerns(plugin.outputLevel, plugin.truePeakLimiting))
        outputLevel_->setCaption(shortOutputLevel(plugin));
}

}  // namespace vanta::interface
