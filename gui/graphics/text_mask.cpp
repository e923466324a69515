#include "gui/graphics/text_mask.hpp"

#include <cmath>

namespace vanta::gui {
namespace {

using Coverage = std::array<std::uint8_t, 256>;

/// One row for each sixteenth of brightness.
std::array<Coverage, 16> coverageRows() {
    std::array<Coverage, 16> rows{};
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const double exponent = std::pow(0.45, static_cast<double>(k) / 15.0);
        for (std::size_t v = 0; v < 256; ++v) {
            const double ink = (255.0 - static_cast<double>(v)) / 255.0;
            rows[k][v] = static_cast<std::uint8_t>(std::lround(255.0 * std::pow(ink, exponent)));
        }
    }
    return rows;
}

}  // namespace

const std::array<std::uint8_t, 256>& textCoverage(Color color) {
    static const std::array<Coverage, 16> rows = coverageRows();
    return rows[static_cast<std::size_t>((color.red + color.green + color.blue) / 3 >> 4)];
}

}  // namespace vanta::gui
