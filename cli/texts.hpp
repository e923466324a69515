#pragma once

#include <string_view>

/// The long texts of the command line, as they stand in resources/text: kName is name.txt.
namespace vanta::text {

// What a command is for: the first line also stands in the list of commands.
extern const std::string_view kOverview;
extern const std::string_view kRender;
extern const std::string_view kPatch;
extern const std::string_view kMeasure;
extern const std::string_view kAaxScan;
extern const std::string_view kAaxRender;
extern const std::string_view kPlot;
extern const std::string_view kPresetSave;
extern const std::string_view kStateSave;

// Printed below the options.
extern const std::string_view kRenderExamples;
extern const std::string_view kPatchExamples;
extern const std::string_view kMeasureExamples;
extern const std::string_view kAaxRenderExamples;
extern const std::string_view kPlotExamples;

// Options as OptionDeclarer reads them.
extern const std::string_view kSettingsOptions;
extern const std::string_view kRenderOptions;
extern const std::string_view kMeasureOptions;
extern const std::string_view kAaxRenderOptions;
extern const std::string_view kPlotOptions;
extern const std::string_view kViewOptions;

}  // namespace vanta::text
