#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vanta {

/// A full set of a style's values, in table order, read by position. Borrows the values.
class StyleValues {
public:
    StyleValues(std::span<const float> values) : values_(values) {}
    StyleValues(const std::vector<float>& values) : values_(values) {}

    int size() const { return static_cast<int>(values_.size()); }
    float at(int position) const { return values_[static_cast<std::size_t>(position)]; }
    /// Of a count, a choice or a number.
    int integerAt(int position) const { return static_cast<int>(at(position)); }

private:
    std::span<const float> values_;
};

}  // namespace vanta
