#pragma once

#include <string>
#include <string_view>

namespace vanta {

/// The PNG file `content` with nothing but header, a gAMA chunk of 45455, pixels and end. So the bytes depend
/// on the picture alone, not on what the renderer notes beside it, and a gamma table made for it changes no
/// value. Failure, in words that fit behind a file name, unless the picture has 8 bits a channel as RGB or
/// RGBA without interlacing, is exactly `width` by `height` pixels, and both are divisible by 4.
std::string pictureFile(std::string_view content, int width, int height);

}  // namespace vanta
