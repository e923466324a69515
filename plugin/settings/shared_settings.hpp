#pragma once

#include "plugin/settings/settings_base.hpp"

namespace vanta {

/// How the interface draws: a frame rate in the low four bits, and a flag. Other low values count as
/// OpenGl60.
enum class GraphicsAccelerationMode : int {
    Off = 0,
    OpenGl60 = 1,  ///< at most 60 frames a second
    OpenGl30 = 2,
    OpenGl20 = 3,
    SkipVendorTest = 0x10,  ///< flag
};

/// Settings of the process, shared by all instances.
class SharedSettings final : public SettingsBase {
public:
    explicit SharedSettings(const std::string& key);

    void serialize(SettingSerializer& serializer) override;

    Property<bool> correctDigiProductIds;     ///< one shared effect descriptor
    Property<bool> enableMidiProgramChanges;  ///< MIDI program changes load presets
    Property<GraphicsAccelerationMode> graphicsAcceleration;
    LimitedProperty<int> retinaEnabled;    ///< see interfaceScale
    Property<bool> savePresetItemEnabled;  ///< the interface's menu shows a save item
    Property<bool> showComponentDisplays;
    Property<bool> showInteractiveHelp;
    Property<bool> showWelcomeHint;  ///< when an interface opens
};

/// The factor by which the interface is drawn, from the setting "RetinaEnabled": 0 (automatic) for 1, 1.0 for
/// other values below 100, and a hundredth of the value from there on.
double interfaceScale(int retinaEnabled);

/// What the whole process draws with. The root key overrides the product's own settings.
struct ProcessGraphics {
    GraphicsAccelerationMode acceleration;
    double scale;  ///< 0 for automatic
};
ProcessGraphics readProcessGraphics(const SharedSettings& settings);

}  // namespace vanta
