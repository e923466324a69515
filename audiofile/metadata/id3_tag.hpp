#pragma once

#include <taglib/id3v2tag.h>

#include "audiofile/metadata/tags.hpp"

namespace vanta {

/// Adds what an ID3v2 tag says, and keeps the tag itself for files that hold one as well.
void readId3(const TagLib::ID3v2::Tag& tag, Tags& tags);
/// The same for the bytes of one.
void readId3(const TagLib::ByteVector& bytes, Tags& tags);

/// Fills a tag: with all frames of the one that the tags come from, also those that nobody here knows, or
/// else with their fields and pictures.
void fillId3(TagLib::ID3v2::Tag& tag, const Tags& tags);
/// The bytes of such a tag.
TagLib::ByteVector renderId3(const Tags& tags);

}  // namespace vanta
