// Turns the rendered pictures of the interface into the table of resources that the program carries.

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "foundation/whole_file.hpp"
#include "tools/compile_artwork/picture_file.hpp"

namespace {

using namespace vanta;

constexpr std::string_view kUsage =
    "usage: compile_artwork OUT.cpp TABLE FOLDER  write the pictures FOLDER/NAME_2x.png that TABLE lists\n";

struct Row {
    std::string name;
    int width = 0;  // logical units
    int height = 0;
};

std::vector<Row> readTable(const std::string& path) {
    std::istringstream table(readWholeFile(path));
    std::vector<Row> rows;
    int number = 0;
    for (std::string line; std::getline(table, line);) {
        ++number;
        if (line.empty() || line.front() == '#') continue;
        Row row;
        std::string times;
        std::istringstream words(line);
        if (!(words >> row.name >> row.width >> times >> row.height) || times != "x")
            throw std::runtime_error(fmt::format("{}:{}: write NAME WIDTH x HEIGHT USE", path, number));
        rows.push_back(row);
    }
    return rows;
}

std::string resourceName(const std::string& name) {
    std::string upper = name + "_2x";
    std::ranges::transform(upper, upper.begin(), [](char c) {
        return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    });
    return upper;
}

std::string byteTable(std::size_t index, std::string_view bytes) {
    std::string text = fmt::format("constexpr unsigned char kPicture{}[] = {{", index);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += i % 24 == 0 ? "\n    " : "";
        text += fmt::format("{},", static_cast<unsigned char>(bytes[i]));
    }
    return text + "};\n";
}

void writeFile(const std::string& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) throw std::runtime_error(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
}

/// Every picture is looked at before a fault ends the run, so that one build shows all faults.
void compile(const std::string& output, const std::string& table, const std::string& folder) {
    std::string tables;
    std::string entries;
    std::string faults;
    std::size_t index = 0;
    for (const Row& row : readTable(table)) {
        const std::string path = fmt::format("{}/{}_2x.png", folder, row.name);
        try {
            tables += byteTable(index, pictureFile(readWholeFile(path), row.width * 2, row.height * 2));
        } catch (const std::exception& error) {
            faults += fmt::format("{}{}: {}", faults.empty() ? "" : "\n", path, error.what());
        }
        entries += fmt::format("        {{\"{}\", std::as_bytes(std::span(kPicture{}))}},\n",
                               resourceName(row.name), index++);
    }
    if (!faults.empty()) throw std::runtime_error(faults);
    writeFile(output, fmt::format("#include \"gui/artwork/artwork_resources.hpp\"\n\n"
                                  "namespace vanta::gui {{\nnamespace {{\n\n{}\n}}  // namespace\n\n"
                                  "std::span<const Resource> artworkResources() {{\n"
                                  "    static const Resource resources[] = {{\n{}    }};\n"
                                  "    return resources;\n}}\n\n}}  // namespace vanta::gui\n",
                                  tables, entries));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        fmt::print(stderr, "{}", kUsage);
        return 2;
    }
    try {
        compile(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
