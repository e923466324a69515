// Sessions.

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/aax/aax_plugin_adapter.hpp"
#include "host/aax/host_parameter.hpp"
#include "host/unified/host_position.hpp"

namespace vanta {
namespace {

constexpr std::array kChunks{AaxPluginAdapter::kValuesChunk, AaxPluginAdapter::kNameChunk};

constexpr std::uint32_t kNameChunkSize = 122;
constexpr std::size_t kNameBytes = 64;
constexpr int kNameCompared = 63;
constexpr std::int32_t kValuesVersion = -1;
/// Values are told apart by their place in the list.
const std::string kNoName;

/// Values of the model within this distance of a host's are what the host has made of them.
constexpr double kEcho = 2.77e-5;

std::array<char, kNameBytes> nameBytes(const std::string& name) {
    std::array<char, kNameBytes> bytes{};
    std::copy_n(name.data(), std::min(name.size(), kNameBytes), bytes.data());
    return bytes;
}

void writeHeader(AAX_SPlugInChunk& chunk, AAX_CTypeID id, std::uint32_t size, std::string_view name) {
    // Who made the chunk says the host.
    chunk.size = static_cast<std::int32_t>(size);
    chunk.chunkId = id;
    std::fill_n(chunk.name, AAX_SPlugInChunk::kNameLength, '\0');
    std::copy_n(name.data(), std::min(name.size(), AAX_SPlugInChunk::kNameLength - 1), chunk.name);
    std::fill_n(chunk.data(), size - static_cast<std::uint32_t>(AAX_kChunkHeaderSize), '\0');
}

/// Bytes behind the header.
std::size_t dataSize(const AAX_SPlugInChunk& chunk) {
    return static_cast<std::size_t>(std::max(chunk.size - AAX_kChunkHeaderSize, 0));
}

bool isContinuous(const AbstractPluginParameter& parameter) {
    return parameter.kind() == AbstractPluginParameter::Kind::Float;
}

/// The next value of a list, in the host's numbers.
std::optional<double> nextNumber(AAX_CChunkDataParser& list, const AbstractPluginParameter& parameter) {
    double number = 0.0;
    std::int32_t index = 0;
    if (isContinuous(parameter))
        return list.FindDouble(kNoName, &number) ? std::optional(number) : std::nullopt;
    return list.FindInt32(kNoName, &index) ? std::optional(static_cast<double>(index)) : std::nullopt;
}

}  // namespace

AAX_Result AaxPluginAdapter::GetNumberOfChunks(std::int32_t* count) const {
    if (!count) return AAX_ERROR_NULL_OBJECT;
    *count = static_cast<std::int32_t>(kChunks.size());
    return AAX_SUCCESS;
}

AAX_Result AaxPluginAdapter::GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const {
    if (index < 0 || index >= static_cast<std::int32_t>(kChunks.size())) return AAX_ERROR_INVALID_CHUNK_INDEX;
    if (!id) return AAX_ERROR_NULL_OBJECT;
    *id = kChunks[static_cast<std::size_t>(index)];
    return AAX_SUCCESS;
}

/// What is heard, which is what the host has set last; or the model's where the host has yet to answer.
double AaxPluginAdapter::chunkNumber(int index) const {
    const AbstractPluginParameter& shown = *model().parameterAt(index);
    const AbstractPluginParameter& heard = *processor().parameterAt(index);
    const double distance = hostPosition(shown, shown.value()) - hostPosition(heard, heard.value());
    return hostNumber(shown, std::abs(distance) > kEcho ? shown.value() : heard.value());
}

AAX_CChunkDataParser AaxPluginAdapter::valuesForChunk() {
    // What is heard already.
    takeAllThatWaits();
    AAX_CChunkDataParser list;
    for (int i = 0; i < model().parameterCount(); ++i) {
        if (IsFiltered(aaxParameterId(i).c_str())) continue;
        if (isContinuous(*model().parameterAt(i))) {
            list.AddDouble(kNoName, chunkNumber(i));
        } else {
            list.AddInt32(kNoName, static_cast<std::int32_t>(chunkNumber(i)));
        }
    }
    return list;
}

AAX_Result AaxPluginAdapter::GetChunkSize(AAX_CTypeID id, std::uint32_t* size) {
    return guarded([&] {
        if (!isReady() || !size) return AAX_ERROR_NULL_OBJECT;
        if (id == kNameChunk) {
            *size = kNameChunkSize;
        } else if (id == kValuesChunk) {
            *size = static_cast<std::uint32_t>(AAX_kChunkHeaderSize) +
                    static_cast<std::uint32_t>(valuesForChunk().GetChunkDataSize());
            announcedSize_ = *size;
        } else {
            return AAX_ERROR_INVALID_CHUNK_ID;
        }
        return AAX_SUCCESS;
    });
}

AAX_Result AaxPluginAdapter::GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) {
    return guarded([&] {
        if (!isReady() || !chunk) return AAX_ERROR_NULL_OBJECT;
        if (id == kNameChunk) {
            writeHeader(*chunk, id, kNameChunkSize, "Quillmark Preset Name");
            const auto name = nameBytes(model().presetState().name());
            std::memcpy(chunk->data(), name.data(), name.size());
            return AAX_SUCCESS;
        }
        if (id != kValuesChunk) return AAX_ERROR_INVALID_CHUNK_ID;
        const AAX_CChunkDataParser list = valuesForChunk();
        const auto size = static_cast<std::uint32_t>(AAX_kChunkHeaderSize) +
                          static_cast<std::uint32_t>(list.GetChunkDataSize());
        // The host's room is as large as it was told.
        if (size != announcedSize_) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
        writeHeader(*chunk, id, size, "Complete Controls State");
        chunk->version = kValuesVersion;
        list.GetChunkData(chunk->data());
        return AAX_SUCCESS;
    });
}

AAX_Result AaxPluginAdapter::SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) {
    return guarded([&] {
        if (!isReady() || !chunk) return AAX_ERROR_NULL_OBJECT;
        if (id == kNameChunk) return takeName(*chunk);
        return id == kValuesChunk ? takeValues(*chunk) : AAX_ERROR_INVALID_CHUNK_ID;
    });
}

AAX_Result AaxPluginAdapter::takeName(const AAX_SPlugInChunk& chunk) {
    if (dataSize(chunk) < kNameBytes) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
    const char* const end = std::find(chunk.data(), chunk.data() + kNameBytes, '\0');
    model().setPresetName(std::string(chunk.data(), end), kNameCompared);
    return AAX_SUCCESS;
}

AAX_Result AaxPluginAdapter::takeValues(const AAX_SPlugInChunk& chunk) {
    AAX_CChunkDataParser list;
    if (!list.LoadChunk(chunk.data(), dataSize(chunk))) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
    // What the list lacks stays as it is; a search beyond its end would begin anew.
    std::size_t left = list.GetNumberOfValues();
    State state = model().captureState();
    std::vector<std::pair<AAX_IParameter*, double>> found;
    for (int i = 0; i < model().parameterCount() && left > 0; ++i) {
        const std::string id = aaxParameterId(i);
        if (IsFiltered(id.c_str())) continue;
        --left;
        const AbstractPluginParameter& parameter = *model().parameterAt(i);
        const auto number = nextNumber(list, parameter);
        if (!number || !std::isfinite(*number)) continue;
        float& value = state.values[static_cast<std::size_t>(i)];
        const float own = std::clamp(ownNumber(parameter, *number), parameter.minimum(), parameter.maximum());
        state.preset.modified |= value != own;
        value = own;
        found.emplace_back(GetParameter(id.c_str()), hostNumber(parameter, own));
    }
    // Both sides at once, and to the last bit: the host's answers follow one by one, and may follow late.
    model().restoreState(std::move(state));
    for (const auto& [parameter, number] : found) {
        if (!parameter->SetValueWithFloat(static_cast<float>(number)))
            parameter->SetValueWithInt32(static_cast<std::int32_t>(number));
    }
    return AAX_SUCCESS;
}

AAX_Result AaxPluginAdapter::CompareActiveChunk(const AAX_SPlugInChunk* chunk, bool* equal) {
    return guarded([&] {
        if (!isReady() || !chunk || !equal) return AAX_ERROR_NULL_OBJECT;
        *equal = true;
        if (chunk->chunkId == kNameChunk) {
            const auto name = nameBytes(model().presetState().name());
            *equal = dataSize(*chunk) >= name.size() && std::equal(name.begin(), name.end(), chunk->data());
        } else if (chunk->chunkId == kValuesChunk) {
            *equal = hasValuesOf(*chunk);
        }
        return AAX_SUCCESS;
    });
}

bool AaxPluginAdapter::hasValuesOf(const AAX_SPlugInChunk& chunk) {
    takeAllThatWaits();
    AAX_CChunkDataParser list;
    if (!list.LoadChunk(chunk.data(), dataSize(chunk))) return false;
    std::size_t left = list.GetNumberOfValues();
    for (int i = 0; i < model().parameterCount(); ++i) {
        if (IsFiltered(aaxParameterId(i).c_str())) continue;
        const auto number = left-- > 0 ? nextNumber(list, *model().parameterAt(i)) : std::nullopt;
        if (!number) return false;
        if (static_cast<float>(*number) != static_cast<float>(chunkNumber(i))) return false;
    }
    return true;
}

}  // namespace vanta
