#include "audiofile/metadata/metadata_transfer.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "audiofile/chunks/chunk_list.hpp"
#include "audiofile/chunks/chunk_writing.hpp"
#include "audiofile/metadata/chunk_texts.hpp"
#include "audiofile/metadata/flac_blocks.hpp"
#include "audiofile/metadata/id3_tag.hpp"
#include "audiofile/metadata/tag_files.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;
using Family = ChunkFormat::Family;

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

/// Chunks that describe the coding of their own file's audio, hold room for others or pictures of the wave
/// for programs to draw. Tags are read and written by themselves.
bool belongsToItsFile(Family family, std::string_view name) {
    static constexpr std::array<std::string_view, 12> kRiff{"fmt ", "data", "fact", "ds64", "PEAK", "levl",
                                                            "JUNK", "junk", "PAD ", "FLLR", "id3 ", "ID3 "};
    static constexpr std::array<std::string_view, 8> kAiff{"COMM", "FVER", "SSND", "CHAN",
                                                           "PEAK", "ID3 ", "id3 ", "FLLR"};
    static constexpr std::array<std::string_view, 10> kCaf{"desc", "data", "pakt", "kuki", "chan",
                                                           "peak", "ovvw", "free", "edct", "info"};
    static constexpr std::array<std::string_view, 5> kWave64{"fmt ", "data", "fact", "levl", "junk"};
    switch (family) {
        case Family::Riff:
            return isOneOf(kRiff, name);
        case Family::Aiff:
            return isOneOf(kAiff, name);
        case Family::Caf:
            return isOneOf(kCaf, name);
        case Family::Wave64:
            return std::ranges::any_of(kWave64, [&](auto each) { return name == wave64Name(each); });
    }
    return false;
}

/// WAV and Wave64 share one kind of chunk under names of their own. Empty where there is no such name.
std::string nameIn(const ChunkFormat& to, const ChunkFormat& from, const std::string& name) {
    if (to.endian != from.endian) return {};
    if (to.family == from.family) return name;
    if (from.family == Family::Riff && to.family == Family::Wave64 && name == "bext") return wave64Name(name);
    if (from.family == Family::Wave64 && to.family == Family::Riff && name == wave64Name("bext"))
        return "bext";
    return {};
}

/// As people know it.
std::string shownName(const fs::path& file, const Chunk& chunk) {
    std::string name = chunk.name.substr(0, 4);
    if (name == "LIST") name += " " + readRange(file, chunk.begin, 4);
    std::ranges::replace_if(
        name, [](unsigned char c) { return c < 0x20 || c > 0x7E; }, '?');
    while (name.ends_with(' ')) name.pop_back();
    return name;
}

/// Libraries keep quiet when a disk is full: room is asked for before they write.
void requireRoom(const fs::path& path, std::uint64_t bytes) {
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    const off_t length = file < 0 ? -1 : ::lseek(file, 0, SEEK_END);
    const int error = length < 0 ? errno : ::posix_fallocate(file, length, static_cast<off_t>(bytes));
    const bool restored = length >= 0 && ::ftruncate(file, length) == 0;
    if (file >= 0) ::close(file);
    if (error != 0 || !restored) throw Failure(std::strerror(error != 0 ? error : errno));
}

std::uint64_t sizeOf(const Tags& tags) {
    std::uint64_t size = (std::uint64_t{64} << 10) + 2 * tags.id3.size();
    for (const auto& [name, values] : tags.fields) size += 2 * (name.size() + values.toString().size()) * 4;
    // In Ogg they are written as text, which takes a third more.
    for (const Picture& picture : tags.pictures) size += 2 * std::uint64_t{picture.data.size()};
    return size;
}

class Transfer {
public:
    explicit Transfer(const MetadataTransfer& transfer)
        : transfer_(transfer), source_(listChunks(transfer.from)), target_(listChunks(transfer.to)) {}

    std::vector<std::string> run() {
        Tags tags;
        if (!transfer_.strip) tags = readTags(transfer_.from, transfer_.fromFormat, source_);
        addGain(tags);
        requireRoom(transfer_.to, sizeOf(tags));
        if (target_.format) {
            addChunks(transfer_.to, chunksFor(tags));
        } else if (isOf(transfer_.toFormat, SF_FORMAT_AU)) {
            loseTags(tags);
        } else if (!tags.empty()) {
            lose(expressed(tags));
            writeTags(transfer_.to, transfer_.toFormat, tags);
        }
        if (!transfer_.strip) transferOthers();
        return lost_;
    }

private:
    static bool isOf(int format, int type) { return (format & SF_FORMAT_TYPEMASK) == type; }

    void lose(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            if (std::ranges::find(lost_, name) == lost_.end()) lost_.push_back(name);
        }
    }

    void addGain(Tags& tags) const {
        if (!transfer_.gain) return;
        const bool isOpus = (transfer_.toFormat & SF_FORMAT_SUBMASK) == SF_FORMAT_OPUS;
        tags.addMissing(isOpus ? opusGainFields(*transfer_.gain) : replayGainFields(*transfer_.gain));
    }

    /// What is left out where an ID3v2 tag becomes another kind.
    std::vector<std::string> expressed(const Tags& tags) const {
        return isOf(transfer_.toFormat, SF_FORMAT_MPEG) ? std::vector<std::string>() : tags.inexpressible;
    }

    void loseTags(const Tags& tags) {
        if (!tags.fields.isEmpty()) lose({"tags"});
        losePictures(tags);
    }

    void losePictures(const Tags& tags) {
        if (!tags.pictures.empty())
            lose(
                {tags.pictures.size() == 1 ? "a picture" : fmt::format("{} pictures", tags.pictures.size())});
    }

    /// All chunks that a file made of chunks gets: the source's, as far as it has any of the same family, and
    /// those that hold tags.
    std::vector<NewChunk> chunksFor(const Tags& tags) {
        std::vector<NewChunk> chunks;
        if (!transfer_.strip && source_.format) chunks = copiedChunks();
        const bool hasInfo = std::ranges::any_of(chunks, [](const NewChunk& chunk) {
            const bool isList = chunk.name == "LIST" || chunk.name == wave64Name("list");
            return isList && chunk.content.starts_with("INFO");
        });
        switch (target_.format->family) {
            case Family::Riff: {
                const std::string info = infoListContent(tags.fields);
                if (!hasInfo && !info.empty()) chunks.push_back({"LIST", info});
                if (!hasInfo || !tags.id3.isEmpty() || transfer_.gain) addId3(chunks, "id3 ", tags);
                break;
            }
            case Family::Aiff:
                if (hasOnlyTexts(chunks, tags)) break;
                if (!source_.format || source_.format->family != Family::Aiff)
                    std::ranges::move(aiffTextChunks(tags.fields), std::back_inserter(chunks));
                addId3(chunks, "ID3 ", tags);
                break;
            case Family::Caf: {
                const std::string info = cafInfoContent(tags.fields);
                if (!info.empty()) chunks.push_back({"info", info});
                losePictures(tags);
                lose(tags.inexpressible);
                break;
            }
            case Family::Wave64: {
                const std::string info = infoListContent(tags.fields);
                if (!hasInfo && !info.empty()) chunks.push_back({wave64Name("list"), info});
                losePictures(tags);
                const bool isListed = std::ranges::all_of(
                    tags.fields, [](const auto& field) { return infoListHolds(field.first); });
                if (!isListed && (!hasInfo || !tags.id3.isEmpty())) lose({"further tags"});
                break;
            }
        }
        return chunks;
    }

    /// What an AIFF says in its own chunks needs no tag beside them.
    bool hasOnlyTexts(const std::vector<NewChunk>& chunks, const Tags& tags) const {
        if (!tags.id3.isEmpty() || !tags.pictures.empty() || transfer_.gain) return false;
        return tags.fields.isEmpty() || (!chunks.empty() && source_.format->family == Family::Aiff);
    }

    static void addId3(std::vector<NewChunk>& chunks, const char* name, const Tags& tags) {
        const TagLib::ByteVector id3 = renderId3(tags);
        if (!id3.isEmpty()) chunks.push_back({name, {id3.data(), id3.size()}});
    }

    std::vector<NewChunk> copiedChunks() {
        std::vector<NewChunk> chunks;
        const Chunk* audio = source_.audio();
        for (const Chunk& chunk : source_.chunks) {
            if (belongsToItsFile(source_.format->family, chunk.name)) continue;
            const std::string name = nameIn(*target_.format, *source_.format, chunk.name);
            if (name.empty()) continue;
            std::string content = readRange(transfer_.from, chunk.begin, chunk.size);
            const bool isBefore = audio && chunk.begin < audio->begin;
            const std::string_view known =
                name.size() > 4 && name.starts_with("bext") ? "bext" : std::string_view(name);
            chunks.push_back(
                {name, updatedChunk(known, std::move(content), source_.format->endian, transfer_.change),
                 isBefore});
        }
        return chunks;
    }

    /// Whether tags say what this chunk says.
    bool isTold(const Chunk& chunk) const {
        static constexpr std::array<std::string_view, 4> kAiffTexts{"NAME", "AUTH", "(c) ", "ANNO"};
        return isInfoList(transfer_.from, chunk) ||
               (source_.format->family == Family::Aiff && isOneOf(kAiffTexts, chunk.name));
    }

    /// Blocks of FLAC, and the names of all that stays behind.
    void transferOthers() {
        FlacBlocks blocks = readFlacBlocks(transfer_.from);
        if (transfer_.change.fromRate != transfer_.change.toRate && !blocks.cueSheet.empty()) {
            lose({"the cue sheet"});
            blocks.cueSheet.clear();
        }
        if (isOf(transfer_.toFormat, SF_FORMAT_FLAC)) {
            addFlacBlocks(transfer_.to, blocks.applications + blocks.cueSheet);
        } else {
            if (!blocks.cueSheet.empty()) lose({"the cue sheet"});
            if (!blocks.applications.empty()) lose({"data of other programs"});
        }
        if (!source_.format) return;
        for (const Chunk& chunk : source_.chunks) {
            const bool stays =
                belongsToItsFile(source_.format->family, chunk.name) || isTold(chunk) ||
                (target_.format && !nameIn(*target_.format, *source_.format, chunk.name).empty());
            if (!stays) lose({shownName(transfer_.from, chunk)});
        }
    }

    const MetadataTransfer& transfer_;
    ChunkList source_;
    ChunkList target_;
    std::vector<std::string> lost_;
};

}  // namespace

std::vector<std::string> transferMetadata(const MetadataTransfer& transfer) {
    return Transfer(transfer).run();
}

bool statesLoudness(const fs::path& file) {
    const ChunkList list = listChunks(file);
    return list.format && (list.find("bext") || list.find(wave64Name("bext")));
}

}  // namespace vanta
