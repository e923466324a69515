#include "tools/song/space.hpp"

#include <array>

namespace vanta::song {
namespace {

constexpr double kPreDelaySeconds = 0.014;
constexpr double kDampingHz = 5200;
constexpr double kLowCutHz = 160;
constexpr std::array<double, 8> kLineSeconds{0.0297, 0.0371, 0.0411, 0.0437, 0.0533, 0.0599, 0.0671, 0.0743};
constexpr std::array<double, 4> kDiffuserSeconds{0.0047, 0.0036, 0.0127, 0.0093};

class DelayLine {
public:
    explicit DelayLine(double seconds) : memory_(frameAt(seconds)) {}

    double read() const { return memory_[at_]; }
    void write(double in) {
        memory_[at_] = in;
        if (++at_ == memory_.size()) at_ = 0;
    }

private:
    std::vector<double> memory_;
    std::size_t at_ = 0;
};

/// Schroeder's all-pass: smears a stroke without colouring it.
class Diffuser {
public:
    explicit Diffuser(double seconds) : delay_(seconds) {}

    double next(double in) {
        constexpr double kGain = 0.6;
        const double late = delay_.read();
        const double sum = in - kGain * late;
        delay_.write(sum);
        return late + kGain * sum;
    }

private:
    DelayLine delay_;
};

/// One side's way in: low cut, pre-delay and diffusers, which differ a little between the sides.
class Entrance {
public:
    explicit Entrance(double stretch) : preDelay_(kPreDelaySeconds * stretch) {
        for (const double seconds : kDiffuserSeconds) diffusers_.emplace_back(seconds * stretch);
    }

    double next(double in) {
        double sound = preDelay_.read();
        preDelay_.write(lowCut_.next(in).high);
        for (auto& diffuser : diffusers_) sound = diffuser.next(sound);
        return sound;
    }

private:
    Filter lowCut_{kLowCutHz, 0.7};
    DelayLine preDelay_;
    std::vector<Diffuser> diffusers_;
};

/// Hadamard matrix of order 8 times its inverse root: keeps the energy.
void blend(std::array<double, 8>& values) {
    for (std::size_t half = 1; half < 8; half *= 2)
        for (std::size_t i = 0; i < 8; ++i)
            if ((i & half) == 0) {
                const double sum = values[i] + values[i + half];
                values[i + half] = values[i] - values[i + half];
                values[i] = sum;
            }
    for (auto& value : values) value *= 0.35355339059327373;
}

}  // namespace

Stereo reverberate(const Stereo& send, double decaySeconds) {
    Stereo wet(send.frames());
    Entrance leftIn(1), rightIn(1.07);
    std::vector<DelayLine> lines;
    std::array<double, 8> gains{}, dark{};
    for (std::size_t i = 0; i < 8; ++i) {
        lines.emplace_back(kLineSeconds[i]);
        gains[i] = std::pow(10, -3 * kLineSeconds[i] / decaySeconds);
    }
    const double damping = std::exp(-kTwoPi * kDampingHz / kStudioRate);
    std::array<double, 8> values{};
    for (std::size_t frame = 0; frame < send.frames(); ++frame) {
        for (std::size_t i = 0; i < 8; ++i) {
            dark[i] = lines[i].read() + damping * (dark[i] - lines[i].read());
            values[i] = gains[i] * dark[i];
        }
        wet.left[frame] = values[0] + values[2] - values[4] + values[6];
        wet.right[frame] = values[1] - values[3] + values[5] + values[7];
        blend(values);
        const double left = leftIn.next(send.left[frame]);
        const double right = rightIn.next(send.right[frame]);
        for (std::size_t i = 0; i < 8; ++i) lines[i].write(values[i] + (i % 2 == 0 ? left : right));
    }
    return wet;
}

}  // namespace vanta::song
