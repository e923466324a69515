#include "cli/view_arguments.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "cli/exit_code.hpp"
#include "cli/option_declarer.hpp"
#include "cli/picture_size.hpp"
#include "cli/suggestion.hpp"
#include "cli/texts.hpp"
#include "foundation/ascii.hpp"

namespace vanta {
namespace {

// In the order of the parameters' values.
const std::vector<std::string> kModes{"slow-down", "fast", "slow", "infinite", "off"};
const std::vector<std::string> kMeterScales{"16", "32", "48", "k-12", "k-14", "k-20", "loudness"};

/// The place of a name in a list.
int chosen(const std::string& name, const char* what, const std::vector<std::string>& names) {
    const auto found = std::ranges::find_if(
        names, [&](const std::string& known) { return equalsIgnoringCase(known, name); });
    if (found == names.end()) throw unknownName(what, name, names);
    return static_cast<int>(found - names.begin());
}

}  // namespace

void ViewArguments::declareTo(CLI::App& app) {
    OptionDeclarer add(app, text::kViewOptions);
    add.option("--mode", mode);
    add.option("--meter-scale", meterScale);
    add.option("--scale", scale);
    add.option("--size", size);
}

void ViewArguments::applyTo(LimiterSettings& settings, const SettingsArguments& others,
                            VantaParameters::DisplayMode usualMode) const {
    if (!mode.empty()) {
        settings.displayMode.setValue(static_cast<float>(chosen(mode, "mode", kModes)), 0);
    } else if (others.setterOf("Display Mode").empty()) {
        settings.displayMode.setMapped(usualMode);
    }
    if (!meterScale.empty())
        settings.meterScale.setValue(static_cast<float>(chosen(meterScale, "meter scale", kMeterScales)), 0);
}

ViewArguments::Size ViewArguments::chosenSize() const {
    if (size.empty()) return {1330.0f, 798.0f};
    const auto wanted = readPictureSize(size);
    if (!wanted || !wanted->isWithin({400, 350}, {4000, 3000}))
        throw UsageError(fmt::format("--size cannot be '{}': use a size from 400x350 to 4000x3000", size));
    return {static_cast<float>(wanted->width), static_cast<float>(wanted->height)};
}

}  // namespace vanta
