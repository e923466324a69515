#include "plugin/presets/setup_archive.hpp"

#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "foundation/file_replacement.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

using Bytes = std::span<const std::byte>;

/// No tree of presets is deeper; a damaged archive may pretend to be.
constexpr int kDeepest = 16;

struct Record {
    std::string name;
    bool isFolder;
    std::uint32_t fileSize;  ///< of a file, when it is inflated
    Bytes content;

    /// A name that leads elsewhere is none.
    bool hasPlainName() const {
        return name != "." && name != ".." &&
               name.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos;
    }
};

std::int32_t integerAt(Bytes bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value |= std::to_integer<std::uint32_t>(bytes[offset + i]) << (8 * i);
    return static_cast<std::int32_t>(value);
}

/// The records of one level, one after the other.
class Level {
public:
    explicit Level(Bytes bytes) : rest(bytes) {}

    /// Empty at the end of the level, and where the archive is cut or damaged: then `isSound` is false.
    std::optional<Record> next() {
        if (rest.size() < kArchiveRecordSize) return fail();
        const auto nameLength = std::to_integer<std::size_t>(rest[0]);
        if (nameLength == 0) return {};
        const std::int32_t size = integerAt(rest, kArchiveSizeOffset);
        const std::int32_t second = integerAt(rest, kArchiveSecondOffset);
        const Bytes behind = rest.subspan(kArchiveRecordSize);
        if (nameLength >= kArchiveSizeOffset || size < 0 || second < -1) return fail();
        if (static_cast<std::size_t>(size) > behind.size()) return fail();
        rest = behind.subspan(static_cast<std::size_t>(size));
        const char* name = reinterpret_cast<const char*>(behind.data()) - kArchiveRecordSize + 1;
        return Record{{name, nameLength},
                      second == -1,
                      static_cast<std::uint32_t>(second),
                      behind.first(static_cast<std::size_t>(size))};
    }
    bool isSound() const { return isSound_; }

private:
    std::optional<Record> fail() {
        isSound_ = false;
        return {};
    }

    Bytes rest;
    bool isSound_ = true;
};

class Inflater {
public:
    explicit Inflater(Bytes compressed) {
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(compressed.data()));
        stream.avail_in = static_cast<uInt>(compressed.size());
        isReady = ::inflateInit(&stream) == Z_OK;
    }
    ~Inflater() { ::inflateEnd(&stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Whether the whole stream came to exactly `size` bytes and reached `out`.
    bool writeTo(std::ostream& out, std::uint32_t size) {
        std::array<Bytef, 16384> chunk;
        int state = isReady ? Z_OK : Z_STREAM_ERROR;
        while (state == Z_OK) {
            stream.next_out = chunk.data();
            stream.avail_out = chunk.size();
            state = ::inflate(&stream, Z_NO_FLUSH);
            if (stream.total_out > size) return false;
            out.write(reinterpret_cast<const char*>(chunk.data()),
                      static_cast<std::streamsize>(chunk.size() - stream.avail_out));
            if (!out) return false;
        }
        return state == Z_STREAM_END && stream.total_out == size;
    }

private:
    z_stream stream{};
    bool isReady;
};

bool extractFile(const Record& record, const std::filesystem::path& destination, bool overwrite) {
    std::error_code error;
    if (!overwrite && std::filesystem::exists(std::filesystem::symlink_status(destination, error)))
        return true;
    FileReplacement replacement(destination);
    if (replacement.temporary().empty()) return false;
    std::ofstream file(replacement.temporary(), std::ios::binary);
    const bool isWhole = record.content.empty() || Inflater(record.content).writeTo(file, record.fileSize);
    file.close();
    return isWhole && file && replacement.commit();
}

bool makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return std::filesystem::is_directory(folder, error);
}

bool extractLevel(Bytes bytes, const std::filesystem::path& destination, bool overwrite, int depth) {
    if (depth > kDeepest || !makeFolder(destination)) return false;
    Level level(bytes);
    bool isComplete = true;
    while (const auto record = level.next()) {
        const std::filesystem::path target = destination / record->name;
        const bool isWritten = record->hasPlainName() &&
                               (record->isFolder ? extractLevel(record->content, target, overwrite, depth + 1)
                                                 : extractFile(*record, target, overwrite));
        isComplete = isWritten && isComplete;
    }
    return isComplete && level.isSound();
}

}  // namespace

bool extractFolder(Bytes archive, const std::string& folderName, const std::filesystem::path& destination,
                   bool overwrite) {
    constexpr std::size_t kMagicSize = sizeof kArchiveMagic - 1;
    if (archive.size() < kArchiveHeaderSize) return false;
    if (std::memcmp(archive.data(), kArchiveMagic, kMagicSize) != 0) return false;
    Level top(archive.subspan(kArchiveHeaderSize));
    bool isFound = false;
    bool isComplete = true;
    while (const auto record = top.next()) {
        if (!record->isFolder || !equalsIgnoringCase(record->name, folderName)) continue;
        isFound = true;
        isComplete = extractLevel(record->content, destination, overwrite, 0) && isComplete;
    }
    return isFound && isComplete;
}

}  // namespace vanta
