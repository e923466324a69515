#include "audiofile/metadata/chunk_texts.hpp"

#include <taglib/infotag.h>

#include <algorithm>
#include <array>
#include <span>

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// A field under its own name and under Xiph's.
struct Name {
    const char* own;
    const char* field;
};

constexpr std::array kInfoNames{
    Name{"INAM", "TITLE"},    Name{"IART", "ARTIST"},  Name{"IPRD", "ALBUM"},       Name{"ICMT", "COMMENT"},
    Name{"IGNR", "GENRE"},    Name{"ICRD", "DATE"},    Name{"IPRT", "TRACKNUMBER"}, Name{"ICOP", "COPYRIGHT"},
    Name{"IMUS", "COMPOSER"}, Name{"IENG", "ENGINEER"}};
constexpr std::array kAiffNames{Name{"NAME", "TITLE"}, Name{"AUTH", "ARTIST"}, Name{"(c) ", "COPYRIGHT"},
                                Name{"ANNO", "COMMENT"}};
/// Apple, Core Audio Format: information chunk.
constexpr std::array kCafNames{Name{"title", "TITLE"},       Name{"artist", "ARTIST"},
                               Name{"album", "ALBUM"},       Name{"track number", "TRACKNUMBER"},
                               Name{"year", "DATE"},         Name{"composer", "COMPOSER"},
                               Name{"lyricist", "LYRICIST"}, Name{"genre", "GENRE"},
                               Name{"comments", "COMMENT"},  Name{"copyright", "COPYRIGHT"},
                               Name{"tempo", "BPM"},         Name{"key signature", "INITIALKEY"}};

/// The field's name for one of the file's; a name that the table has not is taken as it is.
TagLib::String fieldOf(std::span<const Name> names, const std::string& own) {
    const auto found = std::ranges::find_if(names, [&](const Name& name) { return own == name.own; });
    return found == names.end() ? textFrom(own).upper() : TagLib::String(found->field);
}

std::string contentOf(const fs::path& file, const Chunk& chunk) {
    return readRange(file, chunk.begin, chunk.size);
}

TagLib::ByteVector bytesOf(const std::string& content) {
    return {content.data(), static_cast<unsigned>(content.size())};
}

void readInfoList(const std::string& content, TagLib::PropertyMap& fields) {
    const TagLib::RIFF::Info::Tag info(bytesOf(content));
    for (const auto& [id, text] : info.fieldListMap())
        fields.insert(fieldOf(kInfoNames, {id.data(), id.size()}), text);
}

void readCafInfo(const std::string& content, TagLib::PropertyMap& fields) {
    std::size_t at = 4;
    const auto next = [&] {
        const std::size_t end = std::min(content.find('\0', at), content.size());
        const std::string text = content.substr(at, end - at);
        at = end + 1;
        return text;
    };
    while (at < content.size()) {
        const std::string name = next();
        if (at < content.size()) fields.insert(fieldOf(kCafNames, name), textFrom(next()));
    }
}

}  // namespace

bool isInfoList(const fs::path& file, const Chunk& chunk) {
    const bool isList = chunk.name == "LIST" || chunk.name == wave64Name("list");
    return isList && readRange(file, chunk.begin, 4) == "INFO";
}

TagLib::PropertyMap readChunkTexts(const fs::path& file, const ChunkList& list) {
    TagLib::PropertyMap fields;
    for (const Chunk& chunk : list.chunks) {
        if (chunk.isAudio) continue;
        if (isInfoList(file, chunk)) readInfoList(contentOf(file, chunk), fields);
        if (list.format->family == ChunkFormat::Caf && chunk.name == "info")
            readCafInfo(contentOf(file, chunk), fields);
        if (list.format->family != ChunkFormat::Aiff) continue;
        for (const Name& name : kAiffNames) {
            if (chunk.name == name.own) fields.insert(name.field, textFrom(contentOf(file, chunk)));
        }
    }
    return fields;
}

std::string infoListContent(const TagLib::PropertyMap& fields) {
    TagLib::RIFF::Info::Tag info;
    const TagLib::PropertyMap joined = withJoinedNumbers(fields);
    for (const Name& name : kInfoNames) {
        if (joined.contains(name.field)) info.setFieldText(name.own, joined[name.field].toString("; "));
    }
    if (info.fieldListMap().isEmpty()) return {};
    const TagLib::ByteVector bytes = info.render();
    return {bytes.data(), bytes.size()};
}

bool infoListHolds(const TagLib::String& field) {
    return std::ranges::any_of(kInfoNames, [&](const Name& name) { return field == name.field; });
}

std::vector<NewChunk> aiffTextChunks(const TagLib::PropertyMap& fields) {
    std::vector<NewChunk> chunks;
    for (const Name& name : kAiffNames) {
        if (fields.contains(name.field))
            chunks.push_back({name.own, fields[name.field].toString("; ").to8Bit(true)});
    }
    return chunks;
}

std::string cafInfoContent(const TagLib::PropertyMap& fields) {
    std::string entries;
    std::uint64_t count = 0;
    for (const auto& [field, values] : withJoinedNumbers(fields)) {
        const auto found =
            std::ranges::find_if(kCafNames, [&](const Name& name) { return field == name.field; });
        // Readers take the last of several entries of one name.
        entries += found == kCafNames.end() ? field.to8Bit(true) : found->own;
        entries += '\0' + values.toString("; ").to8Bit(true) + '\0';
        ++count;
    }
    return count == 0 ? std::string() : packed(count, 4, Endian::Big) + entries;
}

}  // namespace vanta
