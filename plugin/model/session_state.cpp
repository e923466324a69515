#include "plugin/model/session_state.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "foundation/binary_data.hpp"
#include "plugin/model/generic_plugin.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {
namespace {

const std::string kTag = "QMSt";
constexpr int kVersion = 1;
constexpr std::size_t kNameBytes = 64;
/// More parameters than any plug-in has: a larger count is damage.
constexpr int kMaxCount = 1 << 16;

enum ValueType : int { Float, Index };

struct Record {
    std::vector<std::optional<float>> values;  ///< own numbers; empty where there was nothing usable
    PresetState::Values preset;
};

struct Session {
    Record present;
    CompareStates::Contents compare;
};

// Writing

void writeName(BinaryDataWriter& writer, const std::string& name) {
    std::array<char, kNameBytes> bytes{};
    // The last byte stays 0 for readers that want a terminated text.
    std::memcpy(bytes.data(), name.data(), std::min(name.size(), kNameBytes - 1));
    writer.stream().write(bytes.data(), kNameBytes);
}

void writeRecord(BinaryDataWriter& writer, const GenericPlugin& plugin, const std::vector<float>& values,
                 const PresetState::Values& preset) {
    writer.writeInt(static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const AbstractPluginParameter& parameter = *plugin.parameterAt(static_cast<int>(i));
        if (parameter.kind() == AbstractPluginParameter::Kind::Indexed) {
            writer.writeInt(Index);
            writer.writeInt(static_cast<int>(values[i] - parameter.minimum()));
        } else {
            writer.writeInt(Float);
            writer.writeFloat(values[i]);
        }
    }
    writer.writeInt(preset.modified);
    writeName(writer, preset.name);
}

// Reading

std::string readName(BinaryDataReader& reader) {
    std::array<char, kNameBytes> bytes{};
    reader.stream().read(bytes.data(), kNameBytes);
    return std::string(bytes.data(), strnlen(bytes.data(), kNameBytes));
}

std::optional<float> readValue(BinaryDataReader& reader, const AbstractPluginParameter* parameter) {
    const int type = reader.readInt();
    const bool indexed = parameter && parameter->kind() == AbstractPluginParameter::Kind::Indexed;
    if (type == Index) {
        const auto index = static_cast<float>(reader.readInt());
        return indexed ? std::optional(index + parameter->minimum()) : std::nullopt;
    }
    const float value = reader.readFloat();
    if (type != Float || !parameter || indexed) return {};
    return std::isfinite(value) ? value : parameter->defaultValue();
}

std::optional<Record> readRecord(BinaryDataReader& reader, const GenericPlugin& plugin) {
    Record record;
    record.values.resize(static_cast<std::size_t>(plugin.parameterCount()));
    const int count = reader.readInt();
    if (count < 0 || count > kMaxCount) return {};
    for (int i = 0; i < count && !reader.failed(); ++i) {
        const bool known = i < plugin.parameterCount();
        const auto value = readValue(reader, known ? plugin.parameterAt(i) : nullptr);
        if (known) record.values[static_cast<std::size_t>(i)] = value;
    }
    record.preset.modified = reader.readInt() != 0;
    record.preset.name = readName(reader);
    if (reader.failed()) return {};
    return record;
}

/// With the path of the preset of this name, if there is one.
PresetState::Values located(PresetState::Values preset, const GenericPlugin& plugin) {
    if (const auto entry = plugin.statics().findPreset(preset.name, false)) preset.path = entry->path;
    return preset;
}

/// What a slot holds: the record's values over those of the plug-in, in the ranges of its parameters.
State slotFrom(const Record& record, const GenericPlugin& plugin, int slot) {
    State state;
    state.preset = located(record.preset, plugin);
    state.compareIndex = slot;
    state.values = plugin.parameterValues();
    for (std::size_t i = 0; i < record.values.size(); ++i) {
        if (!record.values[i]) continue;
        // Nobody sets a value that lies in a slot, which would bring it into its range.
        const AbstractPluginParameter& parameter = *plugin.parameterAt(static_cast<int>(i));
        state.values[i] = std::clamp(*record.values[i], parameter.minimum(), parameter.maximum());
    }
    return state;
}

std::optional<Session> readSession(BinaryDataReader& reader, const GenericPlugin& plugin) {
    if (!reader.expectHeader(kTag) || reader.version() < kVersion) return {};
    Session session;
    auto present = readRecord(reader, plugin);
    if (!present) return {};
    session.present = std::move(*present);
    CompareStates::Contents& compare = session.compare;
    compare.current = reader.readInt();
    compare.modified = reader.readInt() != 0;
    compare.initialized = reader.readInt() != 0;
    if (reader.failed() || compare.current < 0 || compare.current >= CompareStates::kSlots) return {};
    for (int i = 0; i < CompareStates::kSlots && compare.initialized; ++i) {
        const auto slot = readRecord(reader, plugin);
        if (!slot) return {};
        compare.slots[static_cast<std::size_t>(i)] = slotFrom(*slot, plugin, i);
    }
    return session;
}

}  // namespace

std::vector<std::byte> writeSessionState(GenericPlugin& plugin) {
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    writer.writeHeader(kTag, kVersion);
    writeRecord(writer, plugin, plugin.parameterValues(), plugin.presetState().values());
    const CompareStates::Contents compare = plugin.compareStates().contents();
    writer.writeInt(compare.current);
    writer.writeInt(compare.modified);
    writer.writeInt(compare.initialized);
    if (compare.initialized) {
        for (const State& slot : compare.slots) writeRecord(writer, plugin, slot.values, slot.preset);
    }
    const std::string bytes = std::move(stream).str();
    const auto* first = reinterpret_cast<const std::byte*>(bytes.data());
    return {first, first + bytes.size()};
}

bool readSessionState(GenericPlugin& plugin, std::span<const std::byte> bytes) {
    BinaryMemoryReader reader(bytes);
    auto session = readSession(reader, plugin);
    if (!session) return false;
    State state = plugin.captureState();
    for (std::size_t i = 0; i < state.values.size(); ++i) {
        if (session->present.values[i]) state.values[i] = *session->present.values[i];
    }
    state.preset = located(session->present.preset, plugin);
    // Everything is at hand: from here on nothing can run out of memory half-way.
    plugin.compareStates().setContents(std::move(session->compare));
    plugin.restoreState(std::move(state));
    return true;
}

bool readSessionSurroundings(GenericPlugin& plugin, std::span<const std::byte> bytes) {
    BinaryMemoryReader reader(bytes);
    auto session = readSession(reader, plugin);
    if (!session) return false;
    PresetState::Values preset = located(std::move(session->present.preset), plugin);
    plugin.compareStates().setContents(std::move(session->compare));
    plugin.presetState().set(std::move(preset));
    plugin.owner().notify(PresetChanged{});
    plugin.owner().notify(ParameterChanged{});
    return true;
}

}  // namespace vanta
