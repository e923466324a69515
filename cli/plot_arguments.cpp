#include "cli/plot_arguments.hpp"

#include "cli/option_declarer.hpp"
#include "cli/texts.hpp"

namespace vanta {

void PlotArguments::declareTo(CLI::App& app) {
    settings.declareTo(app);
    view.declareTo(app);
    app.add_option("file", files)->type_name("FILE");
    OptionDeclarer add(app, text::kPlotOptions);
    add.option("--side-chain", sideChain);
    add.option("-o,--output", output);
    add.option("--at", atSeconds)->check(within(0.0, kLongestFile));
    add.option("--layout", layout);
    add.flag("--force", replace);
    add.flag("--quiet", quiet);
}

}  // namespace vanta
