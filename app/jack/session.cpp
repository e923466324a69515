#include "app/jack/session.hpp"

#include "cli/exit_code.hpp"
#include "cli/output_file.hpp"
#include "foundation/output_check.hpp"
#include "plugin/model/session_state.hpp"

namespace vanta {

namespace {

std::filesystem::path fileOf(const JackArguments& arguments) {
    if (!arguments.session.empty() && !arguments.save.empty())
        throw UsageError("--session and --save cannot be combined: --session saves as well");
    return arguments.session.empty() ? arguments.save : arguments.session;
}

}  // namespace

Session::Session(HostedPlugin& plugin, const JackArguments& arguments)
    : plugin_(plugin), file_(fileOf(arguments)) {
    std::error_code error;
    const bool isResumed = !arguments.session.empty() && std::filesystem::exists(file_, error);
    if (!file_.empty()) checkOutput(file_, {}, true);
    SessionInstance instance;
    instance.recall(plugin_.saveState());
    if (isResumed) instance.recall(file_);
    arguments.settings.applyTo(instance, arguments.sideChain && !isResumed);
    plugin_.restoreState(writeSessionState(instance));
}

void Session::save() const {
    const std::vector<std::byte> state = plugin_.saveState();
    writeOutput(file_, std::string_view(reinterpret_cast<const char*>(state.data()), state.size()));
}

}  // namespace vanta
