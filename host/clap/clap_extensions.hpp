#pragma once

#include <clap/plugin.h>
#include <clap/string-sizes.h>

#include <cstdint>

namespace vanta {

// Extensions that the packaged headers lack, as they were published. The names of fields are those of CLAP.

/// "clap.audio-ports-config": the host chooses among sets of ports. Main thread.
inline constexpr char kClapAudioPortsConfig[] = "clap.audio-ports-config";
struct ClapAudioPortsConfig {
    clap_id id;
    char name[CLAP_NAME_SIZE];
    std::uint32_t input_port_count;
    std::uint32_t output_port_count;
    bool has_main_input;
    std::uint32_t main_input_channel_count;
    const char* main_input_port_type;
    bool has_main_output;
    std::uint32_t main_output_channel_count;
    const char* main_output_port_type;
};
struct ClapPluginAudioPortsConfig {
    std::uint32_t (*count)(const clap_plugin_t* plugin);
    bool (*get)(const clap_plugin_t* plugin, std::uint32_t index, ClapAudioPortsConfig* config);
    /// While not active.
    bool (*select)(const clap_plugin_t* plugin, clap_id config_id);
};

/// "clap.surround/4": which speaker each channel of a port feeds. Main thread.
inline constexpr char kClapSurround[] = "clap.surround/4";
inline constexpr char kClapSurroundDraft[] = "clap.surround.draft/4";
inline constexpr char kClapPortSurround[] = "surround";
struct ClapPluginSurround {
    /// Bits `1 << speaker`.
    bool (*is_channel_mask_supported)(const clap_plugin_t* plugin, std::uint64_t channel_mask);
    /// The number of channels written; 0 if they do not fit.
    std::uint32_t (*get_channel_map)(const clap_plugin_t* plugin, bool is_input, std::uint32_t port_index,
                                     std::uint8_t* channel_map, std::uint32_t channel_map_capacity);
};

/// "clap.render": whether anybody waits for the sound. Main thread.
inline constexpr char kClapRender[] = "clap.render";
inline constexpr std::int32_t kClapRenderRealtime = 0;
inline constexpr std::int32_t kClapRenderOffline = 1;
struct ClapPluginRender {
    bool (*has_hard_realtime_requirement)(const clap_plugin_t* plugin);
    bool (*set)(const clap_plugin_t* plugin, std::int32_t mode);
};

/// "clap.tail": samples; INT32_MAX and above are endless. Main or audio thread.
inline constexpr char kClapTail[] = "clap.tail";
struct ClapPluginTail {
    std::uint32_t (*get)(const clap_plugin_t* plugin);
};

/// "clap.posix-fd-support": the host's loop waits for descriptors as well. Main thread.
inline constexpr char kClapPosixFdSupport[] = "clap.posix-fd-support";
inline constexpr std::uint32_t kClapPosixFdRead = 1;
struct ClapPluginPosixFdSupport {
    void (*on_fd)(const clap_plugin_t* plugin, int fd, std::uint32_t flags);
};
struct ClapHostPosixFdSupport {
    bool (*register_fd)(const clap_host_t* host, int fd, std::uint32_t flags);
    bool (*modify_fd)(const clap_host_t* host, int fd, std::uint32_t flags);
    bool (*unregister_fd)(const clap_host_t* host, int fd);
};

/// Of clap_param_info: every value of a stepped parameter has a text of its own.
inline constexpr std::uint32_t kClapParamIsEnum = 1u << 16;

}  // namespace vanta
