#include "plugin/settings/plugin_settings.hpp"

#include <algorithm>
#include <utility>

namespace vanta {
namespace {

constexpr int kMaxHeight = 12000;
constexpr int kMaxWidth = 16000;
/// What a desktop and a host's window keep for themselves.
constexpr int kScreenMargin = 165;

}  // namespace

InterfaceSize InterfaceSizes::limit(int layout, InterfaceSize size) const {
    if (layout == 0 && !fixed.empty()) return fixed.front();
    return {std::max(size.width, minimum.width), std::max(size.height, minimum.height)};
}

PluginSettings::PluginSettings(const std::string& key, InterfaceSizes sizes)
    : SettingsBase(key),
      sizes_(std::move(sizes)),
      interfaceLayout(this, sizes_.resizable ? kFreeSize : 0, static_cast<int>(sizes_.fixed.size()) - 1,
                      sizes_.defaultLayout),
      interfaceHeight(this, sizes_.minimum.height, kMaxHeight, sizes_.minimum.height),
      interfacePanels(this, 0, 1 << sizes_.panels, 0),
      interfaceWidth(this, sizes_.minimum.width, kMaxWidth, sizes_.minimum.width) {}

void PluginSettings::serialize(SettingSerializer& serializer) {
    const auto serializeInteger = [&](const char* key, LimitedProperty<int>& property) {
        property = serializer.integer(key, property, property);
    };
    if (sizes_.fixed.size() > 1 || sizes_.resizable) serializeInteger("InterfaceLayout", interfaceLayout);
    if (sizes_.panels > 0) serializeInteger("InterfacePanels", interfacePanels);
    if (!sizes_.resizable) return;
    serializeInteger("InterfaceWidth", interfaceWidth);
    serializeInteger("InterfaceHeight", interfaceHeight);
}

InterfaceSize PluginSettings::interfaceSize() const {
    const auto row = static_cast<std::size_t>(interfaceLayout.value());
    if (interfaceLayout >= 0 && row < sizes_.fixed.size()) return sizes_.fixed[row];
    return {interfaceWidth, interfaceHeight};
}

void PluginSettings::setInterfaceSize(InterfaceSize size) {
    if (!sizes_.resizable || size == interfaceSize()) return;
    const UpdateBlock block(*this);
    const InterfaceSize limited = sizes_.limit(kFreeSize, size);
    interfaceLayout = kFreeSize;
    interfaceWidth = limited.width;
    interfaceHeight = limited.height;
}

void PluginSettings::fitToScreen(InterfaceSize monitors) {
    if (sizes_.fixed.size() < 2 && !sizes_.resizable) return;
    const int height = std::max(monitors.height - kScreenMargin, 0);
    const auto fits = [&](int row) {
        const InterfaceSize& size = sizes_.fixed[static_cast<std::size_t>(row)];
        return size.width <= monitors.width && size.height <= height;
    };
    while (interfaceLayout > 0 && !fits(interfaceLayout)) interfaceLayout = interfaceLayout - 1;
    interfaceWidth = std::min(interfaceWidth.value(), monitors.width);
    interfaceHeight = std::min(interfaceHeight.value(), height);
}

}  // namespace vanta
