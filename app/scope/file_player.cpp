#include "app/scope/file_player.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace vanta {
namespace {

constexpr auto kNap = std::chrono::milliseconds(20);

}  // namespace

FilePlayer::FilePlayer(AudioFileReader& reader)
    : reader_(reader),
      channels_(static_cast<std::size_t>(reader.channelCount()), std::vector<float>(kAhead)),
      portion_(channels_.size(), std::vector<float>(kPortion)) {
    while (room() >= kPortion) readPortion();
    thread_ = std::thread([this] { readAhead(); });
}

FilePlayer::~FilePlayer() {
    quit_.store(true);
    thread_.join();
}

void FilePlayer::play(std::span<float* const> channels, int samples) {
    const std::uint64_t from = played_.load(std::memory_order_relaxed);
    const std::uint64_t ready = written_.load(std::memory_order_acquire) - from;
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(ready, static_cast<std::uint64_t>(samples)));
    for (std::size_t c = 0; c < channels.size(); ++c) {
        for (std::size_t i = 0; i < count; ++i) channels[c][i] = channels_[c][(from + i) & (kAhead - 1)];
        std::fill(channels[c] + count, channels[c] + samples, 0.0f);
    }
    played_.store(from + count, std::memory_order_release);
}

void FilePlayer::readAhead() {
    while (!quit_.load()) {
        const bool isOver = atEnd_ && !looping_.load() && !restart_.load();
        if (room() < kPortion || isOver) {
            std::this_thread::sleep_for(kNap);
            continue;
        }
        try {
            readPortion();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "the file ends here: %s\n", error.what());
            return;
        }
    }
}

void FilePlayer::readPortion() {
    if (restart_.exchange(false) || (atEnd_ && looping_.load())) reader_.rewind();
    std::vector<float*> targets;
    for (auto& channel : portion_) targets.push_back(channel.data());
    const std::size_t count = reader_.read(targets, kPortion);
    atEnd_ = count < kPortion;
    const std::uint64_t at = written_.load(std::memory_order_relaxed);
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        for (std::size_t i = 0; i < count; ++i) channels_[c][(at + i) & (kAhead - 1)] = portion_[c][i];
    }
    written_.store(at + count, std::memory_order_release);
}

}  // namespace vanta
