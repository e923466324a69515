#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "app/player/file_player.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/jack/jack_server.hpp"
#include "limiter/model/vanta_plugin.hpp"

namespace vanta {

/// A limiter that a file plays through: to a JACK server where one runs at the file's rate, else to nobody,
/// at the pace of a clock. There its port midi_in takes controllers.
class Engine final : private HostCallbacks {
public:
    /// The reader is mapped to `layout`. JACK knows the engine by `clientName`.
    Engine(AudioFileReader& reader, ChannelLayout layout, std::string clientName = "vanta-scope");
    ~Engine() override;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Starts to play. `useJack`: asks for a server. The result says where to.
    std::string start(bool useJack);

    /// Now and then: goes on by the clock if the server has gone.
    void keepPlaying();

    HostedPlugin& plugin() { return plugin_; }
    VantaPlugin& model() { return static_cast<VantaPlugin&>(plugin_.model()); }
    double sampleRate() const { return sampleRate_; }

    // Any thread.

    void setPaused(bool paused) { paused_.store(paused); }
    bool isPaused() const { return paused_.load(); }
    FilePlayer& player() { return player_; }
    const FilePlayer& player() const { return player_; }

private:
    static constexpr int kBlock = 256;
    static constexpr int kPausedBlock = 2048;
    static constexpr int kLargestBlock = 8192;

    bool startJack();
    void startClock();
    void runClock();
    VANTA_REALTIME void play(std::span<float* const> outputs, int samples, HostEventSource& events);

    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override {}
    void pumpRequested() override {}

    const std::string clientName_;
    double sampleRate_;
    FilePlayer player_;
    HostedPlugin plugin_;
    std::atomic<bool> paused_{false};
    std::atomic<bool> quit_{false};
    std::atomic<bool> serverHasGone_{false};
    std::vector<std::vector<float>> buffers_;
    std::vector<jack_port_t*> ports_;
    jack_port_t* midi_ = nullptr;
    std::thread clock_;
    JackConnection jack_;
};

}  // namespace vanta
