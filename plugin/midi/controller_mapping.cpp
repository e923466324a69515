#include "plugin/midi/controller_mapping.hpp"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "foundation/file_replacement.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"

namespace vanta {
namespace {

constexpr const char* kTag = "QMCM";
constexpr int kVersion = 1;

static_assert(ControllerMapping::kControllerCount == GenericPluginProcessor::kControllerCount);
static_assert(ControllerMapping::kNoTarget == GenericPluginProcessor::kNoTarget);
static_assert(ControllerMapping::kExtraTargetBase == GenericPluginProcessor::kExtraTargetBase);

bool isController(int number) {
    return number >= 0 && number < ControllerMapping::kControllerCount;
}

}  // namespace

ControllerMapping::ControllerMapping(int parameterCount, int extraTargetCount)
    : changedNotification(*this, changed, this),
      table(kControllerCount, kNoTarget),
      parameters(parameterCount),
      extraTargets(extraTargetCount) {}

bool ControllerMapping::isTarget(int target) const {
    if (target >= kExtraTargetBase) return target - kExtraTargetBase < extraTargets;
    return target >= 0 && target < parameters;
}

int ControllerMapping::controllerOf(int target) const {
    const auto found = std::find(table.begin(), table.end(), target);
    return target == kNoTarget || found == table.end() ? -1 : static_cast<int>(found - table.begin());
}

int ControllerMapping::targetOf(int controller) const {
    return isController(controller) ? table[static_cast<std::size_t>(controller)] : kNoTarget;
}

void ControllerMapping::set(std::size_t controller, int target) {
    if (table[controller] == target) return;
    table[controller] = target;
    isSaved = false;
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
    for (std::size_t i = 0; i < table.size(); ++i) set(i, kNoTarget);
}

void ControllerMapping::write(BinaryDataWriter& writer) const {
    writer.writeHeader(kTag, kVersion);
    for (const int target : table) writer.writeInt(target);
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
    for (std::size_t i = 0; i < table.size(); ++i) set(i, targets[i]);
    return true;
}

bool ControllerMapping::load(const std::filesystem::path& path) {
    BinaryFileReader reader(path);
    // Handlers of the change may want to save: to them what is read must count as saved.
    const UpdateBlock block(*this);
    if (!read(reader)) return false;
    isSaved = true;
    return true;
}

bool ControllerMapping::save(const std::filesystem::path& path) {
    if (isSaved) return true;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    FileReplacement replacement(path);
    if (replacement.temporary().empty()) return false;
    std::ofstream file(replacement.temporary(), std::ios::binary);
    BinaryDataWriter writer(file);
    write(writer);
    file.close();
    isSaved = file && replacement.commit();
    return isSaved;
}

void ControllerMapping::applyTo(GenericPluginProcessor& processor) const {
    for (int i = 0; i < kControllerCount; ++i) processor.setControllerTarget(i, targetOf(i));
}

bool ControllerLearner::controllerMoved(int controller) {
    if (learnTarget == ControllerMapping::kNoTarget || controller == -1) return false;
    if (map->targetOf(controller) == learnTarget) return false;
    map->assign(controller, learnTarget);
    return map->targetOf(controller) == learnTarget;
}

}  // namespace vanta
