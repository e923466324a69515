#include "interface/meters/level_meter_style.hpp"

#include "gui/controls/picture.hpp"

namespace vanta::interface {
namespace {

/// Of what is not lit.
constexpr int kBackAlpha = 25;

}  // namespace

void LevelMeterStyle::setImages(const std::string& partImage, const std::string& labelImage) {
    part = gui::loadPicture(ui(), partImage);
    partBack = gui::loadPicture(ui(), {});
    channelLabels = gui::loadPicture(ui(), labelImage);
}

void LevelMeterStyle::setGradient(const gui::Gradient& gradient) {
    barGradient = gradient;
    slowGradient = gradient;
    backGradient = gradient.scaled(kBackAlpha);
}

}  // namespace vanta::interface
