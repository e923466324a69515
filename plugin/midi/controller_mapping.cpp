#include "plugin/midi/controller_mapping.hpp"

#include <algorithm>
#include <ostream>
#include <system_error>

#include "foundation/file_replacement.hpp"

namespace vanta {
namespace {

constexpr int kControllerCount = MidiControlled::kControllerCount;
constexpr int kNoTarget = MidiControlled::kNoTarget;
constexpr int kExtraTargetBase = MidiControlled::kExtraTargetBase;

constexpr const char* kTag = "QMCM";
constexpr int kVersion = 1;

bool isController(int number) {
    return number >= 0 && number < kControllerCount;
}

}  // namespace

ControllerMapping::ControllerMapping(int parameterCount, int extraTargetCount)
    : changedNotification(*this, changed, this),
      table_(kControllerCount, kNoTarget),
      parameters_(parameterCount),
      extraTargets_(extraTargetCount) {}

bool ControllerMapping::isTarget(int target) const {
    if (target >= kExtraTargetBase) return target - kExtraTargetBase < extraTargets_;
    return target >= 0 && target < parameters_;
}

int ControllerMapping::controllerOf(int target) const {
    const auto found = std::find(table_.begin(), table_.end(), target);
    return target == kNoTarget || found == table_.end() ? -1 : static_cast<int>(found - table_.begin());
}

int ControllerMapping::targetOf(int controller) const {
    return isController(controller) ? table_[static_cast<std::size_t>(controller)] : kNoTarget;
}

void ControllerMapping::set(std::size_t controller, int target) {
    if (table_[controller] == target) return;
    table_[controller] = target;
    isSaved_ = false;
    changedNotification.signal();
}

void ControllerMapping::assign(int controller, int target) {
    if (target != kNoTarget && !isTarget(target)) return;
    if (controller != -1 && !isController(controller)) return;
    if (controller != -1 && targetOf(controller) == target) return;
    const UpdateBlock block(*this);
    const int former = controllerOf(target);
    if (former != -1) set(static_cast<std::size_t>(former), kNoTarget);
    if (controller != -1) set(static_cast<std::size_t>(controller), target);
}

void ControllerMapping::clear() {
    const UpdateBlock block(*this);
    for (std::size_t i = 0; i < table_.size(); ++i) set(i, kNoTarget);
}

void ControllerMapping::write(BinaryDataWriter& writer) const {
    writer.writeHeader(kTag, kVersion);
    for (const int target : table_) writer.writeInt(target);
}

bool ControllerMapping::read(BinaryDataReader& reader) {
    if (!reader.expectHeader(kTag)) return false;
    std::vector<int> targets;
    for (int i = 0; i < kControllerCount; ++i) {
        const int target = reader.readInt();
        const bool isFree = std::find(targets.begin(), targets.end(), target) == targets.end();
        targets.push_back(isFree && isTarget(target) ? target : kNoTarget);
    }
    if (reader.failed()) return false;
    const UpdateBlock block(*this);
    for (std::size_t i = 0; i < table_.size(); ++i) set(i, targets[i]);
    return true;
}

bool ControllerMapping::load(const std::filesystem::path& path) {
    BinaryFileReader reader(path);
    // Handlers of the change may want to save: to them what is read must count as saved.
    const UpdateBlock block(*this);
    if (!read(reader)) return false;
    isSaved_ = true;
    return true;
}

bool ControllerMapping::save(const std::filesystem::path& path) {
    if (isSaved_) return true;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    isSaved_ = replaceFile(path, [this](std::ostream& file) {
        BinaryDataWriter writer(file);
        write(writer);
        return !writer.failed();
    });
    return isSaved_;
}

void ControllerMapping::applyTo(MidiControlled& processor) const {
    for (int i = 0; i < kControllerCount; ++i) processor.setControllerTarget(i, targetOf(i));
}

bool ControllerLearner::controllerMoved(int controller) {
    if (learnTarget_ == kNoTarget || controller == -1) return false;
    if (map_.targetOf(controller) == learnTarget_) return false;
    map_.assign(controller, learnTarget_);
    return map_.targetOf(controller) == learnTarget_;
}

}  // namespace vanta
