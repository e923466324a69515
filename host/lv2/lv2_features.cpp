#include "host/lv2/lv2_features.hpp"

#include <lv2/options/options.h>

#include <algorithm>
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

}  // namespace vanta
