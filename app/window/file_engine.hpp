#pragma once

#include "app/player/engine.hpp"
#include "app/window/app_engine.hpp"

namespace vanta {

/// A file that plays round and round, heard where a JACK server runs at its rate.
class FileEngine final : public AppEngine, private Transport {
public:
    FileEngine(AudioFileReader& reader, ChannelLayout layout, bool usesJack)
        : engine_(reader, layout, "vanta-app"), usesJack_(usesJack) {}

    HostedPlugin& plugin() override { return engine_.plugin(); }
    std::string start() override { return "plays to " + engine_.start(usesJack_); }
    void pump() override {
        engine_.keepPlaying();
        engine_.plugin().pump();
    }
    Transport* transport() override { return this; }

private:
    bool isPaused() const override { return engine_.isPaused() || hasEnded(); }
    void togglePause() override {
        if (!engine_.isPaused() && hasEnded()) {
            jump(0.0);
        } else {
            engine_.setPaused(!engine_.isPaused());
        }
    }
    bool isLooping() const override { return player().isLooping(); }
    void toggleLoop() override { engine_.player().setLooping(!isLooping()); }
    double position() const override { return seconds(player().position()); }
    double length() const override { return seconds(player().length()); }
    void jump(double second) override {
        engine_.player().jump(static_cast<std::int64_t>(second * engine_.sampleRate()));
    }

    const FilePlayer& player() const { return engine_.player(); }
    bool hasEnded() const { return !isLooping() && player().position() >= player().length(); }
    double seconds(std::int64_t frames) const { return static_cast<double>(frames) / engine_.sampleRate(); }

    Engine engine_;
    bool usesJack_;
};

}  // namespace vanta
