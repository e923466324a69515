#include "app/scope/scope_arguments.hpp"

#include "app/scope/texts.hpp"
#include "cli/option_declarer.hpp"

namespace vanta {

void ScopeArguments::declareTo(CLI::App& app) {
    settings.declareTo(app);
    view.declareTo(app);
    app.add_option("file", files)->type_name("FILE");
    OptionDeclarer add(app, text::kScopeOptions);
    add.flag("--software", software);
    add.flag("--opengl", openGl);
    add.flag("--no-jack", noJack);
    add.option("--layout", layout);
    add.option("--screenshot", screenshot);
    add.option("--at", atSeconds)->check(within(0.0, kLongestFile));
    add.flag("--force", replace);
}

}  // namespace vanta
