#pragma once

namespace vanta::interface::event {

// The keys of what travels to an interface through its relay. The value of a pair stands behind each.

// From the model.
inline constexpr int kParameterChanged = -1025;      ///< index, or kAllParameters
inline constexpr int kPresetChanged = -1026;         ///< 0
inline constexpr int kControllerMoved = -1027;       ///< number of the controller, or -1
inline constexpr int kExtraStateReplaced = -1028;    ///< 0
inline constexpr int kControllerMapChanged = -1029;  ///< 0
inline constexpr int kLayoutChanged = -1030;         ///< 0; of the channels

// From the interface to itself: what has to wait, or came on another thread.
inline constexpr int kOpenAddress = -1;   ///< 0; the one that the menu has chosen
inline constexpr int kOpenHelpFile = -2;  ///< 0
inline constexpr int kWelcome = -3;       ///< 0
inline constexpr int kRefreshView = -4;   ///< 0
inline constexpr int kApplySize = -5;     ///< 0
inline constexpr int kPushUndo = -6;      ///< index of the parameter that was set, or -1
inline constexpr int kStoreSize = -7;     ///< twice the row of the size, plus 1 to keep the window as it is

/// In place of an index.
inline constexpr int kAllParameters = -1;

}  // namespace vanta::interface::event
