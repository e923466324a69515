#include "host/clap/clap_extension_tables.hpp"

#include <algorithm>
#include <cstring>
#include <span>

namespace vanta {
namespace {

struct Row {
    const char* id;
    const void* table;
};

const Row kRows[] = {
    {CLAP_EXT_PARAMS, &kClapParamsTable},
    {CLAP_EXT_AUDIO_PORTS, &kClapAudioPortsTable},
    {kClapAudioPortsConfig, &kClapAudioPortsConfigTable},
    {kClapSurround, &kClapSurroundTable},
    {kClapSurroundDraft, &kClapSurroundTable},
    {CLAP_EXT_NOTE_PORTS, &kClapNotePortsTable},
    {CLAP_EXT_LATENCY, &kClapLatencyTable},
    {kClapTail, &kClapTailTable},
    {kClapRender, &kClapRenderTable},
    {CLAP_EXT_STATE, &kClapStateTable},
};
const Row kWindowRows[] = {{CLAP_EXT_GUI, &kClapGuiTable},
                           {CLAP_EXT_TIMER_SUPPORT, &kClapTimerTable},
                           {kClapPosixFdSupport, &kClapPosixFdTable}};

const void* find(std::span<const Row> rows, const char* id) {
    const auto row = std::ranges::find_if(rows, [id](const Row& each) { return !std::strcmp(each.id, id); });
    return row == rows.end() ? nullptr : row->table;
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

const void* clapExtension(const char* id) {
    return find(kRows, id);
}

const void* clapWindowExtension(const char* id) {
    return find(kWindowRows, id);
}

void copyText(const char* text, char* field, std::size_t size) {
    if (size == 0) return;
    std::size_t length = std::min(std::strlen(text), size - 1);
    while (length > 0 && continuesCharacter(text[length])) --length;
    std::memcpy(field, text, length);
    field[length] = '\0';
}

}  // namespace vanta
