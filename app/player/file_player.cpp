#include "app/player/file_player.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace vanta {
namespace {

/// Short against what is read ahead, and against what a jump may take.
constexpr auto kNap = std::chrono::milliseconds(30);

}  // namespace

FilePlayer::FilePlayer(AudioFileReader& reader)
    : reader_(reader),
      channels_(static_cast<std::size_t>(reader.channelCount()), std::vector<float>(kAhead)),
      frames_(kAhead),
      portion_(channels_.size(), std::vector<float>(kPortion)),
      length_(reader.info().frames) {
    while (room() >= kPortion) readPortion();
    thread_ = std::thread([this] { readAhead(); });
}

FilePlayer::~FilePlayer() {
    quit_.store(true);
    thread_.join();
}

void FilePlayer::play(std::span<float* const> channels, int samples) {
    const std::uint64_t from =
        std::max(played_.load(std::memory_order_relaxed), skipTo_.load(std::memory_order_acquire));
    const std::uint64_t ready = written_.load(std::memory_order_acquire) - from;
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(ready, static_cast<std::uint64_t>(samples)));
    for (std::size_t c = 0; c < channels.size(); ++c) {
        for (std::size_t i = 0; i < count; ++i) channels[c][i] = channels_[c][(from + i) & (kAhead - 1)];
        std::fill(channels[c] + count, channels[c] + samples, 0.0f);
    }
    if (count > 0) position_.store(frames_[(from + count - 1) & (kAhead - 1)] + 1);
    played_.store(from + count, std::memory_order_release);
}

void FilePlayer::jump(std::int64_t frame) {
    const std::int64_t target = std::clamp<std::int64_t>(frame, 0, length_);
    jumpTo_.store(target);
    position_.store(target);
}

void FilePlayer::readAhead() {
    try {
        while (!quit_.load()) {
            if (const std::int64_t frame = jumpTo_.exchange(kNoJump); frame != kNoJump) startAt(frame);
            if (isIdle()) {
                std::this_thread::sleep_for(kNap);
            } else {
                readPortion();
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "the file ends here: %s\n", error.what());
    }
}

void FilePlayer::startAt(std::int64_t frame) {
    reader_.seek(frame);
    nextFrame_ = frame;
    atEnd_ = false;
    skipTo_.store(written_.load(std::memory_order_relaxed), std::memory_order_release);
}

void FilePlayer::readPortion() {
    if (atEnd_) {
        reader_.seek(0);
        nextFrame_ = 0;
    }
    std::vector<float*> targets;
    for (auto& channel : portion_) targets.push_back(channel.data());
    const std::size_t count = reader_.read(targets, kPortion);
    atEnd_ = count < kPortion;
    const std::uint64_t at = written_.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t place = (at + i) & (kAhead - 1);
        for (std::size_t c = 0; c < channels_.size(); ++c) channels_[c][place] = portion_[c][i];
        frames_[place] = nextFrame_++;
    }
    written_.store(at + count, std::memory_order_release);
}

}  // namespace vanta
