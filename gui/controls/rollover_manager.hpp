#pragma once

#include <memory>

#include "gui/animation/animated_control.hpp"
#include "gui/graphics/bitmap.hpp"

namespace vanta::gui {

/// Fades a control between its normal and its active look.
class RolloverManager {
public:
    static constexpr int kOnMs = 100;
    static constexpr int kOffMs = 300;

    /// What is to be drawn of two looks.
    struct Look {
        const Bitmap& picture;
        int alpha;
    };

    explicit RolloverManager(AnimatedControl& control) : control_(control) {}

    void setActive(bool active);
    bool isActive() const { return active_; }
    /// 0 for the normal look to 255 for the active one.
    int mix() const { return mix_; }
    /// The opacity of a look that rests at `restAlpha` (0 to 255).
    int alpha() const { return (255 - restAlpha) * mix_ / 255 + restAlpha; }

    /// The mix of two pictures, or of a part of them; it holds until the next call. A look without a normal
    /// picture fades in.
    Look crossfade(const Bitmap& normal, const Bitmap& active, const Rect* part = nullptr);

    int restAlpha = 255;

private:
    AnimatedControl& control_;
    bool active_ = false;
    int mix_ = 0;
    std::unique_ptr<Bitmap> scratch_;  ///< made when something is mixed for the first time
};

}  // namespace vanta::gui
