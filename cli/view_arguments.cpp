#include "cli/view_arguments.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "cli/exit_code.hpp"
#include "cli/option_declarer.hpp"
#include "cli/suggestion.hpp"
#include "cli/texts.hpp"
#include "foundation/ascii.hpp"
#include "plugin/parameters/number_text.hpp"

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

bool isWithin(double value, double low, double high) {
    return value >= low && value <= high;
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
    const auto x = std::min(size.find('x'), size.size());
    const auto width = readNumber(size.substr(0, x));
    const auto height = readNumber(x < size.size() ? size.substr(x + 1) : "");
    const bool isWhole = width && height && width->length == x && height->length == size.size() - x - 1;
    if (!isWhole || !isWithin(width->value, 400, 4000) || !isWithin(height->value, 350, 3000))
        throw UsageError(fmt::format("--size cannot be '{}': use a size from 400x350 to 4000x3000", size));
    return {static_cast<float>(width->value), static_cast<float>(height->value)};
}

float ViewArguments::chosenScale(float usual) const {
    if (scale.empty()) return usual;
    for (const auto& [name, factor] : {std::pair{"1", 1.0f}, {"1.5", 1.5f}, {"2", 2.0f}}) {
        if (scale == name) return factor;
    }
    throw UsageError(fmt::format("--scale cannot be '{}': use 1, 1.5 or 2", scale));
}

}  // namespace vanta
