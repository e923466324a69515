#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vanta {

/// How an option appears in the help.
struct OptionHelp {
    std::string flag;   ///< "--gain"
    std::string value;  ///< the placeholder of its value, "DB"; empty for a flag
    std::string group;
    std::string text;
};

/// Reads a text with lines of three kinds: "[Group]", "--flag VALUE" and indented, the help of the flag
/// above.
std::vector<OptionHelp> readOptionHelp(std::string_view text);

/// Declares options to a parser. Their groups and help come from one of the texts; an option that it does not
/// have is a std::logic_error.
class OptionDeclarer {
public:
    OptionDeclarer(CLI::App& app, std::string_view text) : app_(app), help_(readOptionHelp(text)) {}

    /// `flag` is "--gain", or with a short form "-o,--output".
    template <typename Target>
    CLI::Option* option(const std::string& flag, Target& target) {
        return described(app_.add_option(flag, target), flag);
    }
    CLI::Option* flag(const std::string& flag, bool& target) {
        return described(app_.add_flag(flag, target), flag);
    }
    /// `store` is called with the value.
    CLI::Option* storing(const std::string& flag, const std::function<void(const std::string&)>& store) {
        return described(app_.add_option_function<std::string>(flag, store), flag);
    }

private:
    CLI::Option* described(CLI::Option* option, const std::string& flag) const;

    CLI::App& app_;
    std::vector<OptionHelp> help_;
};

/// Of a moment in a file, in seconds.
inline constexpr double kLongestFile = 7.0 * 24.0 * 3600.0;
/// The most files that are worked on at a time.
inline constexpr int kMostJobs = 256;

/// Accepts numbers from `low` to `high`.
CLI::Validator within(double low, double high);

}  // namespace vanta
