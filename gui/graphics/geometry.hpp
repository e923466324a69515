#pragma once

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace vanta::gui {

template <typename T>
struct BasicPoint {
    T x{};
    T y{};

    bool operator==(const BasicPoint&) const = default;
    BasicPoint operator+(BasicPoint other) const { return {x + other.x, y + other.y}; }
    BasicPoint operator-(BasicPoint other) const { return {x - other.x, y - other.y}; }
};

/// Left and top belong to it, right and bottom do not. All zero stands for nothing.
template <typename T>
struct BasicRect {
    T left{};
    T top{};
    T right{};
    T bottom{};

    static BasicRect ofSize(T x, T y, T width, T height) { return {x, y, x + width, y + height}; }

    bool operator==(const BasicRect&) const = default;
    T width() const { return right - left; }
    T height() const { return bottom - top; }
    BasicPoint<T> origin() const { return {left, top}; }
    bool isEmpty() const { return !(width() > T{} && height() > T{}); }
    bool contains(BasicPoint<T> point) const {
        return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
    }
    BasicRect translated(BasicPoint<T> by) const {
        return {left + by.x, top + by.y, right + by.x, bottom + by.y};
    }
    BasicRect intersected(const BasicRect& other) const {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
    /// The bounding box of both; an empty one adds nothing.
    BasicRect united(const BasicRect& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }
};

/// In logical units: one is a pixel of the artwork at scale 1.
using Point = BasicPoint<float>;
using Rect = BasicRect<float>;
/// In pixels of the device.
using DevicePoint = BasicPoint<int>;
using DeviceRect = BasicRect<int>;

/// A rectangle or position counts as unchanged within this.
inline constexpr float kLayoutTolerance = 0.001f;

inline bool isSame(const Rect& a, const Rect& b) {
    return std::abs(a.left - b.left) <= kLayoutTolerance && std::abs(a.top - b.top) <= kLayoutTolerance &&
           std::abs(a.right - b.right) <= kLayoutTolerance &&
           std::abs(a.bottom - b.bottom) <= kLayoutTolerance;
}

/// The device pixel of a logical coordinate. Three quarters rather than a half: at scale 1.5 a step of one
/// unit is then rounded up, and a whole position stays at a whole pixel at every scale.
inline int toDevice(float logical, float scale) {
    return static_cast<int>(std::floor(logical * scale + 0.75f));
}
inline DeviceRect toDevice(const Rect& rect, float scale) {
    return {toDevice(rect.left, scale), toDevice(rect.top, scale), toDevice(rect.right, scale),
            toDevice(rect.bottom, scale)};
}

}  // namespace vanta::gui
