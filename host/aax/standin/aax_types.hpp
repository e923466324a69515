#pragma once

#include <cstddef>
#include <cstdint>

// Words that both sides of the interface share.

using AAX_Result = std::int32_t;

inline constexpr AAX_Result AAX_SUCCESS = 0;
inline constexpr AAX_Result AAX_ERROR_INVALID_PARAMETER_ID = -20001;
inline constexpr AAX_Result AAX_ERROR_NULL_OBJECT = -20004;
inline constexpr AAX_Result AAX_ERROR_INVALID_CHUNK_INDEX = -20006;
inline constexpr AAX_Result AAX_ERROR_INVALID_CHUNK_ID = -20007;
inline constexpr AAX_Result AAX_ERROR_INCORRECT_CHUNK_SIZE = -20008;
inline constexpr AAX_Result AAX_ERROR_UNIMPLEMENTED = -20009;
// Of this stand-in's own.
inline constexpr AAX_Result AAX_ERROR_EXCEPTION = -20900;         ///< memory or the like ran out
inline constexpr AAX_Result AAX_ERROR_INVALID_ARGUMENT = -20901;  ///< a value that makes no sense
inline constexpr AAX_Result AAX_ERROR_NO_AUDIO = -20902;          ///< the host delivers none

/// The number of a parameter, as text.
using AAX_CParamID = const char*;
/// Four characters, the first in the highest byte.
using AAX_CTypeID = std::uint32_t;
/// Of a field of the render context.
using AAX_CFieldIndex = std::int32_t;
/// Hz
using AAX_CSampleRate = float;
/// The number of channels in the lower 16 bits.
using AAX_EStemFormat = std::uint32_t;

constexpr AAX_CTypeID AAX_FourChars(const char (&text)[5]) {
    AAX_CTypeID id = 0;
    for (int i = 0; i < 4; ++i) id = id << 8 | static_cast<unsigned char>(text[i]);
    return id;
}

inline constexpr AAX_EStemFormat AAX_eStemFormat_Mono = 0x1;
inline constexpr AAX_EStemFormat AAX_eStemFormat_Stereo = 0x10002;
constexpr int AAX_StemChannelCount(AAX_EStemFormat format) {
    return static_cast<int>(format & 0xffff);
}

/// Of properties, as far as their meaning is known.
inline constexpr std::int32_t AAX_eProperty_ManufacturerID = 11;
inline constexpr std::int32_t AAX_eProperty_ProductID = 12;
inline constexpr std::int32_t AAX_eProperty_PlugInID_Native = 13;
inline constexpr std::int32_t AAX_eProperty_PlugInID_AudioSuite = 14;
inline constexpr std::int32_t AAX_eProperty_InputStemFormat = 51;
inline constexpr std::int32_t AAX_eProperty_OutputStemFormat = 52;

/// A piece of a session. The data follow the header; `size` counts both.
struct AAX_SPlugInChunk {
    static constexpr std::size_t kNameLength = 32;

    std::int32_t size;  ///< bytes
    std::int32_t version;
    AAX_CTypeID manufacturerId;
    AAX_CTypeID productId;
    AAX_CTypeID plugInId;
    AAX_CTypeID chunkId;
    char name[kNameLength];

    char* data() { return reinterpret_cast<char*>(this + 1); }
    const char* data() const { return reinterpret_cast<const char*>(this + 1); }
};
inline constexpr std::int32_t AAX_kChunkHeaderSize = sizeof(AAX_SPlugInChunk);
static_assert(AAX_kChunkHeaderSize == 56);

/// A MIDI message within a block.
struct AAX_CMidiPacket {
    std::uint32_t timestamp;  ///< samples from the start of the block
    std::uint32_t length;     ///< bytes of data that are used
    std::uint8_t data[4];
};
struct AAX_CMidiStream {
    std::uint32_t count;
    const AAX_CMidiPacket* packets;
};

struct AAX_Point {
    float vertical;
    float horizontal;
};
