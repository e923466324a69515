#pragma once

#include <filesystem>

#include "audiofile/chunks/chunk_list.hpp"
#include "audiofile/metadata/tags.hpp"

namespace vanta {

/// The tags of a file of any type that can be read. `format` is libsndfile's, `list` the file's chunks.
Tags readTags(const std::filesystem::path& file, int format, const ChunkList& list);

/// Gives a finished FLAC, Ogg or MP3 file these tags, and leaves what it has. Failure, without a name in
/// front, if they cannot be written.
void writeTags(const std::filesystem::path& file, int format, const Tags& tags);

}  // namespace vanta
