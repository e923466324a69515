#include "plugin/settings/shared_settings.hpp"

#include "plugin/settings/product.hpp"
#include "plugin/settings/registry_serializer.hpp"

namespace vanta {
namespace {

void serializeBoolean(SettingSerializer& serializer, const char* key, Property<bool>& property) {
    property = serializer.boolean(key, property, property);
}

}  // namespace

SharedSettings::SharedSettings(const std::string& key)
    : SettingsBase(key),
      correctDigiProductIds(this, true),
      enableMidiProgramChanges(this, false),
      graphicsAcceleration(this, GraphicsAccelerationMode::OpenGl60),
      retinaEnabled(this, 0, 200, 1),
      savePresetItemEnabled(this, false),
      showComponentDisplays(this, true),
      showInteractiveHelp(this, true),
      showWelcomeHint(this, false) {}

void SharedSettings::serialize(SettingSerializer& serializer) {
    serializeBoolean(serializer, "CorrectDigiProductIds", correctDigiProductIds);
    serializeBoolean(serializer, "EnableMIDIProgramChanges", enableMidiProgramChanges);
    const int mode = static_cast<int>(graphicsAcceleration.value());
    graphicsAcceleration =
        static_cast<GraphicsAccelerationMode>(serializer.integer("GraphicsAcceleration", mode, mode));
    retinaEnabled = serializer.integer("RetinaEnabled", retinaEnabled, retinaEnabled);
    serializeBoolean(serializer, "SavePresetItemEnabled", savePresetItemEnabled);
    serializeBoolean(serializer, "showInteractiveHelp", showInteractiveHelp);
    serializeBoolean(serializer, "showWelcomeHint", showWelcomeHint);
    serializeBoolean(serializer, "ShowComponentDisplays", showComponentDisplays);
}

double interfaceScale(int retinaEnabled) {
    if (retinaEnabled >= 100) return retinaEnabled * 0.01;
    return retinaEnabled == 1 ? 0.0 : 1.0;
}

ProcessGraphics readProcessGraphics(const SharedSettings& settings) {
    constexpr int kAbsent = -1;
    RegistryReader root(Product::rootKey());
    const int mode = root.integer("GraphicsAcceleration", 0, kAbsent);
    const int scale = root.integer("RetinaEnabled", 0, kAbsent);
    return {
        mode == kAbsent ? settings.graphicsAcceleration.value() : static_cast<GraphicsAccelerationMode>(mode),
        interfaceScale(scale == kAbsent ? settings.retinaEnabled.value() : scale)};
}

}  // namespace vanta
