#include "interface/meters/channel_letters.hpp"

#include "foundation/channel_layout.hpp"

namespace vanta::interface {
namespace {

constexpr int kRearCenterCell = 10;
constexpr int kCenterCell = 12;
constexpr int kUpperCell = 13;
constexpr int kLfeCell = 15;
/// Degrees off centre up to which a pair has its cells.
constexpr int kAngleLimits[] = {30, 70, 110, 134};

}  // namespace

int letterCell(int channelType) {
    const int angle = channelType & kAngleMask;
    if (channelType & kLfeChannel) return kLfeCell;
    const bool isPaired = channelType & (kLeftChannel | kRightChannel);
    if (!isPaired) return angle > 90 ? kRearCenterCell : kCenterCell;
    const int right = channelType & kRightChannel ? 1 : 0;
    if (channelType & kHeightChannel) return kUpperCell + right;
    int pair = 0;
    for (const int limit : kAngleLimits) pair += angle > limit ? 1 : 0;
    return 2 * pair + right;
}

}  // namespace vanta::interface
