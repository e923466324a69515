#include "cli/session_file.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "cli/output_file.hpp"
#include "foundation/failure.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "plugin/model/session_state.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// No state comes near it.
constexpr std::size_t kLargestState = std::size_t{1} << 20;

std::vector<std::byte> bytesOf(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) throw Failure(fmt::format("{}: no such file", file.string()));
    if (!fs::is_regular_file(file, error))
        throw Failure(fmt::format("{}: is not a regular file", file.string()));
    std::vector<std::byte> bytes(kLargestState);
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream.eof() && stream.fail())
        throw Failure(fmt::format("{}: cannot be read: {}", file.string(), std::strerror(errno)));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

}  // namespace

SessionInstance::SessionInstance()
    : GenericPlugin(kStereoLayout), VantaParameters(static_cast<GenericPluginBase&>(*this)) {
    initialize({});
}

std::string SessionInstance::presetMagic() const {
    return std::string(kPresetTag);
}

int SessionInstance::presetVersion() const {
    return kPresetVersion;
}

void SessionInstance::recall(const fs::path& file) {
    if (!recall(bytesOf(file)))
        throw Failure(fmt::format(
            "{}: is not a state of this limiter, or is damaged: use a file that 'vanta state save' wrote",
            file.string()));
}

bool SessionInstance::recall(std::span<const std::byte> state) {
    return readSessionState(*this, state);
}

void SessionInstance::store(const fs::path& file) {
    const std::vector<std::byte> state = writeSessionState(*this);
    writeOutput(file, std::string_view(reinterpret_cast<const char*>(state.data()), state.size()));
}

void SessionInstance::take(const LimiterSettings& settings) {
    for (int i = 0; i < parameterCount(); ++i) parameterAt(i)->setValue(settings.parameterAt(i)->value(), 0);
}

void SessionInstance::giveTo(LimiterSettings& settings) const {
    for (int i = 0; i < parameterCount(); ++i) settings.parameterAt(i)->setValue(parameterAt(i)->value(), 0);
}

void recallState(LimiterSettings& settings, const fs::path& file) {
    SessionInstance instance;
    instance.recall(file);
    instance.giveTo(settings);
}

}  // namespace vanta
