#include "host/clap/clap_ports.hpp"

#include <string>

#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {
namespace {

constexpr clap_id kMain = 0;
constexpr clap_id kNotes = 0;

std::uint32_t portCount(bool isInput) {
    return isInput ? 2 : 1;
}

const char* portType(ChannelLayout layout) {
    if (layout == kMonoLayout) return CLAP_PORT_MONO;
    return layout == kStereoLayout ? CLAP_PORT_STEREO : kClapPortSurround;
}

bool describePort(ChannelLayout layout, std::uint32_t index, bool isInput, clap_audio_port_info_t* info) {
    if (!info || index >= portCount(isInput)) return false;
    const bool isMain = index == kMain;
    *info = {};
    info->id = index;
    copyText(!isMain ? "Side Chain" : isInput ? "Input" : "Output", info->name, sizeof(info->name));
    if (isMain) info->flags = CLAP_AUDIO_PORT_IS_MAIN;
    info->channel_count = static_cast<std::uint32_t>(channelCount(layout));
    info->port_type = portType(layout);
    info->in_place_pair = isMain ? kMain : CLAP_INVALID_ID;
    return true;
}

// A configuration is a layout, and has its index.

void describeLayout(ChannelLayout layout, ClapAudioPortsConfig& config) {
    const auto channels = static_cast<std::uint32_t>(channelCount(layout));
    config = {};
    config.id = static_cast<clap_id>(layout);
    copyText(std::string(channelLayoutName(layout)).c_str(), config.name, sizeof(config.name));
    config.input_port_count = portCount(true);
    config.output_port_count = portCount(false);
    config.has_main_input = config.has_main_output = true;
    config.main_input_channel_count = config.main_output_channel_count = channels;
    config.main_input_port_type = config.main_output_port_type = portType(layout);
}

bool isLayout(std::uint32_t index) {
    return index < static_cast<std::uint32_t>(kChannelLayoutCount);
}

std::uint32_t writeChannelMap(ChannelLayout layout, std::uint8_t* map, std::uint32_t capacity) {
    const auto speakers = speakersOf(layout);
    if (!map || capacity < speakers.size()) return 0;
    const ChannelMap channels = mapByNumber(layout, clapSpeaker);
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        map[channels.hostChannel[i]] = static_cast<std::uint8_t>(clapSpeaker(speakers[i]));
    }
    return static_cast<std::uint32_t>(speakers.size());
}

}  // namespace

int clapSpeaker(Speaker speaker) {
    switch (speaker) {
        case Speaker::Left:
            return 0;
        case Speaker::Right:
            return 1;
        case Speaker::Mono:
        case Speaker::Center:
            return 2;
        case Speaker::Lfe:
            return 3;
        // CLAP knows one pair behind the listener besides the one at the sides.
        case Speaker::SurroundLeft:
        case Speaker::RearLeft:
            return 4;
        case Speaker::SurroundRight:
        case Speaker::RearRight:
            return 5;
        case Speaker::LeftOfCenter:
            return 6;
        case Speaker::RightOfCenter:
            return 7;
        case Speaker::RearCenter:
            return 8;
        case Speaker::SideLeft:
            return 9;
        case Speaker::SideRight:
            return 10;
        case Speaker::TopLeft:
            return 18;
        case Speaker::TopRight:
            return 19;
    }
    return 0;
}

const clap_plugin_audio_ports_t kClapAudioPortsTable{
    .count = [](const clap_plugin_t*, bool isInput) { return portCount(isInput); },
    .get =
        [](const clap_plugin_t* handle, std::uint32_t index, bool isInput, clap_audio_port_info_t* info) {
            return answer(handle, false, [=](ClapPlugin& plugin) {
                return describePort(plugin.hosted().layout(), index, isInput, info);
            });
        },
};

const ClapPluginAudioPortsConfig kClapAudioPortsConfigTable{
    .count = [](const clap_plugin_t*) { return static_cast<std::uint32_t>(kChannelLayoutCount); },
    .get =
        [](const clap_plugin_t* handle, std::uint32_t index, ClapAudioPortsConfig* config) {
            return answer(handle, false, [=](ClapPlugin&) {
                if (!config || !isLayout(index)) return false;
                describeLayout(static_cast<ChannelLayout>(index), *config);
                return true;
            });
        },
    .select =
        [](const clap_plugin_t* handle, clap_id id) {
            return answer(handle, false, [=](ClapPlugin& plugin) {
                return isLayout(id) && plugin.selectLayout(static_cast<ChannelLayout>(id));
            });
        },
};

const ClapPluginSurround kClapSurroundTable{
    .is_channel_mask_supported =
        [](const clap_plugin_t* handle, std::uint64_t mask) {
            return answer(handle, false,
                          [=](ClapPlugin&) { return layoutOfMask(mask, clapSpeaker).has_value(); });
        },
    .get_channel_map =
        [](const clap_plugin_t* handle, bool isInput, std::uint32_t port, std::uint8_t* map,
           std::uint32_t capacity) {
            return answer(handle, std::uint32_t{0}, [=](ClapPlugin& plugin) {
                return port < portCount(isInput) ? writeChannelMap(plugin.hosted().layout(), map, capacity)
                                                 : std::uint32_t{0};
            });
        },
};

const clap_plugin_note_ports_t kClapNotePortsTable{
    .count = [](const clap_plugin_t*, bool isInput) -> std::uint32_t { return isInput ? 1 : 0; },
    .get =
        [](const clap_plugin_t*, std::uint32_t index, bool isInput, clap_note_port_info_t* info) {
            if (!isInput || index != 0 || !info) return false;
            *info = {};
            info->id = kNotes;
            info->supported_dialects = info->preferred_dialect = CLAP_NOTE_DIALECT_MIDI;
            copyText("MIDI", info->name, sizeof(info->name));
            return true;
        },
};

}  // namespace vanta
