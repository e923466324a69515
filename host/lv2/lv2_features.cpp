#include "host/lv2/lv2_features.hpp"

#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vanta {
namespace {

const void* find(const LV2_Feature* const* list, const char* uri) {
    for (; list && *list; ++list) {
        if (std::strcmp((*list)->URI, uri) == 0) return (*list)->data;
    }
    return nullptr;
}

int count(const LV2_Options_Option& option, const Lv2Uris& uris) {
    if (option.type != uris.atomInt || option.size != sizeof(int) || !option.value) return 0;
    int value = 0;
    std::memcpy(&value, option.value, sizeof value);
    return std::max(value, 0);
}

}  // namespace

Lv2Features::Lv2Features(const LV2_Feature* const* list)
    : map(static_cast<const LV2_URID_Map*>(find(list, LV2_URID__map))),
      portRequests(static_cast<const Lv2PortChangeRequest*>(find(list, kPortChangeRequestUri))),
      options_(find(list, LV2_OPTIONS__options)) {}

int Lv2Features::largestBlock(const Lv2Uris& uris) const {
    int largest = 0;
    int nominal = 0;
    const auto* option = static_cast<const LV2_Options_Option*>(options_);
    for (; option && option->key != 0; ++option) {
        if (option->key == uris.largestBlock) largest = count(*option, uris);
        if (option->key == uris.nominalBlock) nominal = count(*option, uris);
    }
    return largest > 0 ? largest : nominal;
}

Lv2InterfaceFeatures::Lv2InterfaceFeatures(const LV2_Feature* const* list)
    : map(static_cast<const LV2_URID_Map*>(find(list, LV2_URID__map))),
      instance(const_cast<void*>(find(list, LV2_INSTANCE_ACCESS_URI))),
      parent(const_cast<void*>(find(list, LV2_UI__parent))),
      resize(static_cast<const LV2UI_Resize*>(find(list, LV2_UI__resize))),
      touch(static_cast<const LV2UI_Touch*>(find(list, LV2_UI__touch))),
      ports(static_cast<const LV2UI_Port_Map*>(find(list, LV2_UI__portMap))),
      subscribe(static_cast<const LV2UI_Port_Subscribe*>(find(list, LV2_UI__portSubscribe))),
      options_(find(list, LV2_OPTIONS__options)) {}

double Lv2InterfaceFeatures::scale(const Lv2Uris& uris) const {
    const auto* option = static_cast<const LV2_Options_Option*>(options_);
    for (; option && option->key != 0; ++option) {
        const bool isScale = option->key == uris.scaleFactor && option->type == uris.atomFloat;
        if (!isScale || option->size != sizeof(float) || !option->value) continue;
        float scale = 0.0f;
        std::memcpy(&scale, option->value, sizeof scale);
        if (std::isfinite(scale) && scale > 0.0f) return static_cast<double>(scale);
    }
    return 0.0;
}

std::string Lv2InterfaceFeatures::title(const Lv2Uris& uris) const {
    const auto* option = static_cast<const LV2_Options_Option*>(options_);
    for (; option && option->key != 0; ++option) {
        const bool isTitle = option->key == uris.windowTitle && option->type == uris.atomString;
        if (!isTitle || !option->value) continue;
        const auto* text = static_cast<const char*>(option->value);
        return {text, option->size > 0 ? strnlen(text, option->size) : std::strlen(text)};
    }
    return {};
}

}  // namespace vanta
