#include "app/command_line.hpp"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/failure.hpp"
#include "app/help_format.hpp"
#include "app/listings.hpp"
#include "app/measure_command.hpp"
#include "app/parameter_options.hpp"
#include "app/preset_command.hpp"
#include "app/preset_library.hpp"
#include "app/render_command.hpp"
#include "app/state_command.hpp"
#include "app/suggestion.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

namespace {

constexpr double kLongestTail = 3600.0;  // seconds
const char* const kFile = "File";

constexpr const char* kOverview = R"(Vanta 2, a mastering limiter for audio files.

  vanta render mix.wav master.wav --gain 6 --output-level -1
  vanta measure master.wav

'vanta COMMAND --help' tells more of a command.)";

constexpr const char* kRenderText = R"(Limits audio files.

The output has the input's length and is aligned with it to the sample. It keeps sample rate, file
type and word length unless told otherwise; the output's extension chooses a type, too.)";

constexpr const char* kRenderExamples = R"(Examples:
  vanta render mix.wav master.wav --gain 6 --output-level -1
  vanta render mix.wav cd.wav --style Transparent --gain 4 --subtype pcm_16 --dither 16
  vanta render stems/*.wav --out-dir limited --style Bus --oversampling 4x
  vanta render mix.wav master.wav --loudness -14 --max-true-peak -1 --report master.json
  vanta render mix.wav master.wav --preset "Wide and Open" --set "Channel Link Transients=80%"

Exit status: 0 all is well, 1 a file could not be rendered as asked for, 2 wrong usage.)";

constexpr const char* kMeasureText = R"(Measures loudness and peaks of audio files.

Integrated loudness, loudness range, highest momentary and short-term loudness after EBU R128, sample and
true peak, RMS and crest factor, and several files also as one programme.)";

constexpr const char* kMeasureExamples = R"(Examples:
  vanta measure master.wav
  vanta measure album/*.flac --target -14 --max-true-peak -1
  vanta measure master.wav --json > master.json
  vanta measure master.wav --timeline loudness.csv --plot loudness.png

Exit status: 0 all is well, 1 a file could not be measured, 3 a file misses what was asked for.)";

constexpr const char* kPresetSaveText = R"(Saves settings as a preset.

A bare name goes into your preset folder, where 'vanta presets' and the plug-ins find it.)";

constexpr const char* kStateSaveText =
    R"(Stores the whole state of an instance, as a host keeps it with a session.

That is all settings, the name of the preset and both compare slots. With --state FILE it starts from a
state that there is and keeps of it what the other options do not change.)";

/// Takes numbers within a range, limits included.
CLI::Validator within(double low, double high) {
    const auto check = [=](const std::string& text) -> std::string {
        const auto number = readNumber(text);
        const bool whole = number && number->length == text.size();
        if (whole && number->value >= low && number->value <= high) return {};
        return fmt::format("'{}' is no number from {} to {}", text, low, high);
    };
    return {check, "NUMBER"};
}

void addFileOptions(CLI::App& render, RenderCommand& command) {
    render.add_option("files", command.files, "inputs, then the output or a folder")->type_name("IN... OUT");
    const auto add = [&](const char* flag, auto& target, const char* value, const char* help) {
        return render.add_option(flag, target, help)->type_name(value)->group(kFile);
    };
    add("--out-dir", command.outDir, "DIR", "write every input under its own name into this folder");
    add("--format", command.format, "TYPE", "file type; 'vanta formats' lists them");
    add("--subtype", command.subtype, "NAME",
        "sample type, such as pcm_16, pcm_24 or float. Named here it is kept and peaks beyond full scale are "
        "clipped; else such a result goes to float");
    add("--layout", command.layout, "NAME", "channel layout, where the file leaves it open; 'vanta layouts'");
    add("--tail", command.tailSeconds, "SECONDS", "go on for so long behind the end of the input")
        ->check(within(0.0, kLongestTail));
    add("--block", command.blockSamples, "N", "samples a block, 1 to 8192; default 512")
        ->check(within(1, kLargestBlock));
    add("--seed", command.ditherSeed, "N",
        "start of the dither's noise: equal seeds give equal files; default 1")
        ->check(within(0, std::numeric_limits<std::uint32_t>::max()));
    render.add_flag("--force", command.replace, "replace an output that exists")->group(kFile);
    render.add_flag("--quiet", command.quiet, "print warnings and errors only")->group(kFile);
}

void addSettings(CLI::App& render, RenderCommand& command) {
    for (const ParameterOption& option : parameterOptions()) {
        const auto store = [&command, &option](const std::string& text) {
            command.parameters.emplace_back(&option, text);
        };
        render.add_option_function<std::string>(std::string(option.flag), store, std::string(option.help))
            ->type_name(option.isSwitch() ? "[on|off]" : std::string(option.value))
            ->group(std::string(option.group));
    }
    render
        .add_option(
            "--state", command.state,
            "start from the state of an instance, as 'vanta state' and hosts store it; presets and other "
            "options change it")
        ->type_name("FILE")
        ->group("Sound");
    render.add_option("--preset", command.preset, "start from a preset; other options change it")
        ->type_name("NAME|FILE")
        ->group("Sound");
    render.add_option("--set", command.assignments, "any parameter by its name; 'vanta params' lists them")
        ->type_name("\"NAME=TEXT\"")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->group("Sound");
}

void addSideChain(CLI::App& render, RenderCommand& command) {
    render
        .add_option("--side-chain", command.sideChain,
                    "let this file decide how far the input is turned down. The output is then not bound to "
                    "Output Level")
        ->type_name("FILE")
        ->group("Sound");
}

void addGoals(CLI::App& render, RenderCommand& command) {
    const char* const group = "Goals and report";
    render
        .add_option(
            "--loudness", command.loudnessLufs,
            "find the Gain that gives the written file this integrated loudness, within 0.1 LU; a preset's "
            "own Gain does not count")
        ->type_name("LUFS")
        ->check(within(-70.0, 10.0))
        ->group(group);
    render
        .add_option("--loudness-mode", command.loudnessMode,
                    "track: a Gain for each input; album: one Gain for all, taken together; default track")
        ->type_name("MODE")
        ->group(group);
    render
        .add_option("--max-true-peak", command.maxTruePeakDb,
                    "verify the written file; while it goes beyond, render again with a lower Output Level")
        ->type_name("DBTP")
        ->check(within(-30.0, 10.0))
        ->group(group);
    render
        .add_option("--report", command.reportFile,
                    "write loudness, range and peaks before and after, and gain reduction, as JSON")
        ->type_name("FILE.json")
        ->group(group);
}

void addMeasureOptions(CLI::App& measure, MeasureCommand& command) {
    const char* const group = "Options";
    measure.add_option("files", command.files, "audio files")->type_name("FILE...");
    measure.add_flag("--json", command.json, "print a JSON array with an object a file")->group(group);
    measure.add_flag("--csv", command.csv, "print a CSV table")->group(group);
    measure.add_option("--timeline", command.timeline, "write loudness and peaks of every 100 ms as CSV")
        ->type_name("FILE.csv")
        ->group(group);
    measure.add_option("--plot", command.plot, "draw loudness over time, peaks and the target")
        ->type_name("FILE.png")
        ->group(group);
    measure.add_option("--target", command.targetLufs, "mark files whose integrated loudness is another")
        ->type_name("LUFS")
        ->check(within(-70.0, 10.0))
        ->group(group);
    measure.add_option("--tolerance", command.toleranceLu, "how far off the target is well; default 0.5")
        ->type_name("LU")
        ->check(within(0.0, 20.0))
        ->group(group);
    measure.add_option("--max-true-peak", command.maxTruePeakDb, "mark files whose true peak is higher")
        ->type_name("DBTP")
        ->check(within(-60.0, 30.0))
        ->group(group);
    measure
        .add_option("--layout", command.layout,
                    "channel layout, where the file leaves it open; 'vanta layouts'")
        ->type_name("NAME")
        ->group(group);
    measure.add_flag("--quiet", command.quiet, "show no progress")->group(group);
}

/// The commands that read and write presets.
struct PresetCommands {
    void addTo(CLI::App& app) {
        list = app.add_subcommand("presets", "Lists the presets that --preset takes.");
        group = app.add_subcommand("preset", "Shows, saves and converts presets.");
        group->require_subcommand(1);
        show = group->add_subcommand("show", "Prints all settings of a preset.");
        show->add_option("preset", command.source, "a preset's name or file")
            ->required()
            ->type_name("NAME|FILE");
        save = group->add_subcommand("save", kPresetSaveText);
        save->add_option("target", command.target, "the name to save under, or a file")
            ->required()
            ->type_name("NAME|FILE");
        addSettings(*save, command.settings);
        convert = group->add_subcommand("convert", "Writes a preset of any version in today's format.");
        convert->add_option("preset", command.source, "a preset's name or file")->required()->type_name("IN");
        convert->add_option("target", command.target, "the name to save under, or a file")
            ->required()
            ->type_name("OUT");
        for (CLI::App* writer : {save, convert}) {
            writer->add_flag("--force", command.replace, "replace a preset that exists")->group(kFile);
        }
    }
    std::vector<CLI::App*> all() const { return {list, group, show, save, convert}; }

    int run() const {
        if (*list) fmt::print("{}", PresetLibrary().list());
        if (*show) return runPresetShow(command);
        if (*save) return runPresetSave(command);
        if (*convert) return runPresetConvert(command);
        return kExitDone;
    }

    CLI::App* list = nullptr;
    CLI::App* group = nullptr;
    CLI::App* show = nullptr;
    CLI::App* save = nullptr;
    CLI::App* convert = nullptr;
    PresetCommand command;
};

/// The commands that store and show the state of an instance.
struct StateCommands {
    void addTo(CLI::App& app) {
        group = app.add_subcommand("state", "Stores and shows the whole state of an instance.");
        group->require_subcommand(1);
        save = group->add_subcommand("save", kStateSaveText);
        show = group->add_subcommand("show", "Prints a state: preset and all settings, in A and B.");
        for (CLI::App* each : {save, show}) {
            each->add_option("file", command.file, "the state's file")->required()->type_name("FILE");
        }
        addSettings(*save, command.settings);
        save->add_flag("--force", command.replace, "replace a state that exists")->group(kFile);
        show->add_flag("--json", command.json, "print a JSON object, with every value to its last bit")
            ->group("Options");
    }
    std::vector<CLI::App*> all() const { return {group, save, show}; }

    std::optional<int> run() const {
        if (*save) return runStateSave(command);
        if (*show) return runStateShow(command);
        return {};
    }

    CLI::App* group = nullptr;
    CLI::App* save = nullptr;
    CLI::App* show = nullptr;
    StateCommand command;
};

/// The program's commands, and what is to be done after parsing.
struct Commands {
    Commands() {
        app.name("vanta");
        app.description(kOverview);
        app.require_subcommand(1);
        app.set_version_flag("--version", "vanta " VANTA_VERSION, "print the version");
        render = app.add_subcommand("render", kRenderText);
        render->footer(kRenderExamples);
        addSettings(*render, command);
        addSideChain(*render, command);
        addGoals(*render, command);
        addFileOptions(*render, command);
        measure = app.add_subcommand("measure", kMeasureText);
        measure->footer(kMeasureExamples);
        addMeasureOptions(*measure, measureCommand);
        styles = app.add_subcommand("styles", "Lists the limiting styles.");
        params = app.add_subcommand("params", "Lists all parameters with ranges and defaults.");
        params->add_flag("--long", withHelp, "say in full what each is for");
        formats = app.add_subcommand("formats", "Lists the file types that can be written.");
        layouts = app.add_subcommand("layouts", "Lists the channel layouts.");
        presets.addTo(app);
        states.addTo(app);
        std::vector<CLI::App*> parts{&app, render, measure, styles, params, formats, layouts};
        for (CLI::App* part : presets.all()) parts.push_back(part);
        for (CLI::App* part : states.all()) parts.push_back(part);
        for (CLI::App* part : parts) {
            part->formatter(format);
            part->set_help_flag("--help", "print this text")->group(part == render ? kFile : "Options");
        }
    }

    int run() const {
        if (*render) return runRender(command);
        if (*measure) return runMeasure(measureCommand);
        if (*styles) fmt::print("{}", styleList());
        if (*params) fmt::print("{}", parameterList(withHelp));
        if (*formats) fmt::print("{}", formatList());
        if (*layouts) fmt::print("{}", layoutList());
        if (const auto code = states.run()) return *code;
        return presets.run();
    }

    std::vector<std::string> names(const CLI::App& of) const {
        std::vector<std::string> result;
        for (const CLI::Option* option : of.get_options()) {
            for (const std::string& name : option->get_lnames()) result.push_back("--" + name);
        }
        return result;
    }

    CLI::App app;
    std::shared_ptr<HelpFormat> format = std::make_shared<HelpFormat>();
    CLI::App* render = nullptr;
    CLI::App* measure = nullptr;
    CLI::App* styles = nullptr;
    CLI::App* params = nullptr;
    CLI::App* formats = nullptr;
    CLI::App* layouts = nullptr;
    RenderCommand command;
    MeasureCommand measureCommand;
    PresetCommands presets;
    StateCommands states;
    bool withHelp = false;
};

/// An unknown option or command, with the nearest known one.
std::string usageText(const Commands& commands, const CLI::ParseError& error) {
    const std::string text = error.what();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
        return text.substr(0, text.find(':')) + " needs one value";
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ConversionError)) {
        return text.substr(std::min(text.size(), text.find("--"))) + " is no whole number";
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ValidationError)) return text;
    const auto extras = commands.app.remaining(true);
    if (extras.empty()) return text;
    const std::string& extra = extras.front();
    if (!extra.starts_with('-')) return fmt::format("'{}' was not expected", extra);
    const CLI::App* asked = &commands.app;
    while (!asked->get_subcommands().empty()) asked = asked->get_subcommands().front();
    const std::string flag = extra.substr(0, extra.find('='));
    const auto known = commands.names(*asked);
    return fmt::format("there is no option {}{}", flag, suggestion(flag, known));
}

/// UsageError unless the arguments begin with a command and, where that has commands of its own, with one of
/// these.
void requireCommand(const CLI::App& app, std::span<const std::string> arguments) {
    const CLI::App* group = &app;
    std::string path = app.get_name();
    while (true) {
        const auto commands = group->get_subcommands([](const CLI::App*) { return true; });
        if (commands.empty()) return;
        if (arguments.empty()) throw UsageError(fmt::format("a command is needed; see '{} --help'", path));
        const std::string& name = arguments.front();
        if (name.starts_with('-')) return;
        const auto found = std::ranges::find(commands, name, &CLI::App::get_name);
        if (found == commands.end()) {
            std::vector<std::string> names;
            for (const CLI::App* command : commands) names.push_back(command->get_name());
            throw UsageError(fmt::format("there is no command '{}'{}; see '{} --help'", name,
                                         suggestion(name, names), path));
        }
        group = *found;
        path += " " + name;
        arguments = arguments.subspan(1);
    }
}

int parseAndRun(const std::vector<std::string>& arguments) {
    Commands commands;
    requireCommand(commands.app, arguments);
    auto reversed = joinValues(arguments);
    std::ranges::reverse(reversed);
    try {
        commands.app.parse(std::move(reversed));
    } catch (const CLI::Success& wish) {
        return commands.app.exit(wish);
    } catch (const CLI::ParseError& error) {
        throw UsageError(usageText(commands, error));
    }
    return commands.run();
}

int fail(const char* text, ExitCode code) {
    fmt::print(stderr, "vanta: {}\n", text);
    return code;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments) {
    try {
        return parseAndRun(arguments);
    } catch (const UsageError& error) {
        return fail(error.what(), kExitUsage);
    } catch (const Interrupted& error) {
        return fail(error.what(), kExitInterrupted);
    } catch (const std::bad_alloc&) {
        return fail("out of memory", kExitFailed);
    } catch (const std::exception& error) {
        return fail(error.what(), kExitFailed);
    }
}

}  // namespace vanta
