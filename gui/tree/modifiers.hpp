#pragma once

namespace vanta::gui {

/// What is held while the pointer or a key acts; bits that add up.
namespace modifier {
inline constexpr int kShift = 0x001;
inline constexpr int kAlt = 0x002;
inline constexpr int kCtrl = 0x004;
inline constexpr int kLeftButton = 0x008;
inline constexpr int kRightButton = 0x010;
inline constexpr int kMiddleButton = 0x020;
/// The second press of a double click.
inline constexpr int kDoubleClick = 0x040;
/// A left press that counts as a right press.
inline constexpr int kSecondaryClick = 0x080;
inline constexpr int kMeta = 0x100;
}  // namespace modifier

/// Buttons of the pointer, as presses number them. The middle one gives no press.
inline constexpr int kLeftPress = 0;
inline constexpr int kRightPress = 1;

}  // namespace vanta::gui
