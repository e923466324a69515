#include "cli/chosen.hpp"

#include <vector>

#include "cli/suggestion.hpp"

namespace vanta {

namespace {

template <typename Table>
std::vector<std::string> namesIn(const Table& table) {
    std::vector<std::string> names;
    for (const auto& entry : table) names.emplace_back(entry.name);
    return names;
}

}  // namespace

const FileType* chosenFileType(const std::string& name) {
    const FileType* const found = findFileType(name);
    if (!found && !name.empty()) throw unknownName("file type", name, namesIn(fileTypes()));
    return found;
}

const FileSubtype* chosenFileSubtype(const std::string& name) {
    const FileSubtype* const found = findFileSubtype(name);
    if (!found && !name.empty()) throw unknownName("subtype", name, namesIn(fileSubtypes()));
    return found;
}

}  // namespace vanta
