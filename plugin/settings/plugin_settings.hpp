#pragma once

#include <vector>

#include "plugin/settings/settings_base.hpp"

namespace vanta {

/// In the interface's own units, before it is scaled.
struct InterfaceSize {
    int width = 0;
    int height = 0;

    bool operator==(const InterfaceSize&) const = default;
};

/// The sizes that a plug-in's interface can take.
struct InterfaceSizes {
    std::vector<InterfaceSize> fixed;  ///< from the smallest to the largest
    int defaultLayout = 0;             ///< row of `fixed`
    bool resizable = false;
    InterfaceSize minimum;  ///< of a free size
    int panels = 0;

    /// The nearest size that the interface can take while `layout` is chosen: the smallest fixed size is not
    /// to be stretched, all others follow the minimum alone.
    InterfaceSize limit(int layout, InterfaceSize size) const;
};

/// Settings of one instance.
class PluginSettings final : public SettingsBase {
public:
    /// Of `interfaceLayout`: the size is `interfaceWidth` by `interfaceHeight`.
    static constexpr int kFreeSize = -1;

    PluginSettings(const std::string& key, InterfaceSizes sizes);

    void serialize(SettingSerializer& serializer) override;

    /// The size of the chosen row, or the free one.
    InterfaceSize interfaceSize() const;
    /// Takes a free size, if the plug-in can be resized and the size differs from the present one.
    void setInterfaceSize(InterfaceSize size);
    /// Falls back to what a screen can show. `monitors`: the size of the union of all monitors.
    void fitToScreen(InterfaceSize monitors);

    const InterfaceSizes& sizes() const { return sizes_; }

private:
    InterfaceSizes sizes_;  // the properties below take their ranges from it

public:
    LimitedProperty<int> interfaceLayout;  ///< row of the fixed sizes or kFreeSize
    LimitedProperty<int> interfaceHeight;
    LimitedProperty<int> interfacePanels;
    LimitedProperty<int> interfaceWidth;
};

}  // namespace vanta
