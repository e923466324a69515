#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "audiofile/chunks/chunk_list.hpp"
#include "audiofile/chunks/chunk_writing.hpp"
#include "audiofile/metadata/tags.hpp"

namespace vanta {

/// Fields in the manner of each kind of file made of chunks: the INFO list of WAV, RF64 and Wave64, the text
/// chunks of AIFF, the information chunk of CAF. Empty for others.
TagLib::PropertyMap readChunkTexts(const std::filesystem::path& file, const ChunkList& list);

/// Whether a chunk is one of them.
bool isInfoList(const std::filesystem::path& file, const Chunk& chunk);

/// The content of a chunk with these fields: "LIST" of WAV, which has room for the usual ones only, and
/// "info" of CAF. Empty if there are none.
std::string infoListContent(const TagLib::PropertyMap& fields);
bool infoListHolds(const TagLib::String& field);
/// The text chunks of an AIFF.
std::vector<NewChunk> aiffTextChunks(const TagLib::PropertyMap& fields);
std::string cafInfoContent(const TagLib::PropertyMap& fields);

}  // namespace vanta
