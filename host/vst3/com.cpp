#include "host/vst3/com.hpp"

namespace vanta::vst3 {

v3_result ComObject::query(const std::uint8_t* id, void** found) noexcept {
    if (!found) return V3_INVALID_ARG;
    *found = id ? interfaceOf(id) : nullptr;
    if (!*found) return V3_NO_INTERFACE;
    ref();
    return V3_OK;
}

std::uint32_t ComObject::ref() noexcept {
    return references_.fetch_add(1) + 1;
}

std::uint32_t ComObject::unref() noexcept {
    const std::uint32_t left = references_.fetch_sub(1) - 1;
    if (left == 0) delete this;
    return left;
}

v3_result queryInterface(void* self, const v3_tuid id, void** found) {
    return roleOf<ComInterface>(self).object().query(id, found);
}

std::uint32_t addReference(void* self) {
    return roleOf<ComInterface>(self).object().ref();
}

std::uint32_t release(void* self) {
    return roleOf<ComInterface>(self).object().unref();
}

}  // namespace vanta::vst3
