#pragma once

#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>

#include "host/clap/clap_extensions.hpp"

namespace vanta {

// Each in the file of its name.
extern const clap_plugin_params_t kClapParamsTable;
extern const clap_plugin_audio_ports_t kClapAudioPortsTable;
extern const ClapPluginAudioPortsConfig kClapAudioPortsConfigTable;
extern const ClapPluginSurround kClapSurroundTable;
extern const clap_plugin_note_ports_t kClapNotePortsTable;
extern const clap_plugin_latency_t kClapLatencyTable;
extern const ClapPluginTail kClapTailTable;
extern const ClapPluginRender kClapRenderTable;
extern const clap_plugin_state_t kClapStateTable;
extern const clap_plugin_gui_t kClapGuiTable;
extern const clap_plugin_timer_support_t kClapTimerTable;
extern const ClapPluginPosixFdSupport kClapPosixFdTable;

/// The table of an extension that every instance has; null for any other id.
const void* clapExtension(const char* id);
/// Likewise of one that comes with a window of ours.
const void* clapWindowExtension(const char* id);

/// Copies a text into a field of a host's, cut if it must be, without splitting a character.
void copyText(const char* text, char* field, std::size_t size);

}  // namespace vanta
