#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "host/aax_host/aax_instance.hpp"

namespace vanta {

/// An offline render of a selection from its start on, window by window.
struct OfflineRun {
    AaxInstance& instance;
    AAX_IHostProcessorDelegate& selection;
    std::int32_t windowSize = 4096;  ///< samples
    /// Called at each window with its location: its length, or 0 where the selection ends.
    std::function<std::int32_t(std::int64_t location)> next{};
    /// Takes what was rendered of a window, in the host's order. False stops the run.
    std::function<bool(std::span<const float* const> outputs, std::int32_t samples)> take{};
    bool analyzes = false;  ///< does not render
};

/// The first error of the processor's, with which the run ends.
AAX_Result runOffline(const OfflineRun& run);

}  // namespace vanta
