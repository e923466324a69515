#include "gui/desktop/zenity_dialog.hpp"

#include <fmt/format.h>

namespace vanta::gui {
namespace {

using Arguments = std::vector<std::string>;

Arguments begun(const char* kind, const std::string& title, unsigned long window) {
    Arguments arguments{"zenity", kind};
    if (!title.empty()) arguments.push_back("--title=" + title);
    if (window != 0) {
        arguments.push_back("--modal");
        arguments.push_back(fmt::format("--attach={}", window));
    }
    return arguments;
}

/// A folder ends with a stroke: without it the last part would be taken for a file in the folder above.
std::string startOf(const FileQuestion& question) {
    const StartingPlace place = startingPlace(question.path);
    if (place.folder.empty()) return {};
    const std::string folder = place.folder.back() == '/' ? place.folder : place.folder + '/';
    return question.kind == FileQuestion::Kind::Folder ? folder : folder + place.name;
}

Arguments argumentsOf(const FileQuestion& question) {
    Arguments arguments = begun("--file-selection", question.title, question.window);
    if (question.kind == FileQuestion::Kind::Save) {
        arguments.push_back("--save");
        arguments.push_back("--confirm-overwrite");
    } else if (question.kind == FileQuestion::Kind::Folder) {
        arguments.push_back("--directory");
    }
    if (const std::string start = startOf(question); !start.empty())
        arguments.push_back("--filename=" + start);
    for (const FileFilter& filter : question.filters) {
        std::string patterns;
        for (const std::string& pattern : filter.patterns) patterns += ' ' + pattern;
        arguments.push_back("--file-filter=" + filter.name + " |" + patterns);
    }
    return arguments;
}

/// zenity takes a backslash for the beginning of an escape.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') result += c;
        result += c;
    }
    return result;
}

Arguments argumentsOf(const Message& message) {
    Arguments arguments = begun(message.withCancel ? "--question" : "--info", message.title, message.window);
    arguments.insert(arguments.end(), {"--no-markup", "--width=360", "--text=" + escaped(message.text)});
    if (message.withCancel) arguments.insert(arguments.end(), {"--ok-label=OK", "--cancel-label=Cancel"});
    return arguments;
}

Arguments environmentFor(const std::string& displayName) {
    return displayName.empty() ? Arguments{} : Arguments{"DISPLAY=" + displayName};
}

}  // namespace

ZenityDialog::ZenityDialog(const FileQuestion& question, const std::string& displayName)
    : process_(argumentsOf(question), environmentFor(displayName)), asksForPath_(true) {}

ZenityDialog::ZenityDialog(const Message& message, const std::string& displayName)
    : process_(argumentsOf(message), environmentFor(displayName)), asksForPath_(false) {}

DesktopDialog::State ZenityDialog::poll() {
    constexpr int kOk = 0;
    constexpr int kCancel = 1;
    const std::optional<int> status = process_.poll();
    if (!status) return State::Open;
    if (asksForPath_ && *status != kCancel && process_.output().size() > 1) {
        path_ = process_.output();
        // Names may have line ends of their own; the last one is zenity's.
        if (path_.back() == '\n') path_.pop_back();
        return State::Accepted;
    }
    // Where a host takes the status away, nothing chosen says enough.
    if (*status == kCancel || (asksForPath_ && *status == ChildProcess::kUnknown)) return State::Cancelled;
    return *status == kOk && !asksForPath_ ? State::Accepted : State::Unavailable;
}

}  // namespace vanta::gui
