#include "bench/compare/report.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace vanta::bench {

namespace {

std::string shown(double value) {
    return value < 10.0 ? fmt::format("{:.2f}", value) : fmt::format("{:.0f}", value);
}

/// Bold where it misses its reach.
std::string judged(double ratio, std::optional<double> reach) {
    const bool missed = reach && ratio > *reach;
    return missed ? fmt::format("**{}**", shown(ratio)) : shown(ratio);
}

std::string shown(const Reach& reach) {
    if (!reach.avx512) return "";
    if (reach.avx2 == reach.avx512) return fmt::format("{:.2f}", *reach.avx512);
    return fmt::format("{:.2f}, AVX2 {:.2f}", *reach.avx512, reach.avx2.value_or(0.0));
}

}  // namespace

std::optional<double> Reach::on(const Target& target) const {
    if (target.name == "avx512") return avx512;
    return target.name == "avx2" ? avx2 : std::nullopt;
}

void Report::begin(const Target& target, std::string title, std::string unit, std::string against) {
    target_ = target;
    if (std::ranges::find(targets_, target.name, &Target::name) == targets_.end()) targets_.push_back(target);
    const auto known = std::ranges::find(tables_, title, &Table::title);
    current_ = static_cast<std::size_t>(known - tables_.begin());
    if (known == tables_.end())
        tables_.push_back({std::move(title), std::move(unit), std::move(against), {}, {}});
}

void Report::add(Row row) {
    Table& table = tables_[current_];
    if (std::ranges::find(table.works, row.work) == table.works.end()) table.works.push_back(row.work);
    table.rows[{row.work, std::string(target_.name)}] = std::move(row);
}

void Report::compareWith(const std::filesystem::path& file) {
    try {
        std::ifstream stream(file);
        const auto report = nlohmann::json::parse(stream);
        for (const auto& row : report.at("rows")) {
            before_[{row.at("target"), row.at("table"), row.at("work")}] = row.at("ratio");
        }
    } catch (const nlohmann::json::exception& error) {
        throw std::runtime_error(
            fmt::format("{} is not an earlier run's --json: {}", file.string(), error.what()));
    }
}

std::string Report::head(const Table& table) const {
    std::string names = fmt::format("| work | {} | {} |", table.unit, table.against);
    std::string rule = "| --- | --: | --: |";
    for (const Target& target : targets_) {
        if (!before_.empty()) {
            names += fmt::format(" {}, before |", target.title);
            rule += " --: |";
        }
        names += fmt::format(" {} |", target.title);
        rule += " --: |";
    }
    return fmt::format("{} median runs | reach |\n{} --: | --: |\n", names, rule);
}

std::string Report::line(const Table& table, const std::string& work) const {
    std::string first = "| | |";
    std::string ratios, last;
    for (const Target& target : targets_) {
        const auto found = table.rows.find({work, std::string(target.name)});
        const auto before = before_.find({std::string(target.name), table.title, work});
        if (!before_.empty())
            ratios += before == before_.end() ? " |" : fmt::format(" {} |", shown(before->second));
        if (found == table.rows.end()) {
            ratios += " |";
            continue;
        }
        const Row& row = found->second;
        ratios += fmt::format(" {} |", judged(row.ratio.fastest, row.reach.on(target)));
        if (!last.empty()) continue;
        first = fmt::format(" {} | {} |", shown(row.own), shown(row.other));
        last = fmt::format(" {} | {} |", shown(row.ratio.median), shown(row.reach));
    }
    return fmt::format("| {} |{}{}{}\n", work, first, ratios, last);
}

std::string Report::markdown() const {
    std::string text;
    for (const std::string& note : notes_) text += fmt::format("- {}\n", note);
    for (const Table& table : tables_) {
        text += fmt::format("\n### {}\n\n{}", table.title, head(table));
        for (const std::string& work : table.works) text += line(table, work);
    }
    return text + appendix_;
}

std::string Report::json() const {
    nlohmann::json rows = nlohmann::json::array();
    for (const Table& table : tables_) {
        for (const auto& [key, row] : table.rows) {
            const auto target = std::ranges::find(targets_, key.second, &Target::name);
            const auto reach = row.reach.on(*target);
            nlohmann::json each{{"table", table.title},
                                {"target", key.second},
                                {"work", row.work},
                                {"unit", table.unit},
                                {"own", row.own},
                                {"against", table.against},
                                {"other", row.other},
                                {"ratio", row.ratio.fastest},
                                {"median", row.ratio.median}};
            if (reach) {
                each["reach"] = *reach;
                each["reached"] = row.ratio.fastest <= *reach;
            }
            rows.push_back(std::move(each));
        }
    }
    return nlohmann::json{{"notes", notes_}, {"rows", rows}}.dump(1) + "\n";
}

}  // namespace vanta::bench
