#pragma once

#include <string_view>

/// The long texts of this program, as they stand in resources/text: kName is name.txt.
namespace vanta::text {

extern const std::string_view kJack;
extern const std::string_view kJackOptions;
extern const std::string_view kJackExamples;

}  // namespace vanta::text
