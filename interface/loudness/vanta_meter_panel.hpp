#pragma once

#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "gui/animation/animated_control.hpp"
#include "gui/controls/image.hpp"
#include "gui/controls/select_button.hpp"
#include "gui/controls/toggle_button.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/loudness/loudness_display.hpp"
#include "interface/loudness/loudness_menu_item.hpp"
#include "interface/loudness/loudness_meter_display.hpp"
#include "interface/loudness/main_scale.hpp"
#include "interface/loudness/meter_link.hpp"
#include "interface/meters/display_grid_control.hpp"
#include "interface/meters/level_meter_delegate.hpp"
#include "interface/meters/level_meter_label.hpp"

namespace vanta::interface {

/// The strip with the output meter, the meter of the gain reduction and, on the scale Loudness, the loudness
/// meter with its settings. Upright at the right of its parent, or lying across it in the compact form.
///
/// Its owner tells it of each changed parameter and layout, and hands it the display that shares its scale:
///
///     auto& panel = ui.make<VantaMeterPanel>(root, link, &animator, VantaMeterPanel::Form::Regular);
///     panel.setMainScale(&display, {&strip.grid(), &display.grid});
class VantaMeterPanel final : public gui::AnimatedControl {
public:
    enum class Form { Regular, Compact };
    enum Meter { Output, Reduction, Loudness, MeterCount };

    /// What the loudness meter adds to the width, logical units.
    static constexpr float kLoudnessWidth = 198.0f;
    /// In place of a parameter's index.
    static constexpr int kAllParameters = -1;

    /// Becomes a child of `owner`, in its place. Without an animator nothing moves but by `animate`.
    VantaMeterPanel(gui::UserInterface& interface, gui::Control& owner, MeterLink& meterLink,
                    gui::Animator* animatedBy, Form shownForm);
    ~VantaMeterPanel() override;

    /// The display that has the scale of the meters, and its grids: the loudness meter is joined to the
    /// first. Null and none before they go.
    void setMainScale(LevelDisplay* display, std::vector<DisplayGrid*> grids);
    /// By its index; all are taken for changed at kAllParameters.
    void parameterChanged(int index);
    void channelLayoutChanged();

    /// Keeps the loudness meter and what belongs to it off the panel's lower end, for what lies over that.
    void keepOffBottom(float height);
    /// Of the panel's parent; what lies there covers bars of the output meter, but not their letters.
    void keepReadableBeside(const gui::Rect& covered);

    /// What the panel takes of its owner: at its right, or all of it.
    float fittingWidth() const;

    LevelMeterDisplay& meter(Meter meter) { return *meters_[meter]; }
    LevelPeakLabel& peakLabel(Meter meter) { return *peakLabels_[meter]; }
    LevelMeterLabel& integratedLabel() { return *integratedLabel_; }
    LoudnessDisplay& loudnessDisplay() { return *loudnessDisplay_; }
    DisplayGrid& loudnessGrid() { return loudnessGrid_->grid(); }
    /// Of the compact form, else null.
    DisplayGridControl* gridControl() { return gridControl_; }
    gui::Label& unitLabel() { return *unitLabel_; }
    MenuButton& scaleButton() { return *scaleButton_; }
    MenuButton& targetButton() { return *targetButton_; }
    gui::SelectButton& loudnessTimeButton() { return *loudnessTimeButton_; }
    gui::SelectButton& timeScaleButton() { return *timeScaleButton_; }
    gui::ToggleButton& pauseButton() { return *pauseButton_; }
    gui::Button& resetButton() { return *resetButton_; }

    void resized() override;
    void refreshTree() override;
    void paint(gui::Canvas& canvas) override;
    /// Between its parts the pointer reaches what lies behind.
    int alphaAt(gui::Point point) override { return childAt(point) ? 255 : 0; }

private:
    const VantaParameters& parameters() const { return link_.parameters(); }
    MeterScale meterScale() const;
    bool isLoudness() const { return meterScale() == MeterScale::Loudness; }
    bool isCompact() const { return form_ == Form::Compact; }
    /// Of a meter that shows all channels of the layout.
    float meterWidth() const;

    // Building.
    void buildMeters();
    void buildLabels();
    void buildLoudness();
    void buildButtons();
    void buildMenus();
    gui::Button::Style& makeButtonStyle();
    gui::Button::Style& selectStyle(const char* kind);
    void addItems(gui::Menu& menu, const IndexedParameter& parameter);
    void addTargetItems(gui::Menu& menu, gui::Control& typedOver);
    void addItem(gui::Menu& menu, std::unique_ptr<LoudnessMenuItem> item,
                 const AbstractPluginParameter& parameter);
    template <typename Kind, typename... Arguments>
    Kind& add(Arguments&&... arguments) {
        Kind& made = ui().make<Kind>(std::forward<Arguments>(arguments)...);
        made.parent = this;
        return made;
    }

    // Places.
    gui::Rect place() const;
    void takePlace(bool animated);
    void layOut();
    void layOutRegular();
    void keepOutputReadable();
    void layOutRegularLoudness(float left);
    void layOutCompact();
    void layOutCompactLoudness();
    void placeLetters();
    void showControls();

    // Following the parameters.
    void applyScale();
    void applyLoudnessScale(const LoudnessScale& loudness);
    void applyColors(const LoudnessScale& loudness);
    void applySources();
    void applyOutputColors();
    void applyBypass(bool animated);
    void refreshMenus(void* = nullptr);

    // From the user.
    void loudnessTimeChosen(void*);
    void timeScaleChosen(void*);
    void pauseChosen(void*);
    void resetClicked(void*);
    void chooseFrom(const gui::ValueControl& control, const AbstractPluginParameter& parameter);

    MeterLink& link_;
    Form form_;
    float scaledHeight_ = 0.0f;  ///< for which the scale is
    float offBottom_ = 0.0f;     ///< of the loudness meter
    gui::Rect covered_;
    bool showing_ = false;  ///< the controls follow the parameters
    gui::SelectButton* timeScaleButton_ = nullptr;
    MenuButton* scaleButton_ = nullptr;
    MenuButton* targetButton_ = nullptr;
    gui::SelectButton* loudnessTimeButton_ = nullptr;
    gui::ToggleButton* pauseButton_ = nullptr;
    gui::Button* resetButton_ = nullptr;
    DisplayGridControl* gridControl_ = nullptr;
    std::array<LevelMeterDisplay*, MeterCount> meters_{};
    std::array<std::unique_ptr<LevelMeterStyle>, MeterCount> styles_;
    std::vector<std::unique_ptr<gui::Button::Style>> buttonStyles_;
    LoudnessMeterDisplay* loudnessMeter_ = nullptr;
    DisplayGridControl* loudnessGrid_ = nullptr;
    LoudnessDisplay* loudnessDisplay_ = nullptr;
    LevelMeterLabel* integratedLabel_ = nullptr;
    std::array<gui::Image*, 3> channelPictures_{};
    gui::Label* unitLabel_ = nullptr;
    std::array<LevelPeakLabel*, MeterCount> peakLabels_{};
    std::array<gui::Label*, 2> captions_{};
    std::unique_ptr<gui::Bitmap> peakBackground_;
    std::vector<ChannelLayoutLevelMeterDelegate> delegates_;
    LevelDisplay* mainDisplay_ = nullptr;
    std::vector<DisplayGrid*> mainGrids_;

    struct BoundItem {
        LoudnessMenuItem* item;
        const AbstractPluginParameter* parameter;
    };
    std::vector<BoundItem> items_;
};

}  // namespace vanta::interface
