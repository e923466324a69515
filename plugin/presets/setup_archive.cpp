#include "plugin/presets/setup_archive.hpp"

#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <ostream>
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

    /// A name that leads elsewhere is invalid.
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
    explicit Level(Bytes bytes) : rest_(bytes) {}

    /// Empty at the end of the level, and where the archive is cut or damaged: then `isSound` is false.
    std::optional<Record> next() {
        if (rest_.size() < kArchiveRecordSize) return fail();
        const auto nameLength = std::to_integer<std::size_t>(rest_[0]);
        if (nameLength == 0) return {};
        const std::int32_t size = integerAt(rest_, kArchiveSizeOffset);
        const std::int32_t second = integerAt(rest_, kArchiveSecondOffset);
        const Bytes behind = rest_.subspan(kArchiveRecordSize);
        if (nameLength >= kArchiveSizeOffset || size < 0 || second < -1) return fail();
        if (static_cast<std::size_t>(size) > behind.size()) return fail();
        rest_ = behind.subspan(static_cast<std::size_t>(size));
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

    Bytes rest_;
    bool isSound_ = true;
};

class Inflater {
public:
    explicit Inflater(Bytes compressed) {
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(compressed.data()));
        stream_.avail_in = static_cast<uInt>(compressed.size());
        isReady_ = ::inflateInit(&stream_) == Z_OK;
    }
    ~Inflater() { ::inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Whether the whole stream came to exactly `size` bytes and `put` took each piece of it.
    template <typename Put>
    bool inflate(std::uint32_t size, Put put) {
        std::array<Bytef, 16384> chunk;
        int state = isReady_ ? Z_OK : Z_STREAM_ERROR;
        while (state == Z_OK) {
            stream_.next_out = chunk.data();
            stream_.avail_out = chunk.size();
            state = ::inflate(&stream_, Z_NO_FLUSH);
            if (stream_.total_out > size) return false;
            if (!put(std::as_bytes(std::span(chunk)).first(chunk.size() - stream_.avail_out))) return false;
        }
        return state == Z_STREAM_END && stream_.total_out == size;
    }

private:
    z_stream stream_{};
    bool isReady_;
};

template <typename Put>
bool inflated(const Record& record, Put put) {
    return record.content.empty() || Inflater(record.content).inflate(record.fileSize, put);
}

bool extractFile(const Record& record, const std::filesystem::path& destination, bool overwrite) {
    std::error_code error;
    if (!overwrite && std::filesystem::exists(std::filesystem::symlink_status(destination, error)))
        return true;
    return replaceFile(destination, [&](std::ostream& file) {
        return inflated(record, [&](Bytes piece) {
            file.write(reinterpret_cast<const char*>(piece.data()),
                       static_cast<std::streamsize>(piece.size()));
            return file.good();
        });
    });
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

void readLevel(Bytes bytes, const std::string& path, int depth, std::vector<ArchivedFile>& files) {
    constexpr std::uint32_t kLargestFile = 1 << 20;
    Level level(bytes);
    while (const auto record = level.next()) {
        if (!record->hasPlainName() || depth > kDeepest) continue;
        if (record->isFolder) {
            readLevel(record->content, path + record->name + "/", depth + 1, files);
        } else if (record->fileSize <= kLargestFile) {
            ArchivedFile file{path + record->name, {}};
            const bool isWhole = inflated(*record, [&](Bytes piece) {
                file.bytes.insert(file.bytes.end(), piece.begin(), piece.end());
                return true;
            });
            if (isWhole) files.push_back(std::move(file));
        }
    }
}

/// The level after the header, if this is an archive.
std::optional<Level> topLevel(Bytes archive) {
    constexpr std::size_t kMagicSize = sizeof kArchiveMagic - 1;
    if (archive.size() < kArchiveHeaderSize) return {};
    if (std::memcmp(archive.data(), kArchiveMagic, kMagicSize) != 0) return {};
    return Level(archive.subspan(kArchiveHeaderSize));
}

bool isFolderNamed(const Record& record, const std::string& name) {
    return record.isFolder && equalsIgnoringCase(record.name, name);
}

}  // namespace

bool extractFolder(Bytes archive, const std::string& folderName, const std::filesystem::path& destination,
                   bool overwrite) {
    auto top = topLevel(archive);
    bool isFound = false;
    bool isComplete = true;
    while (const auto record = top ? top->next() : std::nullopt) {
        if (!isFolderNamed(*record, folderName)) continue;
        isFound = true;
        isComplete = extractLevel(record->content, destination, overwrite, 0) && isComplete;
    }
    return isFound && isComplete;
}

std::vector<ArchivedFile> readFolder(Bytes archive, const std::string& folderName) {
    std::vector<ArchivedFile> files;
    auto top = topLevel(archive);
    while (const auto record = top ? top->next() : std::nullopt) {
        if (isFolderNamed(*record, folderName)) readLevel(record->content, {}, 0, files);
    }
    return files;
}

}  // namespace vanta
