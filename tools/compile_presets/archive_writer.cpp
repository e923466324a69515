#include "tools/compile_presets/archive_writer.hpp"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "plugin/presets/setup_archive.hpp"

namespace vanta {
namespace {

constexpr std::uint32_t kFolderMark = 0xFFFFFFFF;

std::string compressed(const std::string& content) {
    if (content.empty()) return {};
    uLongf size = ::compressBound(static_cast<uLong>(content.size()));
    std::string result(size, '\0');
    const int state = ::compress2(reinterpret_cast<Bytef*>(result.data()), &size,
                                  reinterpret_cast<const Bytef*>(content.data()),
                                  static_cast<uLong>(content.size()), Z_BEST_COMPRESSION);
    if (state != Z_OK)
        throw std::runtime_error(
            fmt::format("zlib cannot compress {} bytes: error {}", content.size(), state));
    result.resize(size);
    return result;
}

void putInteger(std::string& record, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) record[offset + i] = static_cast<char>(value >> (8 * i));
}

std::string record(const std::string& name, std::size_t size, std::uint32_t second) {
    if (name.empty() || name.size() >= kArchiveSizeOffset) {
        throw std::runtime_error(fmt::format("\"{}\" cannot be a name in an archive: use 1 to {} bytes", name,
                                             kArchiveSizeOffset - 1));
    }
    std::string bytes(kArchiveRecordSize, '\0');
    bytes[0] = static_cast<char>(name.size());
    std::copy(name.begin(), name.end(), bytes.begin() + 1);
    putInteger(bytes, kArchiveSizeOffset, static_cast<std::uint32_t>(size));
    putInteger(bytes, kArchiveSecondOffset, second);
    return bytes;
}

std::string level(const std::vector<ArchiveNode>& nodes) {
    std::string bytes;
    for (const ArchiveNode& node : nodes) {
        const std::string content = node.isFolder ? level(node.nodes) : compressed(node.content);
        const auto second = node.isFolder ? kFolderMark : static_cast<std::uint32_t>(node.content.size());
        bytes += record(node.name, content.size(), second) + content;
    }
    return bytes + std::string(kArchiveRecordSize, '\0');
}

}  // namespace

ArchiveNode& ArchiveNode::child(const std::string& childName, bool folder) {
    const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const ArchiveNode& node) {
        return node.name == childName && node.isFolder == folder;
    });
    if (found != nodes.end()) return *found;
    nodes.push_back({childName, folder, {}, {}});
    return nodes.back();
}

std::string writeSetupArchive(const ArchiveNode& root) {
    std::string header(kArchiveHeaderSize, '\0');
    std::copy(std::begin(kArchiveMagic), std::end(kArchiveMagic) - 1, header.begin());
    return header + level(root.nodes);
}

}  // namespace vanta
