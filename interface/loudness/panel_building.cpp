// How a meter panel is made.

#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/loudness/meter_colors.hpp"
#include "interface/loudness/vanta_meter_panel.hpp"

namespace vanta::interface {
namespace {

using gui::Alignment;

constexpr const char* kSemiBold = "Inter Medium";
constexpr gui::Color kValueColor{230, 233, 240, 255};
constexpr gui::Color kCaptionColor{230, 233, 240, 178};
constexpr gui::Color kButtonText{200, 200, 200, 255};
constexpr gui::Color kGridText{255, 255, 255, 180};
constexpr gui::Color kGridLine{255, 255, 255, 80};
constexpr gui::Color kJoiningLine{255, 255, 255, 41};
/// A level that nothing passes: a label that never warns.
constexpr float kNoLimit = 1000.0f;
/// A caption in the middle of what the caret leaves.
constexpr float kBesideCaret = -6.5f;

}  // namespace

void VantaMeterPanel::buildMeters() {
    const char* letters = isCompact() ? "MeterLabelsHor" : "MeterLabelsVer";
    for (int i = 0; i < MeterCount; ++i) {
        const auto which = static_cast<Meter>(i);
        styles_[which] = std::make_unique<LevelMeterStyle>(ui());
        styles_[which]->setImages("LevelMeterPart", which == Loudness ? "" : letters);
        if (which == Loudness) {
            loudnessMeter_ = &add<LoudnessMeterDisplay>(animator(), styles_[which].get());
            meters_[which] = loudnessMeter_;
        } else {
            meters_[which] = &add<LevelMeterDisplay>(animator(), styles_[which].get());
        }
        meters_[which]->orientation = isCompact() ? Orientation::Horizontal : Orientation::Vertical;
        meters_[which]->labelInset = 2.0f;
    }
    meters_[Output]->accessibleName = "Output level";
    meters_[Reduction]->accessibleName = "Gain reduction";
    meters_[Reduction]->interpretation = LevelInterpretation::Reduction;
    meters_[Loudness]->accessibleName = "Loudness";
    meters_[Loudness]->layout = LevelMeterDisplay::kBySources;
    meters_[Loudness]->limitAtOffset = false;

    const auto list = [this](int place) { return link_.level(place); };
    const auto placesOf = [](ChannelLevel fast, int slow) {
        return ChannelLayoutLevelMeterDelegate::Places{.first = kCountOf<ProgrammeLevel>,
                                                       .stride = kCountOf<ChannelLevel>,
                                                       .fast = static_cast<int>(fast),
                                                       .slow = slow};
    };
    delegates_.emplace_back(
        *meters_[Output], list,
        placesOf(ChannelLevel::OutputPeak, static_cast<int>(ChannelLevel::RmsOrLoudness)));
    delegates_.emplace_back(*meters_[Reduction], list, placesOf(ChannelLevel::Gain, -1));
    for (int i = 0; i < kCountOf<ProgrammeLevel>; ++i) meters_[Loudness]->setSources(i, link_.level(i));
}

void VantaMeterPanel::buildLoudness() {
    loudnessGrid_ = &add<DisplayGridControl>();
    DisplayGrid& grid = loudnessGrid_->grid();
    grid.setDisplay(meters_[Loudness]);
    grid.orientation = meters_[Loudness]->orientation.value();
    grid.labelColor = kGridText;
    grid.lineColor = kGridLine;
    if (isCompact()) {
        gridControl_ = &add<DisplayGridControl>();
        gridControl_->grid().setDisplay(meters_[Output]);
        gridControl_->grid().orientation = Orientation::Horizontal;
        gridControl_->grid().format = "%+.0f";
        gridControl_->grid().labelColor = kGridText;
        gridControl_->grid().lineColor = kGridLine;
    }
    loudnessDisplay_ = &add<LoudnessDisplay>(animator());
    loudnessDisplay_->lineColor = kJoiningLine;
    loudnessDisplay_->textColor = kRangeColor;
    loudnessDisplay_->rangeSource = link_.level(static_cast<int>(ProgrammeLevel::Integrated));
    for (std::size_t i = 0; i < channelPictures_.size(); ++i) {
        auto& picture = add<gui::Image>("LoudnessLabels");
        picture.origin = gui::Point{8.0f * static_cast<float>(i), 0.0f};
        channelPictures_[i] = &picture;
    }
}

void VantaMeterPanel::buildLabels() {
    peakBackground_ = gui::loadPicture(ui(), "PeakLabelBackground");
    for (LevelPeakLabel*& label : peakLabels_) {
        label = &add<LevelPeakLabel>(animator());
        label->setBackground(peakBackground_.get());
        label->style().fontName = kSemiBold;
        label->normalColor = kValueColor;
        label->clipColor = kClipColor;
        label->hint = "The highest level since the last reset. Click to reset it.";
    }
    peakLabels_[Output]->setSource(link_.combinedLevel(ChannelLevel::OutputPeak));
    peakLabels_[Output]->accessibleName = "Output peak";
    peakLabels_[Reduction]->setSource(link_.combinedLevel(ChannelLevel::Gain));
    peakLabels_[Reduction]->accessibleName = "Gain reduction peak";
    peakLabels_[Reduction]->interpretation = LevelInterpretation::Reduction;
    peakLabels_[Loudness]->accessibleName = "Loudness peak";
    peakLabels_[Loudness]->clipLevel = kNoLimit;
    peakLabels_[Loudness]->precisionMode = FloatPrecision::Fixed;

    integratedLabel_ = &add<LevelMeterLabel>(animator());
    integratedLabel_->accessibleName = "Loudness";
    integratedLabel_->style().fontName = kSemiBold;
    integratedLabel_->style().fontSize = isCompact() ? 10.5f : 13.5f;
    if (!isCompact()) integratedLabel_->alignment = Alignment::Right;
    integratedLabel_->normalColor = kValueColor;
    integratedLabel_->clipColor = kClipColor;
    integratedLabel_->precisionMode = FloatPrecision::Fixed;
    unitLabel_ = &add<gui::Label>();
    unitLabel_->style().fontSize = 6.75f;
    unitLabel_->textColor = gui::Color{255, 255, 255, 128};
    unitLabel_->alignment = isCompact() ? Alignment::Center : Alignment::Left;
    for (std::size_t i = 0; i < captions_.size(); ++i) {
        captions_[i] = &add<gui::Label>(i == 0 ? "OUT" : "GR");
        captions_[i]->style().fontName = kSemiBold;
        captions_[i]->style().fontSize = 7.25f;
        captions_[i]->style().letterSpacing = 0.6f;
        captions_[i]->textColor = kCaptionColor;
        captions_[i]->alignment = isCompact() ? Alignment::Right : Alignment::Center;
    }
}

gui::Button::Style& VantaMeterPanel::makeButtonStyle() {
    auto& style = *buttonStyles_.emplace_back(std::make_unique<gui::Button::Style>(ui()));
    style.textColor = kButtonText;
    style.textAlignment = Alignment::Center;
    return style;
}

/// A value with a caret behind it.
gui::Button::Style& VantaMeterPanel::selectStyle(const char* kind) {
    gui::Button::Style& style = makeButtonStyle();
    style.loadKind(kind);
    style.textAlignment = Alignment::Left;
    style.textOffset = 6.0f;
    style.overlayAlignment = Alignment::Right;
    style.overlayMargin = 4.0f;
    return style;
}

void VantaMeterPanel::buildButtons() {
    gui::Button::Style& maximum = makeButtonStyle();
    maximum.loadKind("Transparent");
    maximum.textRestAlpha = 170;
    timeScaleButton_ = &add<gui::SelectButton>(animator(), &maximum);
    timeScaleButton_->text().fontSize = 6.0f;
    timeScaleButton_->addItem("Max Momentary", "Max M:");
    timeScaleButton_->addItem("Max Short Term", "Max S:");
    timeScaleButton_->accessibleName = "Which maximum is shown";
    timeScaleButton_->onValueChanged.addHandler(this, &VantaMeterPanel::timeScaleChosen);

    gui::Button::Style& onDisplay = selectStyle("Meter");
    gui::Button::Style& inWell = selectStyle("Dark");
    scaleButton_ = &add<MenuButton>(animator(), &onDisplay);
    scaleButton_->accessibleName = "Loudness scale";
    scaleButton_->hint = parameters().loudnessMeterScale.helpText;
    targetButton_ = &add<MenuButton>(animator(), &inWell);
    targetButton_->accessibleName = "Loudness target";
    targetButton_->hint = "Loudness values above this level will be shown in red.";
    loudnessTimeButton_ = &add<gui::SelectButton>(animator(), &inWell);
    loudnessTimeButton_->accessibleName = "Loudness time scale";
    loudnessTimeButton_->hint = parameters().loudnessTimeScale.helpText;
    for (const std::string& label : parameters().loudnessTimeScale.labels())
        loudnessTimeButton_->addItem(label);
    loudnessTimeButton_->onValueChanged.addHandler(this, &VantaMeterPanel::loudnessTimeChosen);
    for (gui::Button* button :
         {static_cast<gui::Button*>(targetButton_), static_cast<gui::Button*>(loudnessTimeButton_)}) {
        button->setIcon("IconSelect");
        button->text().fontSize = 7.5f;
    }
    scaleButton_->textAlignment = Alignment::Center;
    if (isCompact()) {
        scaleButton_->textOffset = 0.0f;
        scaleButton_->text().fontSize = 6.75f;
    } else {
        scaleButton_->textOffset = kBesideCaret;
        scaleButton_->setIcon("IconSelect");
    }

    gui::Button::Style& pause = makeButtonStyle();
    pause.loadKind("Hover", "IconPauseOff", "IconPauseOn");
    pause.backgroundStyle = gui::Button::BackgroundStyle::Centred;
    pause.overlayRestAlpha = 160;
    pauseButton_ = &add<gui::ToggleButton>(animator(), &pause);
    // It is lit while nothing is measured.
    pauseButton_->onValue = 0;
    pauseButton_->accessibleName = "Loudness recording";
    pauseButton_->hint = parameters().loudnessRecording.helpText;
    pauseButton_->onValueChanged.addHandler(this, &VantaMeterPanel::pauseChosen);
    gui::Button::Style& reset = makeButtonStyle();
    reset.loadKind("Hover");
    reset.backgroundStyle = gui::Button::BackgroundStyle::Centred;
    reset.overlayRestAlpha = 160;
    resetButton_ = &add<gui::Button>(animator(), &reset);
    resetButton_->setIcon("IconReset");
    resetButton_->accessibleName = "Loudness reset";
    resetButton_->hint =
        "The Loudness Reset button resets all loudness measurements, including the maximum peak readings on "
        "the regular level meters.";
    resetButton_->onClick.addHandler(this, &VantaMeterPanel::resetClicked);
}

void VantaMeterPanel::addItems(gui::Menu& menu, const IndexedParameter& parameter) {
    for (std::size_t i = 0; i < parameter.labels().size(); ++i) {
        addItem(menu, std::make_unique<LoudnessMenuItem>(link_, parameter, static_cast<int>(i)), parameter);
    }
}

void VantaMeterPanel::addItem(gui::Menu& menu, std::unique_ptr<LoudnessMenuItem> item,
                              const AbstractPluginParameter& parameter) {
    items_.push_back({item.get(), &parameter});
    menu.addItem(std::move(item));
}

void VantaMeterPanel::addTargetItems(gui::Menu& menu, gui::Control& typedOver) {
    const AbstractPluginParameter& parameter = parameters().loudnessMeterTarget;
    for (const TargetPreset& preset : targetPresets()) {
        const std::string text = parameter.text(preset.target) + " LUFS (" + preset.name + ")";
        addItem(menu,
                std::make_unique<LoudnessMenuItem>(link_, parameter, static_cast<int>(preset.target), text),
                parameter);
    }
    menu.addSeparator();
    addItem(menu, std::make_unique<LoudnessMenuItem>(link_, parameter, typedOver), parameter);
}

/// The compact form has room for one menu, which then holds all.
void VantaMeterPanel::buildMenus() {
    gui::PopupMenu& menu = scaleButton_->menu();
    addItems(menu, parameters().loudnessMeterScale);
    menu.addSeparator();
    addItems(menu, parameters().loudnessMeterOrigin);
    menu.onOpen.addHandler(this, &VantaMeterPanel::refreshMenus);
    if (!isCompact()) {
        addTargetItems(targetButton_->menu(), *targetButton_);
        targetButton_->menu().onOpen.addHandler(this, &VantaMeterPanel::refreshMenus);
        return;
    }
    menu.addSeparator();
    auto target = std::make_unique<gui::MenuItem>("Target");
    addTargetItems(*target, *scaleButton_);
    menu.addItem(std::move(target));
    auto time = std::make_unique<gui::MenuItem>("Time Scale");
    addItems(*time, parameters().loudnessTimeScale);
    menu.addItem(std::move(time));
}

}  // namespace vanta::interface
