#include "interface/layout/output_toggles.hpp"

namespace vanta::interface {
namespace {

constexpr float kToggleWidth = 20.0f;

struct ToggleRow {
    const char* colour;
    const char* icon;
};

constexpr std::array<ToggleRow, 4> kToggleTable{{
    {"Blue", "DC"},
    {"Orange", "SideChain"},
    {"Yellow", "UnityGain"},
    {"Red", "Audition"},
}};

}  // namespace

gui::ToggleButton& addToggle(ControlFactory& factory, gui::Point at, const std::string& colour,
                             const std::string& icon) {
    return factory.addPictureToggle(gui::Rect::ofSize(at.x, at.y, kToggleWidth, OutputToggles::kHeight),
                                    "ButtonToggleOff.png", "ButtonToggle" + colour + ".png",
                                    "Icon" + icon + ".png");
}

OutputToggles::OutputToggles(const LayoutContext& context, gui::Point at) : context_(context) {
    for (std::size_t i = 0; i < kCount; ++i) {
        buttons_[i] = &addToggle(context.factory(), at, kToggleTable[i].colour, kToggleTable[i].icon);
        at.x += kStep;
    }
}

void OutputToggles::bind() {
    const VantaPlugin& plugin = context_.plugin;
    const std::array<const AbstractPluginParameter*, kCount> parameters{
        &plugin.filterDcOffset, &plugin.sideChainTriggering, &plugin.unityGain, &plugin.auditionLimiting};
    for (std::size_t i = 0; i < kCount; ++i) context_.bind(*parameters[i], *buttons_[i]);
}

}  // namespace vanta::interface
