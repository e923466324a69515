// Turns style sources into the records that the program carries, and a record back into its source.

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "foundation/whole_file.hpp"
#include "limiter/styles/style_check.hpp"
#include "limiter/styles/style_names.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_source.hpp"

namespace {

using namespace vanta;

constexpr std::string_view kUsage =
    R"(usage: compile_styles OUT.cpp FOLDER STYLE...  write the records of FOLDER/STYLE.style as a C++ source
       compile_styles --record FILE OUT        write the record of one source
       compile_styles --dump RECORD            print a record as a source
)";

void writeFile(const std::string& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) throw std::runtime_error(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
}

std::vector<std::byte> compile(const EngineLayout& layout, const std::string& path) {
    return writeStyleRecord(parseStyleSource(layout, readWholeFile(path), path));
}

std::string byteTable(int index, std::span<const std::byte> record) {
    std::string text = fmt::format("constexpr unsigned char kRecord{}[] = {{", index);
    for (std::size_t i = 0; i < record.size(); ++i) {
        text += i % 24 == 0 ? "\n    " : "";
        text += fmt::format("{},", std::to_integer<int>(record[i]));
    }
    return text + "};\n";
}

/// The build's list and the program's are two; in another order every style would sound as its neighbour.
void checkNames(std::span<const std::string> styles) {
    std::string names(kStyleNames);
    std::ranges::transform(names, names.begin(), [](char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    });
    const std::string listed = fmt::format("{}", fmt::join(styles, ","));
    if (listed == names) return;
    throw std::runtime_error(fmt::format(
        "limiter/resources/CMakeLists.txt lists {} and style_names.hpp {}: list the same in one order",
        listed, names));
}

/// Every source is compiled before a fault ends the run, so that one build shows all faults.
void compileAll(const EngineLayout& layout, const std::string& output, const std::string& folder,
                std::span<const std::string> styles) {
    checkNames(styles);
    std::string tables;
    std::string entries;
    std::string faults;
    int index = 0;
    for (const std::string& style : styles) {
        try {
            tables += byteTable(index, compile(layout, fmt::format("{}/{}.style", folder, style)));
        } catch (const StyleError& error) {
            faults += faults.empty() ? error.what() : fmt::format("\n{}", error.what());
        }
        entries +=
            fmt::format("        {{\"{}.limiter\", std::as_bytes(std::span(kRecord{}))}},\n", style, index++);
    }
    if (!faults.empty()) throw StyleError(faults);
    writeFile(output, fmt::format("#include \"limiter/resources/style_resources.hpp\"\n\n"
                                  "namespace vanta {{\nnamespace {{\n\n{}\n}}  // namespace\n\n"
                                  "std::span<const Resource> styleResources() {{\n"
                                  "    static const Resource resources[] = {{\n{}    }};\n"
                                  "    return resources;\n}}\n\n}}  // namespace vanta\n",
                                  tables, entries));
}

void dump(const EngineLayout& layout, const std::string& path) {
    const std::string content = readWholeFile(path);
    std::vector<float> values;
    try {
        values = readStyleRecord(std::as_bytes(std::span(content)));
    } catch (const StyleError& error) {
        throw StyleError(fmt::format("{}: {}", path, error.what()));
    }
    std::string faults;
    for (const StyleFault& fault : checkStyle(layout, values)) {
        faults += fmt::format("{}{}: value {}: {}", faults.empty() ? "" : "\n", path, fault.position,
                              fault.message);
    }
    if (!faults.empty()) throw StyleError(faults);
    fmt::print("{}", writeStyleSource(layout, values));
}

int run(std::span<const std::string> arguments) {
    const EngineLayout layout(limiterConfiguration());
    const std::string first = arguments.empty() ? "" : arguments[0];
    if (first == "--dump" && arguments.size() == 2) {
        dump(layout, arguments[1]);
    } else if (first == "--record" && arguments.size() == 3) {
        const std::vector<std::byte> record = compile(layout, arguments[1]);
        writeFile(arguments[2], {reinterpret_cast<const char*>(record.data()), record.size()});
    } else if (arguments.size() >= 3 && !first.starts_with('-')) {
        compileAll(layout, first, arguments[1], arguments.subspan(2));
    } else {
        fmt::print(stderr, "{}", kUsage);
        return 2;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        return run(arguments);
    } catch (const std::exception& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
}
