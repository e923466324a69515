#pragma once

#include <array>

#include "wave/level_source.hpp"

namespace vanta::test {

/// Readings that a test sets, and what was asked of the source.
class FakeSource final : public wave::LevelSource {
public:
    FakeSource() = default;
    FakeSource(float current, float highest, float extreme = kSilence) : values{current, highest, extreme} {}

    static constexpr float kSilence = -180.0f;

    Detection detection() const override { return Maximum; }
    float value(Info info) override {
        ++reads;
        return values[static_cast<std::size_t>(info)];
    }
    void resetPeak() override { ++peakResets; }
    void resetMeasurement() override { ++measurementResets; }

    std::array<float, InfoCount> values{kSilence, kSilence, kSilence, 0.0f, kSilence};
    int reads = 0;
    int peakResets = 0;
    int measurementResets = 0;
};

}  // namespace vanta::test
