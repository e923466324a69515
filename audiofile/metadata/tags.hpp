#pragma once

#include <taglib/tpropertymap.h>

#include <string>
#include <vector>

namespace vanta {

/// A picture as FLAC and ID3v2 describe it.
struct Picture {
    int type;  ///< both use the numbers of ID3v2's APIC: 3 is the front cover
    TagLib::String mimeType;
    TagLib::String description;
    TagLib::ByteVector data;
    int width = 0;  ///< pixels; 0: not said
    int height = 0;
    int colorDepth = 0;  ///< bits of a pixel
    int colors = 0;      ///< of an indexed picture
};

/// What a file says of itself in words and pictures.
struct Tags {
    /// Under the names of Xiph's comments. A number and a total are two fields.
    TagLib::PropertyMap fields;
    std::vector<Picture> pictures;
    TagLib::ByteVector id3;                  ///< the ID3v2 tag that they come from, whole; else empty
    std::vector<std::string> inexpressible;  ///< what of that tag no field can say

    bool empty() const { return fields.isEmpty() && pictures.empty() && id3.isEmpty(); }
    /// Adds what is not there yet.
    void addMissing(const TagLib::PropertyMap& more);
};

/// Whether a field speaks of audio that was changed since: gains for playback, an encoder's delay.
bool isOutdated(const TagLib::String& field);
void removeOutdated(TagLib::PropertyMap& fields);

/// "3/12" as a number and a total, and back: ID3, INFO and CAF have one field for both.
void splitNumbers(TagLib::PropertyMap& fields);
TagLib::PropertyMap withJoinedNumbers(TagLib::PropertyMap fields);

/// Text of unknown encoding: UTF-8 if it is that, else Latin-1. Ends at the first zero.
TagLib::String textFrom(std::string bytes);

}  // namespace vanta
