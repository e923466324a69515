#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/interval_timer.hpp"
#include "gui/controls/button_look.hpp"
#include "gui/controls/rollover_value_control.hpp"
#include "gui/graphics/text.hpp"

namespace vanta::gui {

/// Is clicked, by the pointer, Return or the space bar. It shows a background, an overlay for off and on, an
/// icon of its own and up to 16 texts in a row.
class Button : public RolloverValueControl, public ButtonLook {
public:
    /// What buttons of one kind share. Their interface owns it.
    class Style : public Component, public ButtonLook {
    public:
        explicit Style(UserInterface& interface);

        /// What has no name, or cannot be read, is empty.
        void loadImages(const std::string& normal, const std::string& active, const std::string& down,
                        const std::string& overlayOff, const std::string& overlayOn);
        /// The backgrounds by the names that they have for all kinds, "ButtonBar" and the state, with
        /// overlays.
        void loadKind(const std::string& kind, const std::string& overlayOff = {},
                      const std::string& overlayOn = {});

        /// Of the first background that is not empty, in logical units.
        Property<float> backgroundHeight{nullptr, 0.0f};
        Property<float> backgroundWidth{nullptr, 0.0f};
        Property<Color> textColor{nullptr, Color{0, 0, 0, 255}};
        std::unique_ptr<Bitmap> normal;
        std::unique_ptr<Bitmap> active;
        std::unique_ptr<Bitmap> down;
        std::unique_ptr<Bitmap> overlayOff;
        std::unique_ptr<Bitmap> overlayOn;
    };
    enum class State { Normal, Hover, Pressed };

    static constexpr int kMostTexts = 16;
    /// Of a press on a momentary toggle, in milliseconds, until its release ends it.
    static constexpr int kHoldMs = 500;

    /// Takes over the style's look, which the button may change for itself. Without a style it makes its own.
    explicit Button(UserInterface& interface, Animator* animatedBy = nullptr, Style* sharedStyle = nullptr);

    Property<bool> on{this, false};
    /// Takes over the pointer from a press on the button.
    Property<Control*> dragProxy{this, nullptr};
    LimitedProperty<int> lineCount{this, 1, kMostTexts, 1};
    /// After each change of `on`, by whomever.
    NotifyEvent onToggled;

    Style& style() const { return *style_; }
    State state() const { return state_; }
    /// From 0 to `lineCount` - 1.
    Text& text(int index = 0) { return *texts_[static_cast<std::size_t>(index)]; }
    void setCaption(const std::string& caption) { text().text = caption; }
    /// Over the overlay, where that stands.
    void setIcon(const std::string& imageName);

    int alphaAt(Point point) override;
    void mouseDown(int button, Point point, int modifiers) override;
    void mouseMove(Point point, int modifiers) override;
    void mouseUp(int button, Point point, int modifiers) override;
    void mouseEnter() override;
    void mouseLeave() override;
    bool keyDown(const KeyPress& key) override;
    void linkRemoved(Component* other) override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(Canvas& canvas) override;

protected:
    /// `on` has changed, perhaps within a gesture.
    virtual void toggled() { onToggled.raise(this); }
    /// What a click does to `on`.
    virtual bool toggledState() const { return !on; }
    const Bitmap& icon() const { return *icon_; }

private:
    void setState(State state);
    void setTextCount(int count);
    void textChanged(void*) { markDirty(); }
    void handOver(int button, Point point, int modifiers);
    void paintPlaced(Canvas& canvas, const Bitmap& picture, int opacity) const;
    void paintOverlay(Canvas& canvas);
    void paintTexts(Canvas& canvas);
    int faded(int restOpacity);

    Style* style_;
    State state_ = State::Normal;
    bool holding_ = false;  ///< the press has switched a momentary toggle on
    std::unique_ptr<IntervalTimer> holdClock_;
    std::unique_ptr<Bitmap> icon_;
    std::vector<std::unique_ptr<Text>> texts_;
};

}  // namespace vanta::gui
