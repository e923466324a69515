#include "host/editor/plugin_editor.hpp"
#include "host/lv2/lv2_descriptors.hpp"
#include "host/lv2/lv2_interface_descriptors.hpp"

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    return vanta::lv2Descriptor(index);
}

LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(uint32_t index) {
    static const vanta::Lv2InterfaceModule module(vanta::pluginEditors());
    return module.descriptor(index);
}
