#include "cli/messages.hpp"

#include <fmt/format.h>

#include <cerrno>

#include "cli/standard_streams.hpp"
#include "foundation/output_check.hpp"
#include "foundation/printable.hpp"

namespace vanta {

void printError(std::string_view text) {
    printLine(fmt::format("{}: {}", program_invocation_short_name, printable(text)));
}

void printWarning(std::string_view text) {
    printError(fmt::format("warning: {}", text));
}

void printWarnings(std::span<const std::string> warnings) {
    for (const std::string& warning : warnings) printWarning(warning);
}

void printFailure(const std::exception& failure) {
    const bool exists = dynamic_cast<const OutputExists*>(&failure) != nullptr;
    printError(fmt::format("{}{}", failure.what(), exists ? "; use --force to replace it" : ""));
}

}  // namespace vanta
