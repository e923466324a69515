#include "tools/lv2_bundle/turtle.hpp"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <utility>

namespace vanta::turtle {
namespace {

constexpr auto kPrefixes = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"atom", "http://lv2plug.in/ns/ext/atom#"},
    {"bufsz", "http://lv2plug.in/ns/ext/buf-size#"},
    {"doap", "http://usefulinc.com/ns/doap#"},
    {"foaf", "http://xmlns.com/foaf/0.1/"},
    {"lv2", "http://lv2plug.in/ns/lv2core#"},
    {"midi", "http://lv2plug.in/ns/ext/midi#"},
    {"opts", "http://lv2plug.in/ns/ext/options#"},
    {"pg", "http://lv2plug.in/ns/ext/port-groups#"},
    {"pprops", "http://lv2plug.in/ns/ext/port-props#"},
    {"pset", "http://lv2plug.in/ns/ext/presets#"},
    {"rdf", "http://www.w3.org/1999/02/22-rdf-syntax-ns#"},
    {"rdfs", "http://www.w3.org/2000/01/rdf-schema#"},
    {"rsz", "http://lv2plug.in/ns/ext/resize-port#"},
    {"state", "http://lv2plug.in/ns/ext/state#"},
    {"time", "http://lv2plug.in/ns/ext/time#"},
    {"ui", "http://lv2plug.in/ns/extensions/ui#"},
    {"units", "http://lv2plug.in/ns/extensions/units#"},
    {"urid", "http://lv2plug.in/ns/ext/urid#"},
    {"xsd", "http://www.w3.org/2001/XMLSchema#"},
});

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string prefixes() {
    std::string text;
    for (const auto& [name, uri] : kPrefixes) text += fmt::format("@prefix {}: <{}> .\n", name, uri);
    return text + "\n";
}

std::string iri(std::string_view uri) {
    constexpr std::string_view kForbidden = "<>\"{}|^`\\";
    std::string text = "<";
    for (const char c : uri) {
        const auto code = static_cast<unsigned char>(c);
        if (code <= 0x20 || kForbidden.find(c) != std::string_view::npos) {
            text += fmt::format("%{:02X}", code);
        } else {
            text += c;
        }
    }
    return text + ">";
}

std::string literal(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += {'\\', c};
        } else if (code < 0x20) {
            quoted += fmt::format("\\u{:04X}", code);
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string number(float value) {
    // Minus zero is nothing that anybody wants to read.
    std::string text = fmt::format("{}", value + 0.0f);
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string base64(std::span<const std::byte> bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (k < count ? std::to_integer<std::uint32_t>(bytes[i + k]) : 0u);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? kDigits[group >> (18 - 6 * k) & 63u] : '=';
        }
    }
    return text;
}

}  // namespace vanta::turtle
