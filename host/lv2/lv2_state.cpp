#include "host/lv2/lv2_state.hpp"

#include <lv2/atom/atom.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

namespace vanta {
namespace {

constexpr std::uint32_t kFlags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;

struct Property {
    std::span<const std::byte> bytes;
    LV2_URID type = 0;
};

std::optional<Property> retrieved(LV2_URID key, LV2_State_Retrieve_Function retrieve,
                                  LV2_State_Handle handle) {
    std::size_t size = 0;
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    const void* data = retrieve(handle, key, &size, &type, &flags);
    if (!data) return {};
    return Property{{static_cast<const std::byte*>(data), size}, type};
}

std::vector<std::byte> vectorOf(const std::vector<float>& values, const Lv2Uris& uris) {
    const LV2_Atom_Vector_Body head{sizeof(float), uris.atomFloat};
    std::vector<std::byte> bytes(sizeof head + values.size() * sizeof(float));
    std::memcpy(bytes.data(), &head, sizeof head);
    std::memcpy(bytes.data() + sizeof head, values.data(), values.size() * sizeof(float));
    return bytes;
}

/// Nothing if it is not a vector of floats.
std::vector<float> floatsOf(const Property& property, const Lv2Uris& uris) {
    LV2_Atom_Vector_Body head{};
    if (property.type != uris.atomVector || property.bytes.size() < sizeof head) return {};
    std::memcpy(&head, property.bytes.data(), sizeof head);
    if (head.child_size != sizeof(float) || head.child_type != uris.atomFloat) return {};
    std::vector<float> values((property.bytes.size() - sizeof head) / sizeof(float));
    std::memcpy(values.data(), property.bytes.data() + sizeof head, values.size() * sizeof(float));
    return values;
}

}  // namespace

LV2_State_Status saveLv2State(HostedPlugin& plugin, const Lv2PortValues& ports, const Lv2Uris& uris,
                              LV2_State_Store_Function store, LV2_State_Handle handle) {
    const std::vector<std::byte> state = plugin.saveState();
    const auto status = store(handle, uris.ownState, state.data(), state.size(), uris.atomChunk, kFlags);
    const std::vector<float> seen = ports.seen();
    if (status != LV2_STATE_SUCCESS) return status;
    if (!std::ranges::all_of(seen, [](float each) { return std::isfinite(each); })) {
        // Before the first block nobody has looked at the ports: all of them are still to be heard.
        const float none = 0.0f;
        return store(handle, uris.ownPortValues, &none, sizeof none, uris.atomFloat, kFlags);
    }
    const std::vector<std::byte> values = vectorOf(seen, uris);
    return store(handle, uris.ownPortValues, values.data(), values.size(), uris.atomVector, kFlags);
}

LV2_State_Status restoreLv2State(HostedPlugin& plugin, Lv2PortValues& ports, const Lv2Uris& uris,
                                 LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) {
    const auto state = retrieved(uris.ownState, retrieve, handle);
    if (!state) {
        ports.forget();
        return LV2_STATE_SUCCESS;
    }
    if (state->type != uris.atomChunk) return LV2_STATE_ERR_BAD_TYPE;
    if (!plugin.restoreState(state->bytes)) return LV2_STATE_ERR_UNKNOWN;
    if (const auto values = retrieved(uris.ownPortValues, retrieve, handle)) {
        const std::vector<float> saved = floatsOf(*values, uris);
        saved.empty() ? ports.forget() : ports.restore(saved);
    }
    return LV2_STATE_SUCCESS;
}

}  // namespace vanta
