#pragma once

#include <string_view>

/// The long texts of this program, as they stand in resources/text: kName is name.txt.
namespace vanta::text {

extern const std::string_view kScope;
extern const std::string_view kScopeOptions;
extern const std::string_view kScopeExamples;

}  // namespace vanta::text
