#include "host/lv2/lv2_descriptors.hpp"

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    return vanta::lv2Descriptor(index);
}
