#pragma once

#include <filesystem>
#include <vector>

#include "foundation/binary_data.hpp"
#include "foundation/notify_event.hpp"
#include "foundation/updated_object.hpp"

namespace vanta {

class GenericPluginProcessor;

/// Which MIDI controller moves what, for all instances of the process: 128 entries, each a target or
/// kNoTarget. A target is a parameter's index, or kExtraTargetBase plus the position of an extra target; it
/// has one controller at most. The interface's thread.
class ControllerMapping : public UpdatedObject {
public:
    static constexpr int kControllerCount = 128;
    static constexpr int kNoTarget = -1;
    static constexpr int kExtraTargetBase = 0x100000;

    /// The counts of what can be a target.
    explicit ControllerMapping(int parameterCount, int extraTargetCount = 0);

    /// The lowest controller that moves `target`, or -1.
    int controllerOf(int target) const;
    /// kNoTarget for a number that is no controller's.
    int targetOf(int controller) const;
    /// The controller loses its old target, the target its old controller. `controller` -1 only frees the
    /// target, `target` kNoTarget only the controller. What is neither changes nothing.
    void assign(int controller, int target);
    /// No controller moves anything.
    void clear();

    /// "QMCM", version 1, then the entries; 4-byte little-endian integers.
    void write(BinaryDataWriter& writer) const;
    /// Takes a whole map or, if the tag is another or the data end early, nothing: false. Targets that do not
    /// exist read as none. Any version.
    bool read(BinaryDataReader& reader);

    /// Reads a file. What is read counts as saved.
    bool load(const std::filesystem::path& path);
    /// Writes the file, whole or not at all, and makes its folder; nothing if the map is as it was last
    /// loaded or saved.
    bool save(const std::filesystem::path& path);

    /// Gives a processor its own copy. Any thread may be running that processor.
    void applyTo(GenericPluginProcessor& processor) const;

    NotifyEvent changed;  ///< once for each update that follows a change
    UpdateNotification changedNotification;

private:
    bool isTarget(int target) const;
    void set(std::size_t controller, int target);

    std::vector<int> table;
    int parameters;
    int extraTargets;
    bool isSaved = true;  ///< an empty map needs no file
};

/// Assigns the next controller that is moved to a chosen target. The interface's thread.
class ControllerLearner {
public:
    explicit ControllerLearner(ControllerMapping& learningMap) : map(&learningMap) {}

    /// ControllerMapping::kNoTarget ends learning.
    void setTarget(int target) { learnTarget = target; }
    int target() const { return learnTarget; }
    /// A controller has been moved; -1 is none. True if the map has changed.
    bool controllerMoved(int controller);

private:
    ControllerMapping* map;
    int learnTarget = ControllerMapping::kNoTarget;
};

}  // namespace vanta
