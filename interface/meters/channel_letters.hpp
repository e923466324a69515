#pragma once

namespace vanta::interface {

/// Of the sheet of letters.
inline constexpr int kLetterCells = 16;

/// Which cell has the letter of a channel, by its type word: pairs by their angle, the right one in the odd
/// cell; then rear centre, centre, the upper pair, and the low-frequency channel.
int letterCell(int channelType);

}  // namespace vanta::interface
