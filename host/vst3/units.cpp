#include "host/vst3/units.hpp"

#include "host/vst3/utf16.hpp"

namespace vanta::vst3 {
namespace {

constexpr std::size_t kTextSize = sizeof(v3_str_128) / sizeof(std::int16_t);
constexpr int kMidiChannels = 16;

}  // namespace

const v3_unit_information_cpp UnitInformation::kTable{
    kUnknown,
    {
        .get_unit_count = entry<&UnitInformation::unitCount>,
        .get_unit_info = entry<&UnitInformation::unitInfo>,
        .get_program_list_count = entry<&UnitInformation::programListCount>,
        .get_program_list_info = entry<&UnitInformation::programListInfo>,
        .get_program_name = entry<&UnitInformation::programName>,
        .get_program_info = entry<&UnitInformation::programInfo>,
        .has_program_pitch_names = entry<&UnitInformation::hasPitchNames>,
        .get_program_pitch_name = entry<&UnitInformation::pitchName>,
        .get_selected_unit = entry<&UnitInformation::selectedUnit>,
        .select_unit = entry<&UnitInformation::selectUnit>,
        .get_unit_by_bus = entry<&UnitInformation::unitOfBus>,
        .set_unit_program_data = entry<&UnitInformation::setProgramData>,
    },
};

UnitInformation::UnitInformation(ComObject& object, Instance& instance)
    : ComInterface(kTable, object), instance_(instance) {}

std::int32_t UnitInformation::unitCount() noexcept {
    return instance_.parameters.unitCount();
}

v3_result UnitInformation::unitInfo(std::int32_t position, v3_unit_info* info) {
    return info && instance_.parameters.describeUnit(position, *info) ? V3_OK : V3_INVALID_ARG;
}

std::int32_t UnitInformation::programListCount() noexcept {
    return instance_.programs.count() > 0 ? 1 : 0;
}

v3_result UnitInformation::programListInfo(std::int32_t position, v3_program_list_info* info) {
    if (!info || position < 0 || position >= programListCount()) return V3_INVALID_ARG;
    *info = {};
    info->id = ParameterList::kProgramList;
    info->programCount = instance_.programs.count();
    writeUtf16("Presets", info->name);
    return V3_OK;
}

bool UnitInformation::has(std::int32_t list, std::int32_t program) const {
    return list == ParameterList::kProgramList && program >= 0 && program < instance_.programs.count();
}

v3_result UnitInformation::programName(std::int32_t list, std::int32_t program, std::int16_t* name) {
    if (!name || !has(list, program)) return V3_INVALID_ARG;
    writeUtf16(instance_.programs.name(program), name, kTextSize);
    return V3_OK;
}

v3_result UnitInformation::programInfo(std::int32_t, std::int32_t, const char*, std::int16_t*) noexcept {
    return V3_NOT_IMPLEMENTED;
}

v3_result UnitInformation::hasPitchNames(std::int32_t, std::int32_t) noexcept {
    return V3_FALSE;
}

v3_result UnitInformation::pitchName(std::int32_t, std::int32_t, std::int16_t, std::int16_t*) noexcept {
    return V3_FALSE;
}

std::int32_t UnitInformation::selectedUnit() noexcept {
    return selected_;
}

v3_result UnitInformation::selectUnit(std::int32_t unit) noexcept {
    if (unit < 0 || unit >= unitCount()) return V3_INVALID_ARG;
    selected_ = unit;
    return V3_OK;
}

v3_result UnitInformation::unitOfBus(std::int32_t mediaType, std::int32_t direction, std::int32_t index,
                                     std::int32_t, std::int32_t* unit) noexcept {
    if (!unit || index < 0 || index >= instance_.buses.count(mediaType, direction)) return V3_INVALID_ARG;
    *unit = ParameterList::kRootUnit;
    return V3_OK;
}

v3_result UnitInformation::setProgramData(std::int32_t, std::int32_t, v3_bstream**) noexcept {
    return V3_NOT_IMPLEMENTED;
}

// MIDI

const v3_midi_mapping_cpp MidiMapping::kTable{
    kUnknown,
    {.get_midi_controller_assignment = entry<&MidiMapping::controllerAssignment>},
};

MidiMapping::MidiMapping(ComObject& object) : ComInterface(kTable, object) {}

v3_result MidiMapping::controllerAssignment(std::int32_t bus, std::int16_t channel, std::int16_t controller,
                                            v3_param_id* id) noexcept {
    if (!id) return V3_INVALID_ARG;
    const bool isThere = bus == 0 && channel >= 0 && channel < kMidiChannels && controller >= 0 &&
                         controller < ParameterList::kControllers;
    if (!isThere) return V3_FALSE;
    *id = ParameterList::kFirstController + static_cast<v3_param_id>(controller);
    return V3_TRUE;
}

}  // namespace vanta::vst3
