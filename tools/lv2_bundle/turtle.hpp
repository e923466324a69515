#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// Texts of the Turtle language, https://www.w3.org/TR/turtle/.
namespace vanta::turtle {

/// The vocabularies that descriptions use, to stand at the head of each file.
std::string prefixes();

std::string iri(std::string_view uri);
std::string literal(std::string_view text);
/// The shortest that reads back as the same float, whatever the locale.
std::string number(float value);
std::string base64(std::span<const std::byte> bytes);

}  // namespace vanta::turtle
