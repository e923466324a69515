#pragma once

#include <memory>
#include <vector>

#include "gui/controls/button.hpp"
#include "gui/tree/timer.hpp"

namespace vanta::gui {

/// Opens a panel, which is any control. It is `on` while the panel is open.
class PopupButton : public Button {
public:
    enum class PopupBehavior {
        Click,  ///< a click opens the panel, and the next one closes it
        Hover   ///< the panel opens under a pointer that rests, and closes when the pointer has left both
    };
    /// A part of the button that stands for something in the panel.
    struct HotSpot {
        int index;
        Rect area;
    };

    static constexpr int kHoverMs = 150;

    explicit PopupButton(UserInterface& interface, Animator* animatedBy = nullptr,
                         Style* sharedStyle = nullptr);
    ~PopupButton() override;

    /// Hidden when it is handed over.
    Property<Control*> panel{this, nullptr};
    /// The part of the height, from the top, that is not hit.
    Property<int> popupHeight{this, 0};
    Property<PopupBehavior> popupBehavior{this, PopupBehavior::Click};
    std::vector<HotSpot> hotSpots;

    /// Of the topmost hot spot there, or -1.
    int hotSpotAt(Point point) const;
    bool isOpen() const { return on; }

    int alphaAt(Point point) override;
    void click() override;
    void mouseEnter() override;
    void mouseLeave() override;
    void linkRemoved(Component* other) override;
    void propertyChanged(AbstractProperty& property) override;

protected:
    void toggled() override;

private:
    void attachPanel();
    void showPanel(bool shown);
    void panelLeft(void*) { startWaiting(); }
    void startWaiting();
    void waited(void*);

    Control* attached_ = nullptr;
    bool hovered_ = false;
    std::unique_ptr<Timer> timer_;
};

}  // namespace vanta::gui
