#include "interface/display/peak_label_ring.hpp"

#include <algorithm>

#include "interface/display/compression.hpp"

namespace vanta::interface {

PeakLabelRing::PeakLabelRing(Viewer& viewer) : viewer_(viewer) {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        labels_[i].index = static_cast<int>(i);
        ring_[i] = &labels_[i];
    }
}

const PeakLabel* PeakLabelRing::published(int place) const {
    if (place + 1 >= kCount) return nullptr;
    const PeakLabel& label = at(place + 1);
    return label.isFree() ? nullptr : &label;
}

void PeakLabelRing::leave(PeakLabel& label) {
    if (!label.visible) return;
    label.visible = false;
    viewer_.labelLeaves(label);
}

void PeakLabelRing::clear() {
    for (PeakLabel& label : labels_) {
        label.distance = PeakLabel::kFree;
        leave(label);
    }
}

void PeakLabelRing::advance(int columns, float level, int age, const Picture& picture) {
    if (picture.infinite) {
        dropFaded();
    } else {
        scroll(columns, picture);
    }
    // In Infinite labels stand still, and are told by their distance from the right edge.
    const int distance = picture.infinite ? picture.width + kTableLead + 2 - picture.entries + age : age;
    follow(level, distance, picture);
    const bool hasRoom = at(kCount - 1).isFree();
    if (hasRoom && (picture.infinite ? isReadyInInfinite(picture) : isReady(picture))) publish();
}

void PeakLabelRing::scroll(int columns, const Picture& picture) {
    for (PeakLabel& label : labels_) {
        if (!label.hasPlace()) continue;
        label.distance += columns;
        if (label.distance <= picture.labelWidth / 2 + picture.width) continue;
        label.distance = PeakLabel::kFree;
        leave(label);
    }
}

/// Those that are seen stay together behind the head, in their order.
void PeakLabelRing::dropFaded() {
    int kept = 1;
    for (int place = 1; place < kCount; ++place) {
        PeakLabel& label = at(place);
        if (label.isFree()) continue;
        if (!label.visible && label.alpha <= 0) {
            label.distance = PeakLabel::kFree;
        } else {
            std::swap(ring_[position(place)], ring_[position(kept)]);
            ++kept;
        }
    }
}

void PeakLabelRing::follow(float level, int distance, const Picture& picture) {
    PeakLabel& candidate = at(0);
    if (candidate.isFree()) {
        candidate.distance = PeakLabel::kClaimed;
        candidate.level = level;
    } else if (isBeyond(picture.operation, level, candidate.level)) {
        candidate.level = level;
        candidate.distance = distance;
    } else if (!candidate.hasPlace() && isBeyond(picture.operation, candidate.level, level)) {
        candidate.level = level;
    }
}

bool PeakLabelRing::isReady(const Picture& picture) {
    const PeakLabel& candidate = at(0);
    const PeakLabel& next = at(1);
    const int farAway = 4 * picture.labelWidth;
    if (candidate.distance <= picture.labelWidth) return false;
    return next.isFree() || next.distance - candidate.distance > farAway ||
           isBeyond(picture.operation, candidate.level, next.level) || candidate.distance > farAway;
}

bool PeakLabelRing::isReadyInInfinite(const Picture& picture) {
    PeakLabel& candidate = at(0);
    const PeakLabel& next = at(1);
    const int fromPen = candidate.distance - (picture.width - (picture.entries - kTableLead));
    if (!candidate.hasPlace() || fromPen <= picture.labelWidth) return false;
    if (next.isFree() || next.distance - candidate.distance > 2 * picture.labelWidth) return true;
    if (fromPen > 3 * picture.labelWidth) candidate.distance = PeakLabel::kFree;
    return false;
}

void PeakLabelRing::publish() {
    PeakLabel& label = at(0);
    head_ = (head_ + kCount - 1) % kCount;
    if (label.visible) return;
    label.visible = true;
    viewer_.labelPublished(label);
}

void PeakLabelRing::halve(const Picture& picture) {
    PeakLabel* newer = nullptr;
    for (int place = 0; place < kCount; ++place) {
        PeakLabel& label = at(place);
        if (!label.hasPlace()) continue;
        label.distance = picture.width - (picture.width - label.distance) / 2;
        if (newer) {
            if (label.distance > picture.width - picture.labelWidth) {
                leave(label);
            } else if (newer->visible && label.distance - newer->distance < 2 * picture.labelWidth) {
                leave(isBeyond(picture.operation, label.level, newer->level) ? *newer : label);
            }
        }
        newer = &label;
    }
}

}  // namespace vanta::interface
