#include "app/window/app_program.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>

#include "app/window/app_arguments.hpp"
#include "app/window/app_window.hpp"
#include "app/window/file_engine.hpp"
#include "app/window/live_engine.hpp"
#include "app/window/screenshot.hpp"
#include "app/window/texts.hpp"
#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/help_format.hpp"
#include "cli/messages.hpp"
#include "cli/output_file.hpp"
#include "cli/parsing.hpp"
#include "cli/suggestion.hpp"
#include "foundation/output_check.hpp"
#include "gui/opengl/acceleration_mode.hpp"
#include "host/common/product_identity.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "mastering/render_source.hpp"
#include "plugin/model/session_state.hpp"

namespace vanta {
namespace {

namespace fs = std::filesystem;

void check(const AppArguments& arguments) {
    if (arguments.files.size() > 1) throw UsageError("vanta-app plays one file; see 'vanta-app --help'");
    if (arguments.software && arguments.openGl)
        throw UsageError("--software and --opengl cannot be combined: use one of them");
    if (arguments.screenshot.empty() && arguments.atSeconds) throw UsageError("--at needs --screenshot");
    if (!arguments.open.empty()) {
        if (arguments.screenshot.empty()) throw UsageError("--open needs --screenshot");
        if (std::ranges::count(openableNames(), arguments.open) == 0)
            throw unknownName("thing to open", arguments.open, openableNames());
    }
    static_cast<void>(arguments.chosenSize());
    static_cast<void>(arguments.chosenScale(0.0f));
}

int acceleration(const AppArguments& arguments) {
    if (arguments.software) return 0;
    const int usual = gui::AccelerationMode::kDefault;
    return arguments.openGl ? usual | gui::AccelerationMode::kForced : usual;
}

/// Settings of the command line hold for this run and are not remembered.
void giveSettings(const AppArguments& arguments, HostedPlugin& plugin) {
    SessionInstance instance;
    instance.recall(plugin.saveState());
    arguments.settings.applyTo(instance);
    plugin.restoreState(writeSessionState(instance));
    plugin.pump();
    if (const auto size = arguments.chosenSize()) {
        PluginSettings& settings = plugin.model().settings();
        if (size->row == PluginSettings::kFreeSize) settings.setInterfaceSize(size->free);
        settings.interfaceLayout = size->row;
    }
}

/// Nothing of what a picture shows is to be remembered.
void forgetAll(HostedPlugin& plugin) {
    plugin.model().statics().settings.loaded = false;
    plugin.model().settings().loaded = false;
}

/// A host that has nothing to hear.
struct NoHost final : HostCallbacks {
    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override {}
    void pumpRequested() override {}
};

int takeScreenshot(const AppArguments& arguments, RenderSource* source, ChannelLayout layout) {
    std::vector<fs::path> read;
    if (source) read.emplace_back(arguments.files.front());
    checkOutput(arguments.screenshot, read, arguments.replace);
    NoHost host;
    HostedPlugin plugin(host, layout);
    forgetAll(plugin);
    giveSettings(arguments, plugin);
    const double end = arguments.atSeconds.value_or(source ? std::numeric_limits<double>::infinity() : 0.0);
    const Screenshot screenshot{.plugin = plugin,
                                .input = source ? &source->input() : nullptr,
                                .endSeconds = end,
                                .scale = arguments.chosenScale(1.0f),
                                .opened = arguments.open};
    writeOutput(arguments.screenshot, [&](const fs::path& file) { writeScreenshot(file, screenshot); });
    return kExitDone;
}

std::unique_ptr<AppEngine> makeEngine(const AppArguments& arguments, RenderSource* source,
                                      ChannelLayout layout) {
    if (!source) return std::make_unique<LiveEngine>(layout);
    return std::make_unique<FileEngine>(source->input(), layout, !arguments.noJack);
}

int openWindow(const AppArguments& arguments, RenderSource* source, ChannelLayout layout) {
    const std::unique_ptr<AppEngine> engine = makeEngine(arguments, source, layout);
    giveSettings(arguments, engine->plugin());
    const GenericPlugin& model = engine->plugin().model();
    gui::X11Settings window;
    window.title = source ? fmt::format("{} - Vanta 2", fs::path(arguments.files.front()).filename().string())
                          : std::string("Vanta 2");
    window.width = static_cast<float>(model.interfaceWidth());
    window.height = static_cast<float>(model.interfaceHeight());
    window.scale = arguments.chosenScale(0.0f);
    window.acceleration = acceleration(arguments);
    AppWindow app(*engine, window);
    fmt::print("{}\n", engine->start());
    std::fflush(stdout);
    if (Transport* const transport = engine->transport(); transport && arguments.startsPaused)
        transport->togglePause();
    app.run();
    return kExitDone;
}

int run(const AppArguments& arguments) {
    check(arguments);
    registerFactoryArchive();
    std::optional<RenderSource> source;
    ChannelLayout layout = chosenLayout(arguments.layout).value_or(kStereoLayout);
    if (!arguments.files.empty()) {
        source.emplace(arguments.files.front(), fs::path(), chosenLayout(arguments.layout));
        printWarnings(source->warnings());
        layout = source->mapping().layout;
    }
    RenderSource* const file = source ? &*source : nullptr;
    return arguments.screenshot.empty() ? openWindow(arguments, file, layout)
                                        : takeScreenshot(arguments, file, layout);
}

}  // namespace

int runAppProgram(const std::vector<std::string>& arguments) {
    return reportErrors([&] {
        CLI::App app(std::string(text::kApp), "vanta-app");
        AppArguments wanted;
        wanted.declareTo(app);
        app.formatter(std::make_shared<HelpFormat>());
        app.set_version_flag("--version", fmt::format("vanta-app {}", productIdentity().version),
                             "print the version")
            ->group("Window");
        app.set_help_flag("--help", "show this help")->group("Window");
        app.footer(std::string(text::kAppExamples));
        if (const auto done = parseArguments(app, arguments)) return *done;
        return run(wanted);
    });
}

}  // namespace vanta
