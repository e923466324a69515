#include "cli/parsing.hpp"

#include <algorithm>
#include <new>

#include "cli/exit_code.hpp"
#include "cli/messages.hpp"
#include "cli/parameter_options.hpp"
#include "cli/usage_text.hpp"
#include "foundation/progress.hpp"

namespace vanta {

namespace {

int fail(std::string_view text, ExitCode code) {
    printError(text);
    return code;
}

}  // namespace

std::optional<int> parseArguments(CLI::App& app, const std::vector<std::string>& arguments) {
    auto reversed = joinValues(arguments);
    std::ranges::reverse(reversed);
    try {
        app.parse(std::move(reversed));
        return {};
    } catch (const CLI::Success& wish) {
        return app.exit(wish);
    } catch (const CLI::ParseError& error) {
        throw UsageError(usageText(app, error));
    }
}

int reportErrors(const std::function<int()>& run) {
    try {
        return run();
    } catch (const UsageError& error) {
        return fail(error.what(), kExitUsage);
    } catch (const Stopped&) {
        return fail("interrupted", kExitInterrupted);
    } catch (const std::bad_alloc&) {
        return fail("out of memory", kExitFailed);
    } catch (const std::exception& error) {
        printFailure(error);
        return kExitFailed;
    }
}

}  // namespace vanta
