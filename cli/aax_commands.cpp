#include "cli/aax_commands.hpp"

#include <fmt/format.h>

#include <memory>

#include "cli/chosen.hpp"
#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/interrupt.hpp"
#include "cli/messages.hpp"
#include "cli/option_declarer.hpp"
#include "cli/progress_bar.hpp"
#include "cli/render_arguments.hpp"
#include "cli/texts.hpp"
#include "host/aax_host/aax_module.hpp"
#include "host/aax_host/aax_render.hpp"
#include "host/aax_host/scan_table.hpp"
#include "mastering/file_render.hpp"

namespace vanta {

namespace {

struct AaxArguments {
    void declareRender(CLI::App& app) {
        settings.declareTo(app);
        app.add_option("output", output)->required()->type_name("OUT");
        OptionDeclarer add(app, text::kAaxRenderOptions);
        add.option("--side-chain", sideChain);
        add.flag("--offline", offline);
        add.option("--format", format);
        add.option("--subtype", subtype);
        add.option("--layout", layout);
        add.option("--tail", tailSeconds)->check(within(0.0, RenderArguments::kLongestTail));
        add.option("--block", blockSamples)->check(within(1, kLargestBlock));
        add.flag("--force", replace);
        add.flag("--quiet", quiet);
    }

    std::string module;
    std::string input;
    std::string output;
    SettingsArguments settings;
    std::string sideChain;
    bool offline = false;
    std::string format;
    std::string subtype;
    std::string layout;
    double tailSeconds = 0.0;
    int blockSamples = kUsualBlock;
    bool replace = false;
    bool quiet = false;
};

int runScan(const AaxArguments& arguments) {
    fmt::print("{}", scanTable(AaxModule(arguments.module)));
    return kExitDone;
}

RenderOptions optionsOf(const AaxArguments& arguments, const AaxModule& module) {
    RenderOptions options;
    options.sideChain = arguments.sideChain;
    options.layout = chosenLayout(arguments.layout);
    options.format = {chosenFileType(arguments.format), chosenFileSubtype(arguments.subtype)};
    options.blockSamples = arguments.blockSamples;
    options.tailSeconds = arguments.tailSeconds;
    options.replace = arguments.replace;
    options.measure = false;
    for (const std::string& file : arguments.settings.files()) options.alsoRead.emplace_back(file);
    options.alsoRead.emplace_back(arguments.module);
    options.watcher = terminalWatcher(arguments.quiet);
    options.renderer = [&module, offline = arguments.offline](const RenderJob& job) {
        return renderByAax(module, job, offline);
    };
    return options;
}

std::string renderLine(const AaxArguments& arguments, const RenderedFile& file) {
    const RenderResult& result = file.result;
    const std::string meter =
        arguments.offline ? "" : fmt::format(", meter down to -{:.1f} dB", result.largestReductionDb);
    return fmt::format("{} -> {} ({}): by the {} of {}{}, latency {} samples ({:.1f} ms)\n",
                       file.route.input.string(), file.route.output.string(), formatName(file.format),
                       arguments.offline ? "offline processor" : "render calls", arguments.module, meter,
                       result.latencySamples, 1000.0 * result.latencySamples / file.sampleRate);
}

int runRender(const AaxArguments& arguments) {
    if (arguments.offline && !arguments.sideChain.empty())
        throw UsageError("--side-chain and --offline cannot be combined: offline renders have no side chain");
    const AaxModule module(arguments.module);
    const RenderOptions options = optionsOf(arguments, module);
    LimiterSettings settings;
    arguments.settings.applyTo(settings, !arguments.sideChain.empty());
    watchForInterrupts();
    const MasteringJob job{settings, options, {}};
    FileRender render({arguments.input, arguments.output}, job);
    render.render();
    render.commit();
    printWarnings(render.rendered().warnings);
    if (!arguments.quiet) fmt::print("{}", renderLine(arguments, render.rendered()));
    return kExitDone;
}

}  // namespace

std::vector<Command> declareAaxCommands(CLI::App& program) {
    CLI::App* const scan = program.add_subcommand("aax-scan", std::string(text::kAaxScan));
    CLI::App* const render = program.add_subcommand("aax-render", std::string(text::kAaxRender));
    render->footer(std::string(text::kAaxRenderExamples));
    const auto arguments = std::make_shared<AaxArguments>();
    for (CLI::App* const each : {scan, render})
        each->add_option("module", arguments->module)->required()->type_name("MODULE");
    render->add_option("input", arguments->input)->required()->type_name("IN");
    arguments->declareRender(*render);
    return {{scan, [arguments] { return runScan(*arguments); }},
            {render, [arguments] { return runRender(*arguments); }}};
}

}  // namespace vanta
