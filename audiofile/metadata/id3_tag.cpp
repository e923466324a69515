#include "audiofile/metadata/id3_tag.hpp"

#include <taglib/attachedpictureframe.h>
#include <taglib/commentsframe.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/mpegfile.h>
#include <taglib/tbytevectorstream.h>
#include <taglib/textidentificationframe.h>

namespace vanta {

namespace {

namespace ID3v2 = TagLib::ID3v2;

/// Frames on gains and delays of the old audio.
bool isOutdatedFrame(const ID3v2::Frame& frame) {
    const TagLib::ByteVector id = frame.frameID();
    if (id == "RVA2" || id == "RVAD" || id == "XRVA") return true;
    if (const auto* text = dynamic_cast<const ID3v2::UserTextIdentificationFrame*>(&frame))
        return isOutdated(text->description());
    const auto* comment = dynamic_cast<const ID3v2::CommentsFrame*>(&frame);
    return comment && isOutdated(comment->description());
}

void addPicture(ID3v2::Tag& tag, const Picture& picture) {
    auto* const frame = new ID3v2::AttachedPictureFrame;  // the tag owns it
    frame->setTextEncoding(TagLib::String::UTF8);
    frame->setType(static_cast<ID3v2::AttachedPictureFrame::Type>(picture.type));
    frame->setMimeType(picture.mimeType);
    frame->setDescription(picture.description);
    frame->setPicture(picture.data);
    tag.addFrame(frame);
}

/// Frames that the fields of a tag leave out.
std::vector<std::string> inexpressibleFrames(const ID3v2::Tag& tag) {
    std::vector<std::string> names;
    const TagLib::PropertyMap properties = tag.properties();
    for (const TagLib::String& frame : properties.unsupportedData()) {
        const std::string name = frame.substr(0, frame.find("/")).to8Bit(true);
        if (name != "APIC" && name != "RVA2") names.push_back(name);
    }
    return names;
}

}  // namespace

void readId3(const ID3v2::Tag& tag, Tags& tags) {
    if (tag.isEmpty()) return;
    tags.addMissing(tag.properties());
    tags.id3 = tag.render();
    tags.inexpressible = inexpressibleFrames(tag);
    for (const ID3v2::Frame* frame : tag.frameList("APIC")) {
        if (const auto* picture = dynamic_cast<const ID3v2::AttachedPictureFrame*>(frame))
            tags.pictures.push_back(
                {picture->type(), picture->mimeType(), picture->description(), picture->picture()});
    }
}

void readId3(const TagLib::ByteVector& bytes, Tags& tags) {
    TagLib::ByteVectorStream stream(bytes);
    TagLib::MPEG::File file(&stream, ID3v2::FrameFactory::instance(), false);
    if (file.hasID3v2Tag()) readId3(*file.ID3v2Tag(), tags);
}

void fillId3(ID3v2::Tag& tag, const Tags& tags) {
    if (tags.id3.isEmpty()) {
        tag.setProperties(withJoinedNumbers(tags.fields));
        for (const Picture& picture : tags.pictures) addPicture(tag, picture);
        return;
    }
    TagLib::ByteVectorStream stream(tags.id3);
    TagLib::MPEG::File source(&stream, ID3v2::FrameFactory::instance(), false);
    ID3v2::Header header;
    header.setMajorVersion(4);
    for (const ID3v2::Frame* frame : source.ID3v2Tag(true)->frameList()) {
        if (isOutdatedFrame(*frame)) continue;
        if (ID3v2::Frame* copy = ID3v2::FrameFactory::instance()->createFrame(frame->render(), &header))
            tag.addFrame(copy);
    }
    // What came from elsewhere in the file, or was found out since.
    TagLib::PropertyMap all = tag.properties();
    const TagLib::PropertyMap more = withJoinedNumbers(tags.fields);
    for (const auto& [name, values] : more) {
        if (!all.contains(name)) all.insert(name, values);
    }
    tag.setProperties(all);
}

TagLib::ByteVector renderId3(const Tags& tags) {
    ID3v2::Tag tag;
    fillId3(tag, tags);
    return tag.isEmpty() ? TagLib::ByteVector() : tag.render();
}

}  // namespace vanta
