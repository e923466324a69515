#pragma once

#include <optional>
#include <string_view>

namespace vanta {

/// The frequency in Hz of a note name: a letter, "#" or "b", the octave, cents. "A4", "c#3", "Bb2 -15";
/// the octave defaults to 4, and A4 is 440 Hz. Nothing if the text is anything else.
std::optional<float> hertzOfNote(std::string_view text);

}  // namespace vanta
