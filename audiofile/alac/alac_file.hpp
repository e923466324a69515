#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "audiofile/alac/alac_encoder.hpp"

namespace vanta {

/// Writes a CAF file of Apple Lossless.
class AlacFile {
public:
    /// Creates the file. Failure, without a name in front, if that cannot be done, as everything below
    /// throws.
    AlacFile(const std::filesystem::path& file, int sampleRate, int channels, int bits);

    /// Interleaved samples, with their bits on top.
    void write(std::span<const std::int32_t> samples);
    void finish();

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void put(const std::string& bytes);
    void putPacket();

    AlacEncoder encoder_;
    std::size_t width_;
    std::unique_ptr<std::FILE, Close> file_;
    std::vector<std::int32_t> pending_;
    std::vector<std::uint32_t> packetBytes_;
    std::uint64_t frames_ = 0;
    std::uint64_t dataBytes_ = 4;  ///< the edit count in front
    long sizeAt_ = 0;              ///< where the data chunk states it
};

}  // namespace vanta
