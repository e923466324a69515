#pragma once

#include <vector>

namespace vanta::interface {

/// A way from one position to another across a strip: level, sloped, level again.
struct JoiningWay {
    float from;   ///< position at the near side
    float to;     ///< position at the far side
    float place;  ///< of the level within its scale, 0 to 1: neighbours bend one after the other
    bool isSoft;  ///< with rounded corners
};

/// The positions of a way for each logical unit across a strip of `width`, both sides included.
std::vector<float> joiningTable(const JoiningWay& way, float width);

}  // namespace vanta::interface
