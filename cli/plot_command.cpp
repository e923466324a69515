#include "cli/plot_command.hpp"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <memory>

#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/interrupt.hpp"
#include "cli/messages.hpp"
#include "cli/output_file.hpp"
#include "cli/plot_arguments.hpp"
#include "cli/progress_bar.hpp"
#include "cli/texts.hpp"
#include "foundation/output_check.hpp"
#include "mastering/render_source.hpp"
#include "plot/limiting_plot.hpp"

namespace vanta {
namespace {

namespace fs = std::filesystem;

void check(const PlotArguments& arguments) {
    if (arguments.files.size() != 1) throw UsageError("plot needs one file; see 'vanta plot --help'");
    if (arguments.output.empty()) throw UsageError("plot needs a picture to write: use -o PICTURE.png");
    std::vector<fs::path> read{arguments.files.front()};
    if (!arguments.sideChain.empty()) read.emplace_back(arguments.sideChain);
    for (const std::string& file : arguments.settings.files()) read.emplace_back(file);
    checkOutput(arguments.output, read, arguments.replace);
}

int runPlot(const PlotArguments& arguments) {
    check(arguments);
    LimiterSettings settings;
    arguments.settings.applyTo(settings, !arguments.sideChain.empty());
    arguments.view.applyTo(settings, arguments.settings, VantaParameters::DisplayMode::Infinite);
    const ViewArguments::Size size = arguments.view.chosenSize();
    const float scale = arguments.view.chosenScale(1.0f);

    watchForInterrupts();
    RenderSource source(arguments.files.front(), arguments.sideChain, chosenLayout(arguments.layout));
    printWarnings(source.warnings());
    LimitingPlot plot{.settings = settings,
                      .input = source.input(),
                      .sideChain = source.sideChain(),
                      .layout = source.mapping().layout,
                      .sampleRate = static_cast<double>(source.sampleRate()),
                      .width = size.width,
                      .height = size.height,
                      .scale = scale,
                      .progress = {}};
    std::int64_t frames = source.input().info().frames;
    if (arguments.atSeconds) {
        plot.endSamples = std::llround(*arguments.atSeconds * plot.sampleRate);
        frames = std::min(frames, plot.endSamples);
    }
    plot.progress = watch(
        terminalWatcher(arguments.quiet),
        {fmt::format("drawing {}", fs::path(arguments.output).filename().string()), frames, plot.sampleRate});
    writeOutput(arguments.output, [&](const fs::path& file) { writeLimitingPlot(file, plot); });
    plot.progress = nullptr;  // wipes the bar
    if (!arguments.quiet) fmt::print("{}\n", arguments.output);
    return kExitDone;
}

}  // namespace

Command declarePlot(CLI::App& program) {
    CLI::App* const app = program.add_subcommand("plot", std::string(text::kPlot));
    app->footer(std::string(text::kPlotExamples));
    const auto arguments = std::make_shared<PlotArguments>();
    arguments->declareTo(*app);
    return {app, [arguments] { return runPlot(*arguments); }};
}

}  // namespace vanta
