#include "app/scope/scope_program.hpp"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <memory>

#include "app/player/engine.hpp"
#include "app/scope/scope_arguments.hpp"
#include "app/scope/scope_window.hpp"
#include "app/scope/texts.hpp"
#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/help_format.hpp"
#include "cli/messages.hpp"
#include "cli/output_file.hpp"
#include "cli/parsing.hpp"
#include "cli/session_file.hpp"
#include "foundation/output_check.hpp"
#include "gui/opengl/acceleration_mode.hpp"
#include "host/common/product_identity.hpp"
#include "mastering/render_source.hpp"
#include "plot/limiting_plot.hpp"
#include "plugin/model/session_state.hpp"

namespace vanta {
namespace {

namespace fs = std::filesystem;

constexpr auto kUsualMode = VantaParameters::DisplayMode::SlowDown;

void check(const ScopeArguments& arguments) {
    if (arguments.files.size() != 1) throw UsageError("vanta-scope needs one file; see 'vanta-scope --help'");
    if (arguments.software && arguments.openGl)
        throw UsageError("--software and --opengl cannot be combined: use one of them");
    if (arguments.screenshot.empty() && arguments.atSeconds) throw UsageError("--at needs --screenshot");
}

int acceleration(const ScopeArguments& arguments) {
    if (arguments.software) return 0;
    const int usual = gui::AccelerationMode::kDefault;
    return arguments.openGl ? usual | gui::AccelerationMode::kForced : usual;
}

int takeScreenshot(const ScopeArguments& arguments, const LimiterSettings& settings, RenderSource& source) {
    const fs::path read[] = {arguments.files.front()};
    checkOutput(arguments.screenshot, read, arguments.replace);
    const ViewArguments::Size size = arguments.view.chosenSize();
    LimitingPlot plot{.settings = settings,
                      .input = source.input(),
                      .layout = source.mapping().layout,
                      .sampleRate = static_cast<double>(source.sampleRate()),
                      .width = size.width,
                      .height = size.height,
                      .scale = arguments.view.chosenScale(1.0f),
                      .progress = {}};
    if (arguments.atSeconds) plot.endSamples = std::llround(*arguments.atSeconds * plot.sampleRate);
    writeOutput(arguments.screenshot, [&](const fs::path& file) { writeLimitingPlot(file, plot); });
    return kExitDone;
}

void giveSettings(const LimiterSettings& settings, HostedPlugin& plugin) {
    SessionInstance instance;
    instance.recall(plugin.saveState());
    instance.take(settings);
    plugin.restoreState(writeSessionState(instance));
    plugin.pump();
}

int play(const ScopeArguments& arguments, const LimiterSettings& settings, RenderSource& source) {
    Engine engine(source.input(), source.mapping().layout);
    giveSettings(settings, engine.plugin());
    const ViewArguments::Size size = arguments.view.chosenSize();
    gui::X11Settings window;
    window.title = fmt::format("{} - Vanta 2", fs::path(arguments.files.front()).filename().string());
    window.width = size.width;
    window.height = size.height;
    window.scale = arguments.view.chosenScale(0.0f);
    window.acceleration = acceleration(arguments);
    ScopeWindow scope(engine, window);
    fmt::print("plays to {}\n", engine.start(!arguments.noJack));
    std::fflush(stdout);
    scope.run();
    return kExitDone;
}

int run(const ScopeArguments& arguments) {
    check(arguments);
    LimiterSettings settings;
    arguments.settings.applyTo(settings);
    arguments.view.applyTo(settings, arguments.settings, kUsualMode);
    RenderSource source(arguments.files.front(), {}, chosenLayout(arguments.layout));
    printWarnings(source.warnings());
    return arguments.screenshot.empty() ? play(arguments, settings, source)
                                        : takeScreenshot(arguments, settings, source);
}

}  // namespace

int runScopeProgram(const std::vector<std::string>& arguments) {
    return reportErrors([&] {
        CLI::App app(std::string(text::kScope), "vanta-scope");
        ScopeArguments wanted;
        wanted.declareTo(app);
        app.formatter(std::make_shared<HelpFormat>());
        app.set_version_flag("--version", fmt::format("vanta-scope {}", productIdentity().version),
                             "print the version")
            ->group("Window");
        app.set_help_flag("--help", "show this help")->group("Window");
        app.footer(std::string(text::kScopeExamples));
        if (const auto done = parseArguments(app, arguments)) return *done;
        return run(wanted);
    });
}

}  // namespace vanta
