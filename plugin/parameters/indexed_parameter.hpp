#pragma once

#include <atomic>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// All of a stepped parameter that does not depend on the type of its engine value. Such a parameter has two
/// numbers for one value: the index, which interface, host and files see, and the mapped value, which the
/// audio code receives. Range 0 and 1, default and value 0 until the table that builds it says otherwise.
class IndexedParameter : public AbstractPluginParameter {
public:
    IndexedParameter(GenericParameterOwner& parameterOwner, std::string parameterName);

    /// Sets up the range of indexes; `initial` becomes default and value. Tells nobody: for the parameter's
    /// construction.
    void setRange(int low, int high, int initial);
    /// Names for the indexes from the minimum on, separated by commas, or a list that others share and that
    /// must outlive the parameter.
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
    int currentIndex() const { return index_.load(std::memory_order_relaxed); }

    float normalize(float value) const override;
    float normalizeZoned(float value, int steps) const override;
    float denormalize(float normal) const override;
    bool denormalizeZoned(float normal, int steps, float* out) const override;
    /// A label, first exactly and then without regard to case, or the decimal number of an index. On false
    /// `out` holds the current value.
    bool parseText(const std::string& text, float* out) const override;
    std::string text(float value) const override;
    /// Abbreviated by and by until it fits.
    std::string text(float value, int maxLength) const override;
    float defaultValue() const override { return static_cast<float>(default_); }
    int zoneValue(int mapped) const override;
    float minimum() const override { return static_cast<float>(minimum_); }
    float maximum() const override { return static_cast<float>(maximum_); }
    float value() const override { return static_cast<float>(currentIndex()); }
    void setValue(float value, int flags) override;
    bool isContinuous() const override { return labels_->empty(); }

    /// Pairs (index, steps) that narrow the range for a control with few steps.
    std::vector<std::pair<int, int>> zones;

protected:
    /// Truncated and limited to the range.
    VANTA_REALTIME int indexFrom(float value) const;

private:
    struct Zone {
        int low;
        int high;
        bool first;  ///< the first zone already took all steps
    };
    Zone zoneFor(int steps) const;

    std::atomic<int> index_{0};
    int default_ = 0;
    int maximum_ = 1;
    int minimum_ = 0;
    std::span<const int> table_;
    int tableStart_ = 0;
    std::vector<std::string> ownLabels_;
    const std::vector<std::string>* labels_ = &ownLabels_;
};

}  // namespace vanta
