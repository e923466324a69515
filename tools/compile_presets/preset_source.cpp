#include "tools/compile_presets/preset_source.hpp"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "foundation/ascii.hpp"
#include "foundation/near_miss.hpp"
#include "plugin/parameters/indexed_parameter.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

AbstractPluginParameter& findParameter(const VantaParameters& parameters, const std::string& name) {
    std::vector<std::string_view> names;
    for (int i = 0; i < parameters.owner().parameterCount(); ++i) {
        AbstractPluginParameter* parameter = parameters.owner().parameterAt(i);
        if (parameter->name() == name) return *parameter;
        names.push_back(parameter->name());
    }
    throw std::runtime_error(fmt::format("unknown parameter \"{}\"{}", name, nearMissHint(name, names)));
}

std::optional<float> wholeNumber(const std::string& text) {
    float value = 0.0f;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc{} || result.ptr != end) return {};
    return value;
}

float readValue(const AbstractPluginParameter& parameter, const std::string& text) {
    if (const auto* choice = dynamic_cast<const IndexedParameter*>(&parameter)) {
        const auto& labels = choice->labels();
        for (std::size_t i = 0; i < labels.size(); ++i) {
            if (labels[i] == text) return static_cast<float>(i);
        }
        throw std::runtime_error(fmt::format("{} cannot be \"{}\": use one of \"{}\"", parameter.name(), text,
                                             fmt::join(labels, "\", \"")));
    }
    float value = 0.0f;
    if (const auto number = wholeNumber(text)) {
        value = *number;
    } else if (!parameter.parseText(text, &value) || parameter.exceedsRange(text)) {
        throw std::runtime_error(fmt::format("{} cannot be \"{}\": use {} to {}", parameter.name(), text,
                                             parameter.text(parameter.minimum()),
                                             parameter.text(parameter.maximum())));
    }
    if (!(value >= parameter.minimum() && value <= parameter.maximum())) {
        throw std::runtime_error(fmt::format("{} cannot be {}: use {} to {}", parameter.name(), text,
                                             parameter.minimum(), parameter.maximum()));
    }
    return value;
}

void applyLine(VantaParameters& parameters, std::string_view line, std::set<std::string>& named) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        throw std::runtime_error(fmt::format("cannot read \"{}\": write \"Parameter = value\"", line));
    const std::string name(trimmed(line.substr(0, equals)));
    AbstractPluginParameter& parameter = findParameter(parameters, name);
    if (!named.insert(name).second)
        throw std::runtime_error(fmt::format("{} is set twice: remove one of the two lines", name));
    parameter.setValue(readValue(parameter, std::string(trimmed(line.substr(equals + 1)))), 0);
}

}  // namespace

void applyPresetSource(VantaParameters& parameters, const std::string& text, const std::string& fileName) {
    std::istringstream lines(text);
    std::set<std::string> named;
    int number = 0;
    for (std::string read; std::getline(lines, read);) {
        ++number;
        const std::string_view line = trimmed(read);
        if (line.empty() || line.starts_with('#')) continue;
        try {
            applyLine(parameters, line, named);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(fmt::format("{}:{}: {}", fileName, number, error.what()));
        }
    }
}

}  // namespace vanta
