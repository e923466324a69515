#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "foundation/realtime.hpp"
#include "plugin/model/generic_plugin.hpp"
#include "plugin/presets/preset_folder.hpp"

namespace vanta::vst3 {

/// The presets as a host's list of programs, as they were when the instance came up, and which of them is
/// current. A host that chooses the current one, as it does when it restores a session, changes nothing.
class Programs {
public:
    explicit Programs(GenericPlugin& model);

    // Any thread.

    int count() const { return static_cast<int>(presets_.size()); }
    const std::string& name(int program) const { return presets_[static_cast<std::size_t>(program)].name; }
    int current() const { return current_.load(); }
    /// From 0 to 1.
    double position() const { return positionOf(current()); }
    double positionOf(int program) const;
    VANTA_REALTIME int at(double position) const;
    /// To be loaded soon. False if it is current or on its way.
    VANTA_REALTIME bool request(int program);

    // Main thread.

    void loadRequested(GenericPlugin& model);
    /// The model may have another preset. True if that has changed the current program.
    bool follow(GenericPlugin& model);

private:
    static constexpr int kNone = -1;

    std::vector<PresetEntry> presets_;
    std::atomic<int> current_{0};
    std::atomic<int> requested_{kNone};
};

}  // namespace vanta::vst3
