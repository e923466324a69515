#pragma once

#include <array>

#include "interface/display/column_queue.hpp"

namespace vanta::interface {

/// A number at a peak of a curve.
struct PeakLabel {
    static constexpr int kFree = -1024;
    static constexpr int kClaimed = -1023;  ///< waits for a peak that gives it a place

    bool isFree() const { return distance == kFree; }
    bool hasPlace() const { return distance > kClaimed; }

    float level = 0.0f;    ///< in the display's domain
    int distance = kFree;  ///< columns to the left of the pen
    bool visible = false;  ///< published, and not on its way out
    int alpha = 0;
    int index = 0;  ///< of the text that belongs to it
};

/// Chooses which peaks get a label. One candidate follows the curve; when it is far enough from the pen it is
/// published, if it has room and is no weaker than its neighbour, or failing that is old enough. Labels lie
/// in a ring: the candidate at the head, behind it the published ones, the newest first.
class PeakLabelRing {
public:
    static constexpr int kCount = 10;

    /// Who shows the labels.
    class Viewer {
    public:
        /// A label is new: its text is to be made, and it fades in.
        virtual void labelPublished(PeakLabel& label) = 0;
        virtual void labelLeaves(PeakLabel& label) = 0;

    protected:
        ~Viewer() = default;
    };

    /// What the picture is like.
    struct Picture {
        RealTimeOperation operation = RealTimeOperation::Maximum;
        int labelWidth = 0;
        int width = 0;
        bool infinite = false;
        int entries = 0;  ///< of the curve's table in Infinite
    };

    explicit PeakLabelRing(Viewer& viewer);

    /// `columns` have passed, and the most extreme level of the curve among them was `level`, `age` columns
    /// ago.
    void advance(int columns, float level, int age, const Picture& picture);
    /// The picture has been squeezed to a half.
    void halve(const Picture& picture);
    /// No labels any more.
    void clear();

    /// From the newest to the oldest; null where there are no more.
    const PeakLabel* published(int place) const;
    const PeakLabel& candidate() const { return at(0); }

private:
    PeakLabel& at(int place) { return *ring_[position(place)]; }
    const PeakLabel& at(int place) const { return *ring_[position(place)]; }
    std::size_t position(int place) const { return static_cast<std::size_t>((head_ + place) % kCount); }
    void leave(PeakLabel& label);
    void scroll(int columns, const Picture& picture);
    void dropFaded();
    void follow(float level, int distance, const Picture& picture);
    /// Of the candidate. Frees it where there will never be room.
    bool isReady(const Picture& picture);
    bool isReadyInInfinite(const Picture& picture);
    void publish();

    Viewer& viewer_;
    std::array<PeakLabel, kCount> labels_;
    std::array<PeakLabel*, kCount> ring_{};
    int head_ = 0;
};

}  // namespace vanta::interface
