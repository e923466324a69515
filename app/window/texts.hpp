#pragma once

#include <string_view>

/// The long texts of this program, as they stand in resources/text: kName is name.txt.
namespace vanta::text {

extern const std::string_view kApp;
extern const std::string_view kAppOptions;
extern const std::string_view kAppExamples;

}  // namespace vanta::text
