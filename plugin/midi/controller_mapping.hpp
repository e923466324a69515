#pragma once

#include <filesystem>
#include <vector>

#include "foundation/binary_data.hpp"
#include "foundation/notify_event.hpp"
#include "foundation/updated_object.hpp"
#include "plugin/midi/midi_controlled.hpp"

namespace vanta {

/// Which MIDI controller moves what, for all instances of the process: 128 entries, each a target as in
/// MidiControlled, which has one controller at most. The interface's thread.
class ControllerMapping : public UpdatedObject {
public:
    /// The counts of what can be a target.
    explicit ControllerMapping(int parameterCount, int extraTargetCount = 0);

    /// The lowest controller that moves `target`, or -1.
    int controllerOf(int target) const;
    /// MidiControlled::kNoTarget for a number that no controller has.
    int targetOf(int controller) const;
    /// The controller loses its old target, the target its old controller. `controller` -1 only frees the
    /// target, `target` MidiControlled::kNoTarget only the controller. Anything else that does not exist is
    /// ignored.
    void assign(int controller, int target);
    /// No controller moves anything.
    void clear();

    /// "QMCM", version 1, then the entries; 4-byte little-endian integers.
    void write(BinaryDataWriter& writer) const;
    /// Takes over a whole map of any version. False, and nothing has changed, if the tag is wrong or the
    /// data end early. Targets that do not exist are left out.
    bool read(BinaryDataReader& reader);

    /// Reads a file. The map then counts as saved.
    bool load(const std::filesystem::path& path);
    /// Writes the file, whole or not at all, and makes its folder. Writes nothing if the map is as it was
    /// last loaded or saved.
    bool save(const std::filesystem::path& path);

    /// Gives a processor its own copy. Any thread may be running that processor.
    void applyTo(MidiControlled& processor) const;

    NotifyEvent changed;  ///< once for each update that follows a change
    UpdateNotification changedNotification;

private:
    bool isTarget(int target) const;
    void set(std::size_t controller, int target);

    std::vector<int> table_;
    int parameters_;
    int extraTargets_;
    bool isSaved_ = true;  ///< an empty map needs no file
};

/// Assigns the next controller that is moved to a chosen target. The interface's thread.
class ControllerLearner {
public:
    explicit ControllerLearner(ControllerMapping& map) : map_(map) {}

    /// MidiControlled::kNoTarget ends learning.
    void setTarget(int target) { learnTarget_ = target; }
    int target() const { return learnTarget_; }
    /// A controller was moved; -1 for none. True if that has changed the map.
    bool controllerMoved(int controller);

private:
    ControllerMapping& map_;
    int learnTarget_ = MidiControlled::kNoTarget;
};

}  // namespace vanta
