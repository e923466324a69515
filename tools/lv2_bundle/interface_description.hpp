#pragma once

#include <string>

namespace vanta {

/// Below the bundle.
inline constexpr const char* kInterfaceFile = "interface.ttl";

/// What that file says of the interface that all plug-ins share.
std::string describeInterface();

/// That there is one, for the manifest.
std::string interfaceManifest();

/// The terms of what plug-in and interface say to each other.
std::string describeMessages();

}  // namespace vanta
