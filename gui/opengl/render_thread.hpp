#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "foundation/critical_section.hpp"
#include "gui/opengl/frame_rhythm.hpp"

namespace vanta::gui {

/// What a render thread draws on. All calls come from it.
class FrameTarget {
public:
    /// A vertical blank of the display. Milliseconds, the time by the steady clock.
    struct Vblank {
        double timeMs;
        double refreshMs;
    };

    virtual ~FrameTarget() = default;
    virtual bool makeCurrent() = 0;
    virtual void release() = 0;
    /// Under the lock: does what is due in each frame, and draws if something is dirty and it can, which is
    /// while the context is current. Whether there is something to swap.
    virtual bool drawFrame(bool canDraw) = 0;
    /// Under the lock: what was drawn last is never shown.
    virtual void frameDropped() = 0;
    virtual void swap() = 0;
    /// The newest one; nothing where the display does not tell.
    virtual std::optional<Vblank> vblank() = 0;
    virtual void deleteTextures() = 0;
};

/// Draws a frame whenever one is due, under a lock that it shares with the interface's thread, and swaps
/// without it. All operations are for the interface's thread.
class RenderThread {
public:
    RenderThread(FrameTarget& target, LockedObject& root) : target_(target), root_(root) {}
    ~RenderThread() { stop(true); }
    RenderThread(const RenderThread&) = delete;
    RenderThread& operator=(const RenderThread&) = delete;

    /// Throws std::system_error if the system gives no thread.
    void start(FrameRhythm rhythm);
    /// Waits for its end; whoever calls has given the lock away.
    void stop(bool deletesTextures);
    bool isRunning() const { return thread_.joinable(); }

    /// What it shows is outdated: ends its waits, and a frame that is not swapped yet never will be.
    void interrupt();
    /// Wants a frame as things are now, under the lock. A number for `awaitFrame`.
    unsigned requestFrame();
    /// Until that frame is shown or could not be, or the time is over: then false. Without the lock.
    bool awaitFrame(unsigned request, int mostMs);

private:
    static double nowMs();
    void run();
    void round();
    bool awaitSwapMoment(double& lateMs);
    /// Something is more urgent than waiting. With `mutex_`.
    bool isInterrupted() const { return stopping_ || interrupts_ != seenInterrupts_; }
    bool isInterruptedWithin(int milliseconds);
    bool isFrameWanted();

    FrameTarget& target_;
    LockedObject& root_;
    std::thread thread_;
    FrameRhythm rhythm_{};
    // Of the thread alone.
    bool current_ = false;
    int frameCounter_ = 0;
    double lastBlankMs_ = 0.0;
    double deadlineMs_ = 0.0;
    unsigned seenInterrupts_ = 0;  ///< what was drawn last takes account of these

    std::mutex mutex_;  ///< guards what follows; taken after the lock, never before it
    std::condition_variable wake_;
    std::condition_variable frameDone_;
    bool stopping_ = false;
    bool deletesTextures_ = false;
    unsigned interrupts_ = 0;
    unsigned requested_ = 0;
    unsigned finished_ = 0;
};

}  // namespace vanta::gui
