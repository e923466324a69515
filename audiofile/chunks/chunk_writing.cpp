#include "audiofile/chunks/chunk_writing.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "audiofile/chunks/chunk_list.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

constexpr std::uint64_t kPiece = 1 << 20;

/// An open file that is read and written at offsets.
class Bytes {
public:
    explicit Bytes(const std::filesystem::path& path) : file_(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {
        if (file_ < 0) fail();
    }
    ~Bytes() { ::close(file_); }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    std::uint64_t length() const {
        const off_t end = ::lseek(file_, 0, SEEK_END);
        if (end < 0) fail();
        return static_cast<std::uint64_t>(end);
    }

    void read(std::uint64_t offset, std::span<char> bytes) const {
        transfer(offset, bytes.size(), [&](std::size_t at, off_t position) {
            return ::pread(file_, bytes.data() + at, bytes.size() - at, position);
        });
    }

    void write(std::uint64_t offset, std::string_view bytes) const {
        transfer(offset, bytes.size(), [&](std::size_t at, off_t position) {
            return ::pwrite(file_, bytes.data() + at, bytes.size() - at, position);
        });
    }

    /// Moves all from `offset` on by `distance`, the end first, so that nothing is overwritten before it has
    /// moved.
    void makeRoom(std::uint64_t offset, std::uint64_t distance) const {
        std::vector<char> piece(kPiece);
        for (std::uint64_t end = length(); end > offset;) {
            const std::uint64_t count = std::min(kPiece, end - offset);
            end -= count;
            read(end, std::span(piece).first(count));
            write(end + distance, std::string_view(piece.data(), count));
        }
    }

private:
    [[noreturn]] static void fail() { throw Failure(std::strerror(errno)); }

    template <typename Step>
    static void transfer(std::uint64_t offset, std::size_t size, const Step& step) {
        for (std::size_t at = 0; at < size;) {
            const ssize_t done = step(at, static_cast<off_t>(offset + at));
            if (done == 0) throw Failure("it is shorter than it was");
            if (done < 0 && errno != EINTR) fail();
            if (done > 0) at += static_cast<std::size_t>(done);
        }
    }

    int file_;
};

/// Where the length of the whole file stands.
struct LengthField {
    std::uint64_t offset;
    std::size_t width;   ///< 0: there is none
    std::uint64_t less;  ///< the length is counted without so many bytes in front
};

LengthField lengthFieldOf(const ChunkList& list) {
    if (const Chunk* large = list.find("ds64")) return {large->begin, 8, 8};
    switch (list.format->family) {
        case ChunkFormat::Wave64:
            return {16, 8, 0};
        case ChunkFormat::Caf:
            return {0, 0, 0};
        default:
            return {4, 4, 8};
    }
}

}  // namespace

void writeRange(const std::filesystem::path& path, std::uint64_t offset, std::string_view bytes,
                bool insert) {
    const Bytes file(path);
    if (insert) file.makeRoom(offset, bytes.size());
    file.write(offset, bytes);
}

void updateLength(const std::filesystem::path& path) {
    const ChunkList list = listChunks(path);
    if (!list.format) return;
    const LengthField field = lengthFieldOf(list);
    if (field.width == 0) return;
    const std::uint64_t stated = list.length - field.less;
    if (field.width == 4 && stated > 0xFFFFFFFF)
        throw Failure("with its tags and chunks it exceeds 4 GB: choose rf64 or caf");
    Bytes(path).write(field.offset, packed(stated, field.width, list.format->endian));
}

void addChunks(const std::filesystem::path& path, std::span<const NewChunk> chunks) {
    const ChunkList list = listChunks(path);
    const Chunk* audio = list.audio();
    if (!audio) throw Failure("it has no audio to add chunks to");
    // libsndfile counts all that stands behind the audio of a Wave64 as part of it.
    const bool endsWithAudio = list.format->family == ChunkFormat::Wave64;
    std::string before;
    const std::uint64_t end = list.chunks.back().end();
    std::string behind(endsWithAudio ? 0 : list.format->padding(end), '\0');
    const bool isLarge = list.find("ds64");
    for (const NewChunk& chunk : chunks) {
        // libsndfile loses its way in an RF64 after a chunk of odd size.
        const bool stays = chunk.beforeAudio && !(isLarge && chunk.content.size() % 2);
        (stays || endsWithAudio ? before : behind) += list.format->chunk(chunk.name, chunk.content);
    }
    // Not at the end of the file, as some have a byte too many.
    if (!endsWithAudio) writeRange(path, end, behind);
    if (!before.empty()) writeRange(path, audio->header, before, true);
    updateLength(path);
}

}  // namespace vanta
