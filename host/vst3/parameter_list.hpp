#pragma once

#include <optional>
#include <string>
#include <vector>

#include <travesty/edit_controller.h>
#include <travesty/unit.h>

#include "host/common/host_parameters.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/vst3/programs.hpp"

namespace vanta::vst3 {

/// The parameters as hosts count them: ours, whose ids are their indexes; the current program; and a hidden
/// one for each MIDI controller, as a host only delivers controllers that a parameter stands for.
class ParameterList {
public:
    static constexpr v3_param_id kProgram = 1000;
    static constexpr v3_param_id kFirstController = 2000;
    static constexpr int kControllers = 128;
    /// Of the units, which are the groups of parameters, and of the list of programs. The root unit has it.
    static constexpr int kRootUnit = 0;
    static constexpr int kProgramList = 1;

    struct Range {
        double minimum;
        double maximum;
        /// Own numbers and positions from 0 to 1.
        double valueAt(double position) const { return minimum + position * (maximum - minimum); }
        double positionOf(double value) const { return (value - minimum) / (maximum - minimum); }
    };

    ParameterList(const HostedPlugin& plugin, const Programs& programs);

    // Any thread.

    int count() const;
    /// The model's, which come first.
    int ownCount() const { return static_cast<int>(ranges_.size()); }
    bool describe(int position, v3_param_info& info) const;
    bool has(v3_param_id id) const { return isOwn(id) || isProgram(id) || isController(id); }
    /// One of the model's parameters.
    bool isOwn(v3_param_id id) const { return id < ranges_.size(); }
    bool isProgram(v3_param_id id) const { return id == kProgram && programs_.count() > 0; }
    static bool isController(v3_param_id id) {
        return id >= kFirstController && id < kFirstController + kControllers;
    }
    const Range& range(int index) const { return ranges_[static_cast<std::size_t>(index)]; }

    // For an id that the list has, at a position from 0 to 1.

    /// Without the unit, which stands beside it.
    std::string text(v3_param_id id, double position) const;
    std::optional<double> parse(v3_param_id id, const std::string& text) const;
    double plain(v3_param_id id, double position) const;
    double position(v3_param_id id, double plain) const;

    // Units.

    int unitCount() const { return 1 + static_cast<int>(groups_.size()); }
    bool describeUnit(int position, v3_unit_info& info) const;

private:
    void describeOwn(const HostParameter& parameter, v3_param_info& info) const;
    void describeProgram(v3_param_info& info) const;
    void describeController(int controller, v3_param_info& info) const;
    int unitOf(const std::string& group) const;

    const HostedPlugin& plugin_;
    const Programs& programs_;
    std::vector<HostParameter> parameters_;
    std::vector<Range> ranges_;
    std::vector<std::string> groups_;
};

}  // namespace vanta::vst3
