#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "audiofile/audio_file_reader.hpp"
#include "host/common/hosted_plugin.hpp"

namespace vanta {

/// The interface of an instance that has played a file up to a moment.
struct Screenshot {
    HostedPlugin& plugin;    ///< as it is set up; activated anew
    AudioFileReader* input;  ///< null for silence
    double endSeconds;
    float scale;
    std::string opened = {};  ///< one of `openableNames`, or empty
};

/// What a picture can show open.
const std::vector<std::string>& openableNames();

/// Writes it as a PNG. No time passes but that of the file, so that two pictures of the same are the same.
void writeScreenshot(const std::filesystem::path& file, const Screenshot& screenshot);

}  // namespace vanta
