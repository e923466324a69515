#include "cli/progress_bar.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "cli/interrupt.hpp"
#include "foundation/printable.hpp"

namespace vanta {

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);

bool isTerminal() {
    const char* kind = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) != 0 && kind && std::string_view(kind) != "dumb";
}

std::size_t terminalWidth() {
    winsize size{};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

}  // namespace

WorkWatcher terminalWatcher(bool quiet) {
    return [quiet](const Work& work) -> Progress {
        // A std::function is copied; all copies share one bar, which goes with the last.
        const auto bar = std::make_shared<ProgressBar>(work, !quiet);
        return [bar](std::int64_t frames) {
            bar->show(frames);
            return !interruptRequested();
        };
    };
}

ProgressBar::ProgressBar(const Work& work, bool wanted) : work_(work), visible_(wanted && isTerminal()) {}

ProgressBar::~ProgressBar() {
    if (drawn_) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(std::int64_t frames) {
    if (!visible_) return;
    const auto now = Clock::now();
    if (now < nextDraw_) return;
    nextDraw_ = now + kInterval;
    drawn_ = true;
    draw(frames, now);
}

void ProgressBar::draw(std::int64_t frames, Clock::time_point now) const {
    const double share = std::min(
        1.0, static_cast<double>(frames) / static_cast<double>(std::max<std::int64_t>(work_.frames, 1)));
    const double elapsed = std::max(1e-3, std::chrono::duration<double>(now - started_).count());
    const std::string tail = fmt::format("{:4.0f}%  {:.0f}x real time", 100.0 * share,
                                         static_cast<double>(frames) / work_.sampleRate / elapsed);

    const std::size_t width = terminalWidth();
    constexpr std::size_t kBrackets = 5;
    const std::size_t room = width - std::min(width, tail.size() + kBrackets);
    const std::string name = printable(work_.title).substr(0, room / 2);
    const std::size_t bar = std::min<std::size_t>(40, room - name.size());
    const auto full = static_cast<std::size_t>(share * static_cast<double>(bar));
    const std::string line =
        fmt::format("\r{} [{:#<{}}{:.<{}}]{}\033[K", name, "", full, "", bar - full, tail);
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace vanta
