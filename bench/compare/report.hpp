#pragma once

#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "bench/compare/race.hpp"
#include "bench/compare/targets.hpp"

namespace vanta::bench {

/// The largest ratio that we are content with, by instruction set; nothing where none is set.
struct Reach {
    std::optional<double> avx512;
    std::optional<double> avx2;

    static Reach both(double ratio) { return {ratio, ratio}; }
    std::optional<double> on(const Target& target) const;
};

/// One measurement of ours, and what it is measured against.
struct Row {
    std::string work;
    double own = 0.0;    ///< in the unit of its table
    double other = 0.0;  ///< likewise
    Ratio ratio;
    Reach reach{};
};

/// Collects what is measured with each instruction set and lays it side by side.
class Report {
public:
    /// Names of peers and their versions, the machine and the like: a line each.
    void note(std::string line) { notes_.push_back(std::move(line)); }
    /// A table is known by its title. `unit` is that of its times, `against` what the right-hand ones are of.
    void begin(const Target& target, std::string title, std::string unit, std::string against);
    /// To the table that was begun last.
    void add(Row row);
    /// Text that follows all tables.
    void append(std::string text) { appendix_ += text; }

    /// Ratios of an earlier run appear beside those of this one. Throws std::runtime_error if the file is no
    /// report.
    void compareWith(const std::filesystem::path& json);
    std::string markdown() const;
    std::string json() const;

private:
    struct Table {
        std::string title, unit, against;
        std::vector<std::string> works;
        std::map<std::pair<std::string, std::string>, Row> rows;  ///< by work and instruction set
    };
    using Key = std::tuple<std::string, std::string, std::string>;  ///< instruction set, table, work

    std::string line(const Table& table, const std::string& work) const;
    std::string head(const Table& table) const;

    std::vector<std::string> notes_;
    std::vector<Target> targets_;
    std::vector<Table> tables_;
    std::size_t current_ = 0;  ///< among the tables
    Target target_;
    std::map<Key, double> before_;
    std::string appendix_;
};

}  // namespace vanta::bench
