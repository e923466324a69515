#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "plugin/model/generic_plugin.hpp"

// What a plug-in and an interface that cannot reach it say to each other. All numbers are 4 bytes and
// little-endian; texts of bytes have their size before them.
namespace vanta {

/// What belongs to an instance beside the values of its parameters.
struct Lv2Surroundings {
    /// Of a session state; see plugin/model/session_state.hpp.
    enum class Kind : int {
        None,
        ButValues,  ///< preset and compare slots count
        Whole,
    };
    Kind kind = Kind::None;
    std::vector<std::byte> session;
    std::vector<std::byte> controllers;  ///< the map of MIDI controllers; empty: as it is
};

/// From an interface, when something has changed and now and then, so that the plug-in knows that it is
/// there: "VLir", version 1, then the fields in order.
struct Lv2Report {
    std::int32_t interface = 0;  ///< another for each
    std::int32_t heard = 0;      ///< number of the last news that it has taken over
    std::int32_t number = 0;     ///< of a report that says something, above 0
    bool isLeaving = false;
    std::vector<std::uint8_t> commands;  ///< to the level sources; each travels as an integer
    Lv2Surroundings surroundings;
};

/// From a plug-in, when something has changed: "VLpn", version 1, then the fields in order.
struct Lv2News {
    std::int32_t number = 0;
    std::int32_t heard = 0;  ///< number of the last report that it has taken over
    float sampleRate = 0.0f;
    std::int32_t controller = -1;                        ///< that was moved
    std::vector<std::pair<std::int32_t, float>> values;  ///< index, and value in own numbers
    Lv2Surroundings surroundings;
};

/// From a plug-in, some 30 times a second: "VLpl", version 1, then the fields in order.
struct Lv2Levels {
    std::int32_t heard = 0;
    std::vector<std::byte> thinned;  ///< see thinned_levels.hpp; up to the end of the message
};

std::vector<std::byte> bytesOf(const Lv2Report& report);
std::vector<std::byte> bytesOf(const Lv2News& news);
std::vector<std::byte> bytesOf(const Lv2Levels& levels);
/// Nothing if the bytes are not such a message, or end early.
std::optional<Lv2Report> readReport(std::span<const std::byte> bytes);
std::optional<Lv2News> readNews(std::span<const std::byte> bytes);
std::optional<Lv2Levels> readLevels(std::span<const std::byte> bytes);

/// What is compared to see whether the other end must hear of it.
struct Lv2Standing {
    PresetState::Values preset;  ///< without its path
    int slot = 0;
    bool slotsModified = false;
    bool slotsFilled = false;
    std::string otherPreset;
    std::vector<float> otherValues;
    std::vector<std::byte> controllers;

    explicit Lv2Standing(GenericPlugin& model);
    Lv2Standing() = default;
    bool operator==(const Lv2Standing&) const = default;
};

/// Gives the processors of this process the map of MIDI controllers that the bytes hold.
void takeControllers(GenericPlugin& model, std::span<const std::byte> bytes);

}  // namespace vanta
