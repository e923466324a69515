#include "audiofile/metadata/chunk_updates.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vanta {

namespace {

/// A chunk's content, with numbers in it that may lie outside of a damaged one.
class Content {
public:
    Content(std::string& bytes, Endian endian, const AudioChange& change)
        : bytes_(bytes), endian_(endian), ratio_(static_cast<double>(change.toRate) / change.fromRate) {}

    bool has(std::size_t at, std::size_t width) const { return at + width <= bytes_.size(); }
    std::uint64_t number(std::size_t at, std::size_t width = 4) const {
        return has(at, width) ? unpacked(std::string_view(bytes_).substr(at, width), endian_) : 0;
    }
    void set(std::size_t at, std::uint64_t value, std::size_t width = 4) {
        if (has(at, width)) bytes_.replace(at, width, packed(value, width, endian_));
    }
    /// A position or length in samples.
    void scale(std::size_t at, std::size_t width = 4) {
        const double scaled = std::round(static_cast<double>(number(at, width)) * ratio_);
        const double most = width == 4 ? 4294967295.0 : 9.0e18;
        set(at, static_cast<std::uint64_t>(std::min(scaled, most)), width);
    }

private:
    std::string& bytes_;
    Endian endian_;
    double ratio_;
};

// EBU Tech 3285: offsets of the fields.
constexpr std::size_t kTimeReference = 338;
constexpr std::size_t kVersion = 346;
constexpr std::size_t kLoudness = 412;
constexpr std::size_t kCodingHistory = 602;

std::uint64_t hundredths(std::optional<double> value) {
    constexpr int kNotMeasured = 0x7FFF;
    const int number =
        value ? static_cast<int>(std::lround(std::clamp(*value, -327.0, 327.0) * 100.0)) : kNotMeasured;
    return static_cast<std::uint64_t>(number) & 0xFFFF;
}

void updateBroadcast(std::string& bytes, Content& content, const AudioChange& change) {
    if (bytes.size() < kCodingHistory) return;
    content.scale(kTimeReference, 8);
    const WrittenLoudness& loudness = change.loudness;
    // The fields are those of version 2; before, their place is reserved.
    if (loudness.integratedLufs)
        content.set(kVersion, std::max<std::uint64_t>(content.number(kVersion, 2), 2), 2);
    if (content.number(kVersion, 2) >= 2) {
        std::size_t at = kLoudness;
        for (const auto& value : {loudness.integratedLufs, loudness.rangeLu, loudness.truePeakDb,
                                  loudness.highestMomentaryLufs, loudness.highestShortTermLufs}) {
            content.set(at, hundredths(value), 2);
            at += 2;
        }
    }
    while (bytes.size() > kCodingHistory && bytes.back() == '\0') bytes.pop_back();
    if (bytes.size() > kCodingHistory && !bytes.ends_with("\r\n")) bytes += "\r\n";
    bytes += change.codingHistory + "\r\n";
}

void updateCues(Content& content) {
    constexpr std::size_t kPoint = 24;
    for (std::size_t at = 4; content.has(at, kPoint); at += kPoint) {
        content.scale(at + 4);
        content.scale(at + 20);
    }
}

void updateSampler(Content& content, const AudioChange& change) {
    constexpr std::size_t kHead = 36;
    constexpr std::size_t kLoop = 24;
    content.set(8, static_cast<std::uint64_t>(std::llround(1e9 / change.toRate)));
    const std::uint64_t loops = content.number(28);
    for (std::uint64_t i = 0; i < loops && content.has(kHead + i * kLoop, kLoop); ++i) {
        content.scale(kHead + i * kLoop + 8);
        content.scale(kHead + i * kLoop + 12);
    }
}

void updatePlayList(Content& content) {
    constexpr std::size_t kSegment = 12;
    for (std::size_t at = 4; content.has(at, kSegment); at += kSegment) content.scale(at + 4);
}

// AES46: eight timers of a name and a position.
void updateCartTimers(Content& content) {
    for (std::size_t i = 0; i < 8; ++i) content.scale(684 + 8 * i + 4);
}

/// The lengths of labelled regions.
void updateLabels(std::string_view bytes, Content& content) {
    if (!bytes.starts_with("adtl")) return;
    for (std::size_t at = 4; content.has(at, 8);) {
        const std::uint64_t size = content.number(at + 4);
        if (bytes.substr(at, 4) == "ltxt") content.scale(at + 12);
        if (size > bytes.size()) return;
        at += 8 + size + size % 2;
    }
}

/// AIFF: number, position and name of each, the name with its length in front and of even size.
void updateMarkers(Content& content) {
    for (std::size_t at = 2; content.has(at, 7);) {
        content.scale(at + 2);
        const std::uint64_t name = content.number(at + 6, 1) + 1;
        at += 6 + name + name % 2;
    }
}

void replaceElement(std::string& xml, std::string_view name, int value) {
    if (value == 0) return;
    const std::string open = fmt::format("<{}>", name);
    const std::size_t begin = xml.find(open);
    const std::size_t end = xml.find(fmt::format("</{}>", name), std::min(begin, xml.size()));
    if (end == std::string::npos) return;
    xml.replace(begin + open.size(), end - begin - open.size(), fmt::format("{}", value));
}

}  // namespace

std::string updatedChunk(std::string_view name, std::string bytes, Endian endian, const AudioChange& change) {
    Content content(bytes, endian, change);
    if (name == "bext") updateBroadcast(bytes, content, change);
    if (name == "iXML") {
        replaceElement(bytes, "FILE_SAMPLE_RATE", change.toRate);
        replaceElement(bytes, "AUDIO_BIT_DEPTH", change.bits);
    }
    if (change.fromRate == change.toRate) return bytes;
    if (name == "cue ") updateCues(content);
    if (name == "smpl") updateSampler(content, change);
    if (name == "plst") updatePlayList(content);
    if (name == "cart") updateCartTimers(content);
    if (name == "LIST") updateLabels(bytes, content);
    if (name == "MARK") updateMarkers(content);
    return bytes;
}

}  // namespace vanta
