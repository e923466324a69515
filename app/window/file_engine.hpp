#pragma once

#include "app/scope/engine.hpp"
#include "app/window/app_engine.hpp"

namespace vanta {

/// A file that plays round and round, heard where a JACK server runs at its rate.
class FileEngine final : public AppEngine {
public:
    FileEngine(AudioFileReader& reader, ChannelLayout layout, bool usesJack)
        : engine_(reader, layout, "vanta-app"), usesJack_(usesJack) {}

    HostedPlugin& plugin() override { return engine_.plugin(); }
    std::string start() override { return "plays to " + engine_.start(usesJack_); }
    void pump() override {
        engine_.keepPlaying();
        engine_.plugin().pump();
    }
    void togglePause() override { engine_.setPaused(!engine_.isPaused()); }
    void toggleLoop() override { engine_.setLooping(!engine_.isLooping()); }
    void restart() override { engine_.restart(); }

private:
    Engine engine_;
    bool usesJack_;
};

}  // namespace vanta
