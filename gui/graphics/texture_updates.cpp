#include "gui/graphics/texture_updates.hpp"

#include <algorithm>
#include <cstdint>

namespace vanta::gui {
namespace {

constexpr std::size_t kMostParts = 3;

std::int64_t areaOf(const DeviceRect& rect) {
    return std::int64_t{rect.width()} * rect.height();
}

}  // namespace

void TextureUpdates::markWhole() {
    state_ = State::Whole;
    parts_.clear();
}

void TextureUpdates::mark(const DeviceRect& changed) {
    if (state_ == State::Whole || changed.isEmpty()) return;
    state_ = State::Parts;
    const auto best = std::min_element(parts_.begin(), parts_.end(), [&](const auto& a, const auto& b) {
        return areaOf(a.united(changed)) < areaOf(b.united(changed));
    });
    const bool isApart =
        best == parts_.end() ||
        (parts_.size() < kMostParts && areaOf(*best) + areaOf(changed) < areaOf(best->united(changed)));
    if (isApart) {
        parts_.push_back(changed);
    } else {
        *best = best->united(changed);
    }
}

void TextureUpdates::uploaded() {
    state_ = State::Current;
    parts_.clear();
}

}  // namespace vanta::gui
