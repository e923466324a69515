#include <cmath>
#include <string>

#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {
namespace {

std::uint32_t flagsOf(const HostParameter& parameter) {
    std::uint32_t flags = 0;
    if (parameter.isAutomatable) flags |= CLAP_PARAM_IS_AUTOMATABLE;
    if (parameter.isStepped()) flags |= CLAP_PARAM_IS_STEPPED | kClapParamIsEnum;
    if (parameter.isBypass) flags |= CLAP_PARAM_IS_BYPASS;
    return flags;
}

void describe(const HostParameter& parameter, clap_param_info_t& info) {
    info = {};
    info.id = static_cast<clap_id>(parameter.index);
    info.flags = flagsOf(parameter);
    copyText(parameter.name.c_str(), info.name, sizeof(info.name));
    copyText(parameter.group.c_str(), info.module, sizeof(info.module));
    info.min_value = parameter.minimum;
    info.max_value = parameter.maximum;
    info.default_value = parameter.initial;
}

/// Calls `what(plugin, index)` for an id that exists.
template <typename What>
bool forParameter(const clap_plugin_t* handle, clap_id id, What what) {
    return answer(handle, false, [&](ClapPlugin& plugin) {
        return id < plugin.parameters().size() && what(plugin, static_cast<int>(id));
    });
}

bool getInfo(const clap_plugin_t* handle, std::uint32_t index, clap_param_info_t* info) {
    return info && forParameter(handle, index, [=](ClapPlugin& plugin, int parameter) {
               describe(plugin.parameters()[static_cast<std::size_t>(parameter)], *info);
               return true;
           });
}

bool getValue(const clap_plugin_t* handle, clap_id id, double* value) {
    return value && forParameter(handle, id, [=](ClapPlugin& plugin, int index) {
               // What is heard: the model follows when the main thread next comes by.
               *value = static_cast<double>(plugin.hosted().processor().parameterAt(index)->value());
               return true;
           });
}

bool valueToText(const clap_plugin_t* handle, clap_id id, double value, char* text, std::uint32_t size) {
    if (!text || size == 0 || std::isnan(value)) return false;
    return forParameter(handle, id, [=](ClapPlugin& plugin, int index) {
        copyText(plugin.hosted().text(index, value).c_str(), text, size);
        return true;
    });
}

bool textToValue(const clap_plugin_t* handle, clap_id id, const char* text, double* value) {
    return text && value && forParameter(handle, id, [=](ClapPlugin& plugin, int index) {
               const auto parsed = plugin.hosted().parse(index, text);
               if (parsed) *value = *parsed;
               return parsed.has_value();
           });
}

}  // namespace

const clap_plugin_params_t kClapParamsTable{
    .count =
        [](const clap_plugin_t* handle) {
            return answer(handle, std::uint32_t{0}, [](ClapPlugin& plugin) {
                return static_cast<std::uint32_t>(plugin.parameters().size());
            });
        },
    .get_info = getInfo,
    .get_value = getValue,
    .value_to_text = valueToText,
    .text_to_value = textToValue,
    .flush =
        [](const clap_plugin_t* handle, const clap_input_events_t* in, const clap_output_events_t* out) {
            answer(handle, false, [=](ClapPlugin& plugin) { return plugin.flush(in, out), true; });
        },
};

}  // namespace vanta
