#include "cli/progress_bar.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

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
    const auto bar = std::make_shared<ProgressBar>(!quiet);
    return [bar](const Work& work) -> Progress {
        // A std::function is copied; all copies share one place, which goes with the last.
        const std::shared_ptr<ProgressBar::Place> place(new ProgressBar::Place(bar->begin(work)),
                                                        [bar](ProgressBar::Place* ended) {
                                                            bar->end(*ended);
                                                            delete ended;
                                                        });
        return [bar, place](std::int64_t frames) {
            bar->show(*place, frames);
            return !interruptRequested();
        };
    };
}

ProgressBar::ProgressBar(bool wanted) : visible_(wanted && isTerminal()) {}

ProgressBar::Place ProgressBar::begin(const Work& work) {
    const std::scoped_lock lock(mutex_);
    const auto now = Clock::now();
    // What is over at once needs no bar.
    if (running_.empty()) nextDraw_ = now + kInterval;
    return running_.insert(running_.end(), {work, 0, now});
}

void ProgressBar::end(Place place) {
    const std::scoped_lock lock(mutex_);
    running_.erase(place);
    if (running_.empty() && std::exchange(drawn_, false)) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(Place place, std::int64_t frames) {
    const std::scoped_lock lock(mutex_);
    place->frames = frames;
    if (!visible_) return;
    const auto now = Clock::now();
    if (now < nextDraw_) return;
    nextDraw_ = now + kInterval;
    drawn_ = true;
    draw(now);
}

void ProgressBar::draw(Clock::time_point now) const {
    double done = 0.0;
    double all = 0.0;
    double rate = 0.0;
    std::string titles;
    for (const Running& each : running_) {
        const double elapsed = std::max(1e-3, std::chrono::duration<double>(now - each.started).count());
        const auto frames = static_cast<double>(each.frames);
        done += frames / each.work.sampleRate;
        all += static_cast<double>(each.work.frames) / each.work.sampleRate;
        rate += frames / each.work.sampleRate / elapsed;
        titles += (titles.empty() ? "" : ", ") + printable(each.work.title);
    }
    const double share = std::min(1.0, done / std::max(all, 1e-9));
    const std::string tail = fmt::format("{:4.0f}%  {:.0f}x real time", 100.0 * share, rate);

    const std::size_t width = terminalWidth();
    constexpr std::size_t kBrackets = 5;
    const std::size_t room = width - std::min(width, tail.size() + kBrackets);
    const std::string name = titles.substr(0, room / 2);
    const std::size_t bar = std::min<std::size_t>(40, room - name.size());
    const auto full = static_cast<std::size_t>(share * static_cast<double>(bar));
    const std::string line =
        fmt::format("\r{} [{:#<{}}{:.<{}}]{}\033[K", name, "", full, "", bar - full, tail);
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace vanta
