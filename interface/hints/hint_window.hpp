#pragma once

#include <memory>
#include <string>

#include "gui/animation/animated_control.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/text.hpp"

namespace vanta::interface {

/// The panel in which help hints and messages appear. It keeps away from what the pointer is over. A hint
/// lets the pointer through; what is sticky takes clicks, and says by `onClick` that it was clicked.
class HintWindow : public gui::AnimatedControl {
public:
    static constexpr int kStickyAlpha = 240;

    explicit HintWindow(gui::UserInterface& interface);

    /// Comes to the front of its parent.
    void show(const std::string& text, bool sticky);
    void hide() { visible = false; }
    const std::string& text() const { return text_->text; }
    bool isSticky() const { return sticky_; }

    int alphaAt(gui::Point point) override;
    void refreshTree() override;
    void paint(gui::Canvas& canvas) override;

private:
    void place();
    gui::Rect placeFor(float width, float height) const;

    std::unique_ptr<gui::Bitmap> background_;
    std::unique_ptr<gui::Bitmap> cross_;
    std::unique_ptr<gui::Text> text_;
    bool sticky_ = false;
};

}  // namespace vanta::interface
