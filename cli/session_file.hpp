#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

#include "host/offline/limiter_settings.hpp"
#include "limiter/parameters/vanta_parameters.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

/// An instance of the limiter as a host keeps it with a session: all values, the preset's name, both compare
/// slots. It has nothing to do with the settings and presets in the user's folders.
class SessionInstance final : public GenericPlugin, public VantaParameters {
public:
    SessionInstance();

    /// Takes over the state in `file`. Failure if it cannot be read or is not a state.
    void recall(const std::filesystem::path& file);
    /// Puts the state into `file`, whole or not at all. Failure if that cannot be done.
    void store(const std::filesystem::path& file);
    /// The same for the bytes of a state. False, and nothing has changed, if they are not one.
    bool recall(std::span<const std::byte> state);
    /// Sets every value that differs.
    void take(const LimiterSettings& settings);
    void giveTo(LimiterSettings& settings) const;

    std::string presetMagic() const override;
    int presetVersion() const override;
};

/// Gives the values of the state in `file` to `settings`. Failure as of `SessionInstance::recall`.
void recallState(LimiterSettings& settings, const std::filesystem::path& file);

}  // namespace vanta
