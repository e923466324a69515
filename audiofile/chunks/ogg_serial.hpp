#pragma once

#include <filesystem>

namespace vanta {

/// Gives the pages of an Ogg file with one logical stream a fixed serial number (RFC 3533, section 6).
/// Encoders draw it at random, so that streams can be chained; but a file that is made twice should be the
/// same. Failure, without a name in front, if the file is damaged or cannot be written.
void fixOggSerial(const std::filesystem::path& file);

}  // namespace vanta
