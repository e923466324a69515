#include "cli/measure_arguments.hpp"

#include "cli/option_declarer.hpp"
#include "cli/texts.hpp"

namespace vanta {

void MeasureArguments::declareTo(CLI::App& app) {
    app.add_option("files", files)->type_name("FILE...");
    OptionDeclarer add(app, text::kMeasureOptions);
    add.flag("--json", json);
    add.flag("--csv", csv);
    add.option("--timeline", timeline);
    add.option("--plot", plot);
    add.option("--target", requirements.targetLufs)->check(within(-70.0, 10.0));
    add.option("--tolerance", requirements.toleranceLu)->check(within(0.0, 20.0));
    add.option("--max-true-peak", requirements.maxTruePeakDb)->check(within(-60.0, 30.0));
    add.option("--layout", layout);
    add.flag("--recursive", recursive);
    add.option("--jobs", jobs)->check(within(1, kMostJobs));
    add.flag("--quiet", quiet);
}

}  // namespace vanta
