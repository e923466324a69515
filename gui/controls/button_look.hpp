#pragma once

#include "foundation/property.hpp"
#include "gui/controls/alignment.hpp"

namespace vanta::gui {

/// How a button looks and answers, for the button itself and for the style that many of them share. Offsets
/// and margins are logical units, opacities 0 to 255.
class ButtonLook {
public:
    enum class BackgroundStyle { Stretched, Centred };
    enum class ButtonStyle {
        Moving,    ///< the caption moves while the button is down
        StaysDown  ///< even when the pointer leaves it
    };
    /// A placed overlay stands where the overlay properties say; a stretched one covers the button.
    enum class OverlayStyle { Placed, Stretched };

    void copyFrom(const ButtonLook& other);

protected:
    explicit ButtonLook(PropertyOwner* owner) : owner_(owner) {}
    ~ButtonLook() = default;

private:
    PropertyOwner* owner_;

public:
    Property<BackgroundStyle> backgroundStyle{owner_, BackgroundStyle::Stretched};
    Property<ButtonStyle> buttonStyle{owner_, ButtonStyle::Moving};
    /// Every point of the bounds is hit; else those where the normal background is opaque.
    Property<bool> solid{owner_, true};
    Property<bool> toggle{owner_, false};
    Property<Alignment> textAlignment{owner_, Alignment::Left};
    /// From the edge that the text leans on, or to the right of its middle.
    Property<float> textOffset{owner_, 0.0f};
    Property<int> textRestAlpha{owner_, 255};
    /// The opacity of the text whatever the button's state; -1 for none.
    Property<int> textOverrideAlpha{owner_, -1};
    Property<OverlayStyle> overlayStyle{owner_, OverlayStyle::Placed};
    Property<Alignment> overlayAlignment{owner_, Alignment::Center};
    Property<float> overlayMargin{owner_, 6.0f};
    Property<int> overlayRestAlpha{owner_, 255};
    Property<float> overlayOffset{owner_, 0.0f};
    Property<float> overlayVerticalOffset{owner_, 0.0f};
    /// Between one text and the next.
    Property<float> lineSpacing{owner_, 0.0f};
    /// A toggle that is held down for more than half a second is on only as long.
    Property<bool> momentary{owner_, false};
    /// The part of each side that is not hit.
    Property<float> hitInset{owner_, 0.0f};
};

}  // namespace vanta::gui
