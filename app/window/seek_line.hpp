#pragma once

#include <functional>

#include "gui/tree/control.hpp"

namespace vanta {

/// How far a file has played. Pressing and dragging chooses another place in it.
class SeekLine final : public gui::Control {
public:
    using Control::Control;

    /// Told of the place that is chosen, 0 to 1.
    std::function<void(double place)> onSeek;

    /// 0 to 1.
    void show(double place);

    int alphaAt(gui::Point) override { return 255; }
    void mouseDown(int button, gui::Point point, int modifiers) override;
    void mouseMove(gui::Point point, int modifiers) override;
    void mouseUp(int button, gui::Point point, int modifiers) override;
    void paint(gui::Canvas& canvas) override;

private:
    void seek(gui::Point point);
    /// In whole pixels, so that it is painted anew only when that can be seen.
    float playedWidth(double place);

    double place_ = 0.0;
    bool held_ = false;
};

}  // namespace vanta
