#include "audiofile/metadata/tag_files.hpp"

#include <sndfile.h>
#include <taglib/apetag.h>
#include <taglib/flacfile.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v1tag.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/vorbisfile.h>
#include <taglib/xiphcomment.h>

#include <memory>

#include "audiofile/metadata/chunk_texts.hpp"
#include "audiofile/metadata/id3_tag.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;
namespace Ogg = TagLib::Ogg;

bool isType(int format, int type) {
    return (format & SF_FORMAT_TYPEMASK) == type;
}

Picture pictureOf(const TagLib::FLAC::Picture& from) {
    return {from.type(),  from.mimeType(), from.description(), from.data(),
            from.width(), from.height(),   from.colorDepth(),  from.numColors()};
}

/// To be owned by the file that it is given to.
TagLib::FLAC::Picture* flacPicture(const Picture& from) {
    auto picture = std::make_unique<TagLib::FLAC::Picture>();
    picture->setType(static_cast<TagLib::FLAC::Picture::Type>(from.type));
    picture->setMimeType(from.mimeType);
    picture->setDescription(from.description);
    picture->setData(from.data);
    picture->setWidth(from.width);
    picture->setHeight(from.height);
    picture->setColorDepth(from.colorDepth);
    picture->setNumColors(from.colors);
    return picture.release();
}

void readPictures(const TagLib::List<TagLib::FLAC::Picture*>& pictures, Tags& tags) {
    for (const TagLib::FLAC::Picture* picture : pictures) tags.pictures.push_back(pictureOf(*picture));
}

void readComment(Ogg::XiphComment& comment, Tags& tags) {
    tags.addMissing(comment.properties());
    readPictures(comment.pictureList(), tags);
}

template <typename File>
void readOgg(const fs::path& path, Tags& tags) {
    File file(path.c_str(), false);
    if (file.isValid() && file.tag()) readComment(*file.tag(), tags);
}

void readFlac(const fs::path& path, Tags& tags) {
    TagLib::FLAC::File file(path.c_str(), false);
    if (!file.isValid()) return;
    if (file.hasXiphComment()) readComment(*file.xiphComment(), tags);
    readPictures(file.pictureList(), tags);
    if (file.hasID3v2Tag()) tags.addMissing(file.ID3v2Tag()->properties());
}

void readMpeg(const fs::path& path, Tags& tags) {
    TagLib::MPEG::File file(path.c_str(), false);
    if (!file.isValid()) return;
    if (file.hasID3v2Tag()) readId3(*file.ID3v2Tag(), tags);
    if (file.hasAPETag()) tags.addMissing(file.APETag()->properties());
    if (file.hasID3v1Tag()) tags.addMissing(static_cast<TagLib::Tag*>(file.ID3v1Tag())->properties());
}

void readChunks(const fs::path& path, const ChunkList& list, Tags& tags) {
    for (const Chunk& chunk : list.chunks) {
        if (chunk.name != "ID3 " && chunk.name != "id3 ") continue;
        const std::string bytes = readRange(path, chunk.begin, chunk.size);
        readId3(TagLib::ByteVector(bytes.data(), static_cast<unsigned>(bytes.size())), tags);
    }
    tags.addMissing(readChunkTexts(path, list));
}

/// What libsndfile finds in files that TagLib does not know.
void readTexts(const fs::path& path, Tags& tags) {
    static constexpr std::pair<int, const char*> kFields[] = {
        {SF_STR_TITLE, "TITLE"}, {SF_STR_ARTIST, "ARTIST"},          {SF_STR_COPYRIGHT, "COPYRIGHT"},
        {SF_STR_ALBUM, "ALBUM"}, {SF_STR_COMMENT, "COMMENT"},        {SF_STR_DATE, "DATE"},
        {SF_STR_GENRE, "GENRE"}, {SF_STR_TRACKNUMBER, "TRACKNUMBER"}};
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info), sf_close);
    if (!file) return;
    for (const auto& [kind, name] : kFields) {
        if (const char* text = sf_get_string(file.get(), kind)) tags.fields.insert(name, textFrom(text));
    }
}

void fillComment(Ogg::XiphComment& comment, const Tags& tags) {
    for (const auto& [name, values] : tags.fields) {
        for (const TagLib::String& value : values) comment.addField(name, value, false);
    }
}

template <typename File>
bool writeOgg(const fs::path& path, const Tags& tags) {
    File file(path.c_str(), false);
    if (!file.isValid() || !file.tag()) return false;
    fillComment(*file.tag(), tags);
    for (const Picture& picture : tags.pictures) file.tag()->addPicture(flacPicture(picture));
    return file.save();
}

bool writeFlac(const fs::path& path, const Tags& tags) {
    TagLib::FLAC::File file(path.c_str(), false);
    if (!file.isValid()) return false;
    fillComment(*file.xiphComment(true), tags);
    for (const Picture& picture : tags.pictures) file.addPicture(flacPicture(picture));
    return file.save();
}

bool writeMpeg(const fs::path& path, const Tags& tags) {
    TagLib::MPEG::File file(path.c_str(), false);
    if (!file.isValid()) return false;
    fillId3(*file.ID3v2Tag(true), tags);
    return file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripNone);
}

}  // namespace

Tags readTags(const fs::path& path, int format, const ChunkList& list) {
    Tags tags;
    const int subtype = format & SF_FORMAT_SUBMASK;
    if (list.format) {
        readChunks(path, list, tags);
    } else if (isType(format, SF_FORMAT_FLAC)) {
        readFlac(path, tags);
    } else if (isType(format, SF_FORMAT_MPEG)) {
        readMpeg(path, tags);
    } else if (!isType(format, SF_FORMAT_OGG)) {
        readTexts(path, tags);
    } else if (subtype == SF_FORMAT_OPUS) {
        readOgg<Ogg::Opus::File>(path, tags);
    } else if (subtype == SF_FORMAT_VORBIS) {
        readOgg<Ogg::Vorbis::File>(path, tags);
    } else {
        readOgg<Ogg::FLAC::File>(path, tags);
    }
    splitNumbers(tags.fields);
    removeOutdated(tags.fields);
    return tags;
}

void writeTags(const fs::path& path, int format, const Tags& tags) {
    bool written = false;
    if (isType(format, SF_FORMAT_FLAC)) {
        written = writeFlac(path, tags);
    } else if (isType(format, SF_FORMAT_MPEG)) {
        written = writeMpeg(path, tags);
    } else if ((format & SF_FORMAT_SUBMASK) == SF_FORMAT_OPUS) {
        written = writeOgg<Ogg::Opus::File>(path, tags);
    } else if (isType(format, SF_FORMAT_OGG)) {
        written = writeOgg<Ogg::Vorbis::File>(path, tags);
    }
    if (!written) throw Failure("its tags cannot be written");
}

}  // namespace vanta
