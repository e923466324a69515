#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <utility>

#include "host/common/hosted_plugin.hpp"

namespace vanta {

/// On the terminal, at once: whoever reads it may be another program.
template <typename... Values>
void tell(fmt::format_string<Values...> text, Values&&... values) {
    fmt::print(text, std::forward<Values>(values)...);
    std::fflush(stdout);
}

inline std::string latencyText(const HostedPlugin& plugin) {
    return fmt::format("latency {} samples ({:.1f} ms)", plugin.latency(),
                       1000.0 * plugin.latency() / plugin.sampleRate());
}

}  // namespace vanta
