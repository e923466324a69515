#pragma once

#include <memory>
#include <string>

#include "gui/animation/animated_control.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/tree/timer.hpp"

namespace vanta::gui {

/// A lamp that is on or off, and fades between the two.
class Light : public AnimatedControl {
public:
    /// What lamps of one kind share. Their interface owns it.
    class Style : public Component {
    public:
        explicit Style(UserInterface& interface);
        /// What has no name, or cannot be read, is empty.
        void setImages(const std::string& offImage, const std::string& onImage);

        std::unique_ptr<Bitmap> off;
        std::unique_ptr<Bitmap> on;
    };

    static constexpr int kFlashMs = 100;
    static constexpr int kOnMs = 50;
    static constexpr int kOffMs = 300;

    explicit Light(UserInterface& interface, Animator* animatedBy = nullptr, Style* sharedStyle = nullptr);

    Property<bool> on{this, false};
    /// On for a moment; each call begins it anew.
    void flash();
    /// From 0, off, to 255.
    int brightness() const { return mix_; }

    int alphaAt(Point point) override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(Canvas& canvas) override;

private:
    void flashOver(void*);

    Style* style_;
    int mix_ = 0;
    std::unique_ptr<Timer> flashTimer_;  ///< made on first use
};

}  // namespace vanta::gui
