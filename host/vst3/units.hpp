#pragma once

#include <travesty/edit_controller.h>
#include <travesty/unit.h>

#include "host/vst3/instance.hpp"

namespace vanta::vst3 {

/// The groups of parameters, and the presets as a list of programs. The host's main thread.
class UnitInformation final : public ComInterface {
public:
    UnitInformation(ComObject& object, Instance& instance);

    std::int32_t unitCount() noexcept;
    v3_result unitInfo(std::int32_t position, v3_unit_info* info);
    std::int32_t programListCount() noexcept;
    v3_result programListInfo(std::int32_t position, v3_program_list_info* info);
    v3_result programName(std::int32_t list, std::int32_t program, std::int16_t* name);
    v3_result programInfo(std::int32_t list, std::int32_t program, const char* attribute,
                          std::int16_t* value) noexcept;
    v3_result hasPitchNames(std::int32_t list, std::int32_t program) noexcept;
    v3_result pitchName(std::int32_t list, std::int32_t program, std::int16_t pitch,
                        std::int16_t* name) noexcept;
    std::int32_t selectedUnit() noexcept;
    v3_result selectUnit(std::int32_t unit) noexcept;
    v3_result unitOfBus(std::int32_t mediaType, std::int32_t direction, std::int32_t index,
                        std::int32_t channel, std::int32_t* unit) noexcept;
    v3_result setProgramData(std::int32_t list, std::int32_t program, v3_bstream** data) noexcept;

private:
    static const v3_unit_information_cpp kTable;

    bool has(std::int32_t list, std::int32_t program) const;

    Instance& instance_;
    int selected_ = ParameterList::kRootUnit;
};

/// Which parameter stands for a MIDI controller: the same one on every channel. The host's main thread.
class MidiMapping final : public ComInterface {
public:
    explicit MidiMapping(ComObject& object);

    v3_result controllerAssignment(std::int32_t bus, std::int16_t channel, std::int16_t controller,
                                   v3_param_id* id) noexcept;

private:
    static const v3_midi_mapping_cpp kTable;
};

}  // namespace vanta::vst3
