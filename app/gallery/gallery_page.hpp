#pragma once

namespace vanta::gui {
class UserInterface;
}

namespace vanta::gallery {

/// Of the page, in logical units.
inline constexpr float kPageWidth = 800.0f;
inline constexpr float kPageHeight = 600.0f;

/// Fills an empty interface of the page's size with all controls. The interface owns them. A picture of the
/// page is taken without animations, as no time passes in it.
void buildGallery(gui::UserInterface& ui, bool animated);

}  // namespace vanta::gallery
