#include "host/lv2/lv2_port_values.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vanta {
namespace {

constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();

/// Hosts keep values of ports as texts with six digits or more.
bool isSameText(float a, float b) {
    return std::abs(a - b) <= 1e-6f + 1e-5f * std::abs(b);
}

}  // namespace

Lv2PortValues::Lv2PortValues(std::vector<Lv2Control> controls)
    : controls_(std::move(controls)),
      ports_(controls_.size()),
      seen_(controls_.size()),
      restored_(controls_.size()),
      expected_(controls_.size()) {
    expectNothing();
    forget();
}

bool Lv2PortValues::isNews(std::size_t index, float shown, bool restored) {
    const float before = seen_[index].exchange(shown);
    float expected = expected_[index].load();
    if (!std::isnan(expected)) {
        // Unless the next value is on its way by now.
        if (shown == expected) expected_[index].compare_exchange_strong(expected, kNothing);
        return false;
    }
    const float saved = restored ? restored_[index].load() : kNothing;
    return std::isnan(saved) ? before != shown : !isSameText(shown, saved);
}

void Lv2PortValues::expectNothing(std::size_t index) {
    expected_[index].store(kNothing);
}

void Lv2PortValues::expectNothing() {
    for (auto& each : expected_) each.store(kNothing);
}

std::vector<float> Lv2PortValues::seen() const {
    const Values& newest = isRestored_.load() ? restored_ : seen_;
    return {newest.begin(), newest.end()};
}

void Lv2PortValues::restore(std::span<const float> saved) {
    for (std::size_t i = 0; i < restored_.size(); ++i) {
        restored_[i].store(i < saved.size() ? saved[i] : kNothing);
    }
    isRestored_.store(true);
}

void Lv2PortValues::forget() {
    isRestored_.store(false);
    for (auto& each : seen_) each.store(kNothing);
}

}  // namespace vanta
