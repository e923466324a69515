#pragma once

#include <optional>
#include <string>

namespace vanta {

struct PictureSize {
    double width;
    double height;

    bool isWithin(PictureSize least, PictureSize most) const {
        return width >= least.width && width <= most.width && height >= least.height && height <= most.height;
    }
};

/// "800x480". Nothing for what is not of that form.
std::optional<PictureSize> readPictureSize(const std::string& text);

/// Pixels of a logical unit: 1, 1.5 or 2, and `usual` for an empty text. UsageError for any other.
float readPictureScale(const std::string& text, float usual);

}  // namespace vanta
