#include "gui/opengl/render_thread.hpp"

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace vanta::gui {
namespace {

using Milliseconds = std::chrono::milliseconds;

/// A swap right at the blank may block until the next.
constexpr double kAfterBlankMs = 6.0;
constexpr double kNotableDelayMs = 0.5;
constexpr double kRefreshTolerance = 0.1;
constexpr int kMostTries = 50;

class LockScope {
public:
    explicit LockScope(LockedObject& locked) : locked_(locked) { locked_.lockObject(); }
    ~LockScope() { locked_.unlockObject(); }
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;

private:
    LockedObject& locked_;
};

/// A host's signals are for its own threads.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &former_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t former_;
};

}  // namespace

double RenderThread::nowMs() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void RenderThread::start(FrameRhythm rhythm) {
    if (isRunning()) return;
    rhythm_ = rhythm;
    stopping_ = false;
    const SignalsBlocked blocked;
    thread_ = std::thread(&RenderThread::run, this);
}

void RenderThread::stop(bool deletesTextures) {
    if (!isRunning()) return;
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        deletesTextures_ = deletesTextures;
    }
    wake_.notify_all();
    thread_.join();
}

void RenderThread::interrupt() {
    const std::lock_guard lock(mutex_);
    ++interrupts_;
    wake_.notify_all();
}

unsigned RenderThread::requestFrame() {
    const std::lock_guard lock(mutex_);
    wake_.notify_all();
    return ++requested_;
}

bool RenderThread::awaitFrame(unsigned request, int mostMs) {
    std::unique_lock lock(mutex_);
    return frameDone_.wait_for(lock, Milliseconds(mostMs), [&] { return finished_ >= request; });
}

bool RenderThread::isInterruptedWithin(int milliseconds) {
    std::unique_lock lock(mutex_);
    return wake_.wait_for(lock, Milliseconds(milliseconds), [&] { return isInterrupted(); });
}

bool RenderThread::isFrameWanted() {
    const std::lock_guard lock(mutex_);
    return requested_ > finished_;
}

void RenderThread::run() {
    current_ = false;
    frameCounter_ = rhythm_.skip;
    const auto isStopping = [&] {
        const std::lock_guard lock(mutex_);
        return stopping_;
    };
    while (!isStopping()) round();
    if (current_ && deletesTextures_) target_.deleteTextures();
    if (current_) target_.release();
}

void RenderThread::round() {
    const double startedMs = nowMs();
    double workMs = 0.0;
    double lateMs = 0.0;
    unsigned request = 0;
    if (!current_) current_ = target_.makeCurrent();
    if (frameCounter_ >= rhythm_.skip || isFrameWanted()) {
        frameCounter_ = 0;
        bool drawn;
        {
            const LockScope locked(root_);
            {
                // Whatever comes from now on has to wait for the lock, and is not in this frame.
                const std::lock_guard lock(mutex_);
                seenInterrupts_ = interrupts_;
                request = requested_;
            }
            drawn = target_.drawFrame(current_);
        }
        workMs = nowMs() - startedMs;
        if (drawn && awaitSwapMoment(lateMs)) {
            const double swappedMs = nowMs();
            target_.swap();
            workMs += nowMs() - swappedMs;
        } else if (drawn) {
            const LockScope locked(root_);
            target_.frameDropped();
        }
    } else {
        ++frameCounter_;
    }
    std::unique_lock lock(mutex_);
    finished_ = std::max(finished_, request);
    frameDone_.notify_all();
    // Waits for the moment to swap do not count: the next frame is then ready at that moment.
    wake_.wait_for(lock, Milliseconds(rhythm_.waitAfter(workMs + lateMs)),
                   [&] { return isInterrupted() || requested_ > finished_; });
}

/// False if the frame is to be dropped. `lateMs` is by how much the round began later than it could have.
bool RenderThread::awaitSwapMoment(double& lateMs) {
    // Somebody waits for this very frame.
    if (isFrameWanted()) return !isInterruptedWithin(0);
    std::optional<FrameTarget::Vblank> blank = target_.vblank();
    for (int i = 0; blank && blank->timeMs == lastBlankMs_ && i < kMostTries && nowMs() <= deadlineMs_; ++i) {
        if (isInterruptedWithin(1)) return false;
        blank = target_.vblank();
    }
    if (!blank) return !isInterruptedWithin(0);
    lastBlankMs_ = blank->timeMs;
    const bool isReliable = std::abs(blank->refreshMs - rhythm_.periodMs) <= kRefreshTolerance;
    const double refreshMs = isReliable ? blank->refreshMs : rhythm_.periodMs;
    double blankMs = blank->timeMs;
    if (const double aheadMs = blankMs - nowMs(); aheadMs > 0.0) {
        blankMs -= std::ceil(aheadMs / refreshMs) * refreshMs;
    }
    for (int i = 0; i < kMostTries; ++i) {
        const double late = nowMs() - blankMs - kAfterBlankMs;
        if (i == 0 && late > kNotableDelayMs) lateMs = late;
        if (late > 0.0) break;
        if (isInterruptedWithin(1)) return false;
    }
    deadlineMs_ = blankMs + 1.25 * refreshMs;
    return !isInterruptedWithin(0);
}

}  // namespace vanta::gui
