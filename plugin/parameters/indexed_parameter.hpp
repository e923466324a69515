#pragma once

#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "plugin/parameters/ranged_parameter.hpp"

namespace vanta {

/// All of a stepped parameter that does not depend on the type of its engine value. Such a parameter has two
/// numbers for one value: the index, which interface, host and files see, and the mapped value, which the
/// audio code receives.
class IndexedParameter : public RangedParameter<int> {
public:
    using RangedParameter::RangedParameter;

    /// Names of the indexes from the minimum on: separated by commas, or a list shared with other parameters,
    /// which must outlive this one.
    void setLabels(std::string_view commaSeparated);
    void shareLabels(const std::vector<std::string>& shared) { labels_ = &shared; }
    const std::vector<std::string>& labels() const { return *labels_; }
    /// Maps index start + i to table[i]; an index outside of it takes the nearest entry. The table must
    /// outlive the parameter.
    void setValueTable(std::span<const int> table, int start = 0);

    /// Between index and mapped value. A mapped value that the table lacks gives the index of its first
    /// entry.
    VANTA_REALTIME int mappedOf(int index) const;
    int indexOf(int mapped) const;
    int currentIndex() const { return current(); }

    float normalize(float value) const override;
    float normalizeZoned(float value, int steps) const override;
    float denormalize(float normal) const override;
    bool denormalizeZoned(float normal, int steps, float* out) const override;
    /// A label, first exactly and then without regard to case, or the decimal number of an index. On false
    /// `out` holds the current value.
    bool parseText(const std::string& text, float* out) const override;
    std::string text(float value) const override;
    /// Abbreviated step by step until it fits.
    std::string text(float value, int maxLength) const override;
    int zoneValue(int mapped) const override;
    bool isContinuous() const override { return labels_->empty(); }

    /// Pairs (index, steps) that narrow the range for a control with few steps.
    std::vector<std::pair<int, int>> zones;

private:
    struct Zone {
        int low;
        int high;
        bool first;  ///< the first zone already took all steps
    };
    Zone zoneFor(int steps) const;

    std::span<const int> table_;
    int tableStart_ = 0;
    std::vector<std::string> ownLabels_;
    const std::vector<std::string>* labels_ = &ownLabels_;
};

}  // namespace vanta
