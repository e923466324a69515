#pragma once

#include <exception>
#include <span>
#include <string>
#include <string_view>

namespace vanta {

/// Everything that people read besides results goes to stderr, one line each, with the program's name in
/// front.
void printError(std::string_view text);
void printWarning(std::string_view text);
void printWarnings(std::span<const std::string> warnings);
/// An error in its own words, and the option that helps where there is one.
void printFailure(const std::exception& failure);

}  // namespace vanta
