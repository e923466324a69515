#pragma once

namespace vanta::gui {

/// How a picture grows along one axis: its ends stay as they are, what lies between them is repeated. It
/// never shrinks or grows in itself, so nothing gets blurred. Logical units.
class ThreeSlices {
public:
    /// `crossLength` is the size of the picture on the other axis, which an end does not exceed unless
    /// `minimumEnd` wants it to.
    ThreeSlices(float sourceLength, float targetLength, float crossLength, float minimumEnd, float scale);

    /// Which place of the source is shown at one of the target.
    float sourceOf(float target) const;

    /// Calls visit(target, length, source) for each piece, ends first.
    template <typename Visit>
    void forEachPiece(Visit&& visit) const {
        if (!isStretched_) return visit(0.0f, targetLength_, 0.0f);
        if (end_ > 0.0f) {
            visit(0.0f, end_, 0.0f);
            visit(targetLength_ - end_, end_, sourceLength_ - end_);
        }
        const float limit = targetLength_ - end_;
        // Multiplied rather than added up, so that rounding does not grow along the way.
        for (int i = 0; true; ++i) {
            const float start = end_ + static_cast<float>(i) * tile_;
            if (!(start < limit)) return;
            visit(start, start + tile_ < limit ? tile_ : limit - start, end_);
        }
    }

private:
    float sourceLength_;
    float targetLength_;
    bool isStretched_;
    float end_ = 0.0f;
    float tile_ = 1.0f;
};

}  // namespace vanta::gui
