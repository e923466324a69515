#pragma once

#include <cstdint>

namespace vanta {

// A feature that newer hosts offer and the packaged headers lack: a plug-in may ask for another value on an
// input port of its own, which it cannot write itself. Names are those of the published interface.

inline constexpr const char* kPortChangeRequestUri =
    "http://kx.studio/ns/lv2ext/control-input-port-change-request";

/// The feature's data.
struct Lv2PortChangeRequest {
    void* handle;
    /// Only within `run`. Other than 0: the host has declined, for instance as it automates the port.
    int (*request_change)(void* handle, std::uint32_t index, float value);
};

}  // namespace vanta
