#include "cli/render_arguments.hpp"

#include <limits>

#include "cli/option_declarer.hpp"
#include "cli/texts.hpp"

namespace vanta {

void RenderArguments::declareTo(CLI::App& app) {
    settings.declareTo(app);
    app.add_option("files", files)->type_name("IN... OUT");
    OptionDeclarer add(app, text::kRenderOptions);
    add.option("--side-chain", sideChain);
    add.option("--loudness", loudnessLufs)->check(within(-70.0, 10.0));
    add.option("--loudness-mode", loudnessMode);
    add.option("--max-true-peak", maxTruePeakDb)->check(within(-30.0, 10.0));
    add.option("--report", reportFile);
    add.option("--out-dir", outDir);
    add.option("--name", name);
    add.flag("--recursive", recursive);
    add.option("--jobs", jobs)->check(within(1, kMostJobs));
    add.flag("--dry-run", dryRun);
    add.option("--format", format);
    add.option("--subtype", subtype);
    add.option("--rate", sampleRate)->check(within(kLowestSampleRate, kHighestSampleRate));
    add.option("--quality", quality)->check(within(0.0, 10.0));
    add.option("--bitrate", bitrate)->check(within(6.0, 2560.0));
    add.option("--replaygain", replayGain);
    add.flag("--strip", strip);
    add.option("--layout", layout);
    add.option("--tail", tailSeconds)->check(within(0.0, kLongestTail));
    add.option("--block", blockSamples)->check(within(1, kLargestBlock));
    add.option("--seed", ditherSeed)->check(within(0, std::numeric_limits<std::uint32_t>::max()));
    add.flag("--force", replace);
    add.flag("--quiet", quiet);
}

}  // namespace vanta
