#pragma once

#include <vector>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

/// An interface without a window: it lives in memory and is drawn into a bitmap. Its timers stand still but
/// for the frames that it is told, its dialogs and menus are turned away from at once.
class OffscreenInterface : public UserInterface {
public:
    /// `width` and `height` in logical units.
    OffscreenInterface(float width, float height,
                       SteadyIntervalTimer::Clock clock = &SteadyIntervalTimer::monotonicMilliseconds);
    ~OffscreenInterface() override { shutDown(); }

    /// Takes over another scale, as a window does that has moved to another monitor.
    void setScale(float scale);
    /// A frame: what is locked to frames ticks once, and deferred calls are made.
    void frame();
    /// All of the interface as it looks now.
    std::unique_ptr<Bitmap> picture();

    std::unique_ptr<Bitmap> createBitmap() override;
    std::unique_ptr<OpenSaveDialog> createOpenDialog() override;
    std::unique_ptr<OpenSaveDialog> createSaveDialog() override;
    std::unique_ptr<SelectFolderDialog> createSelectFolderDialog() override;
    std::unique_ptr<PopupMenu> createPopupMenu() override;
    std::unique_ptr<Text> createText() override;
    std::unique_ptr<TextEditor> createTextEditor() override;
    std::unique_ptr<Timer> createTimer() override;
    RootControl& rootControl() override { return root_; }
    bool showMessage(const std::string&, int flags) override { return flags & kWithCancel; }

private:
    class StandingTimer;

    RootControl& root_;
    std::vector<Timer*> running_;
};

}  // namespace vanta::gui
