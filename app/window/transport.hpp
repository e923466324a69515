#pragma once

namespace vanta {

/// What plays a file, as a user steers it. Times are seconds of the file.
class Transport {
public:
    virtual ~Transport() = default;

    virtual bool isPaused() const = 0;
    /// At the end of a file that does not loop it starts over.
    virtual void togglePause() = 0;
    virtual bool isLooping() const = 0;
    virtual void toggleLoop() = 0;
    virtual double position() const = 0;
    virtual double length() const = 0;
    virtual void jump(double seconds) = 0;
    void restart() { jump(0.0); }
};

}  // namespace vanta
