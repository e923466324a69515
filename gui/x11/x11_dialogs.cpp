#include "gui/x11/x11_dialogs.hpp"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

#include "gui/controls/message_dialog.hpp"
#include "gui/desktop/portal_dialog.hpp"
#include "gui/desktop/zenity_dialog.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/x11/x11_interface.hpp"
#include "gui/x11/x11_session.hpp"

namespace vanta::gui {
namespace {

using State = DesktopDialog::State;
using Session = std::shared_ptr<X11Session>;

constexpr char kNoFileDialog[] =
    "No file can be chosen, as this desktop has no file dialog. Install the package zenity, or "
    "xdg-desktop-portal with a backend for your desktop.";

/// Whom a window manager knows: the host's window around an embedded one.
Window topLevelOf(X11Display& display, Window window) {
    const Atom managed = display.atom("WM_STATE");
    while (window != kNoXid) {
        Atom type = kNoXid;
        int format = 0;
        unsigned long count = 0, left = 0;
        unsigned char* bytes = nullptr;
        XGetWindowProperty(display.get(), window, managed, 0, 0, kXFalse, AnyPropertyType, &type, &format,
                           &count, &left, &bytes);
        if (bytes) XFree(bytes);
        Window root = kNoXid, parent = kNoXid, *children = nullptr;
        unsigned size = 0;
        const bool isTree = XQueryTree(display.get(), window, &root, &parent, &children, &size);
        if (children) XFree(children);
        if (type != kNoXid || !isTree || parent == kNoXid || parent == root) break;
        window = parent;
    }
    return window;
}

/// Until the user has answered, or the window has gone: that cancels it.
State run(X11Interface& owner, DesktopDialog& dialog) {
    State state = dialog.poll();
    if (state == State::Open) owner.runModal([&] { return (state = dialog.poll()) != State::Open; });
    return state == State::Open ? State::Cancelled : state;
}

/// The path that was chosen. Afterwards the interface may have gone.
std::optional<std::string> ask(X11Interface& owner, const Session& session, const FileQuestion& question) {
    const std::shared_ptr<EventRelay> relay = owner.relay();
    const auto answer = [](State state, const DesktopDialog& dialog) {
        return state == State::Accepted ? std::optional(dialog.chosenPath()) : std::nullopt;
    };
    {
        PortalDialog portal(question);
        if (const State state = run(owner, portal); state != State::Unavailable) return answer(state, portal);
    }
    if (!relay->isOpen()) return std::nullopt;
    {
        ZenityDialog zenity(question, XDisplayString(session->display.get()));
        if (const State state = run(owner, zenity); state != State::Unavailable) return answer(state, zenity);
    }
    if (relay->isOpen()) owner.showMessage(kNoFileDialog, 0);
    return std::nullopt;
}

std::string displayNameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

bool mayReplace(X11Interface& owner, const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return true;
    return !owner.showMessage(displayNameOf(path) + " already exists. Do you want to replace it?",
                              UserInterface::kConfirmation | UserInterface::kWithCancel);
}

bool canBeSeen(X11Display& display, Window window) {
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display.get(), window, &attributes) && attributes.map_state == IsViewable;
}

/// In the window itself.
bool showInWindow(X11Interface& owner, const Message& message) {
    const RootControl::MessageScope scope(owner.rootControl());
    auto& dialog = owner.make<MessageDialog>(message.title, message.text, message.withCancel);
    const std::shared_ptr<const bool> liveness = dialog.liveness();
    owner.runNested([&] { return !*liveness || dialog.answer() != MessageDialog::Answer::None; });
    const bool isOk = *liveness && dialog.answer() == MessageDialog::Answer::Ok;
    if (*liveness) delete &dialog;
    return message.withCancel && !isOk;
}

}  // namespace

X11OpenSaveDialog::X11OpenSaveDialog(X11Interface& interface, Session session, Kind kind)
    : owner_(interface), session_(std::move(session)), kind_(kind) {}

bool X11OpenSaveDialog::show() {
    // Locals: the interface may take this dialog along.
    X11Interface& owner = owner_;
    const Session session = session_;
    const std::shared_ptr<EventRelay> relay = owner.relay();
    const bool isSaving = kind_ == Kind::Save;
    const std::string extension = isSaving ? defaultExtension.value() : std::string{};
    FileQuestion question{kind_, title, path, parseFilters(filter.value()),
                          topLevelOf(session->display, owner.window())};
    while (owner.isOpen()) {
        const std::optional<std::string> chosen = ask(owner, session, question);
        if (!relay->isOpen() || !chosen) return false;
        if (chosen->empty()) {
            owner.showMessage("What was chosen is not on this computer. Choose a file of a local folder.", 0);
        } else {
            const std::string whole = withExtension(*chosen, extension);
            // What was typed as it is has been asked about.
            if (whole == *chosen || mayReplace(owner, whole)) {
                if (!relay->isOpen()) return false;
                path = whole;
                return true;
            }
            question.path = whole;
        }
        if (!relay->isOpen()) return false;
    }
    return false;
}

X11SelectFolderDialog::X11SelectFolderDialog(X11Interface& interface, Session session)
    : owner_(interface), session_(std::move(session)) {}

bool X11SelectFolderDialog::show() {
    X11Interface& owner = owner_;
    const Session session = session_;
    const std::shared_ptr<EventRelay> relay = owner.relay();
    const std::optional<std::string> chosen =
        ask(owner, session,
            {FileQuestion::Kind::Folder, title, path, {}, topLevelOf(session->display, owner.window())});
    if (!relay->isOpen() || !chosen || chosen->empty()) return false;
    path = *chosen;
    return true;
}

bool showX11Message(X11Interface& owner, const Session& keptSession, const std::string& text, int flags) {
    const Session session = keptSession;
    const std::shared_ptr<EventRelay> relay = owner.relay();
    const bool withCancel = flags & UserInterface::kWithCancel;
    const bool isConfirmation = withCancel && (flags & UserInterface::kConfirmation);
    if (!owner.isOpen()) {
        std::fprintf(stderr, "%s\n", text.c_str());
        return withCancel;
    }
    const Message message{isConfirmation ? "Confirmation" : "Information", text, withCancel,
                          topLevelOf(session->display, owner.window())};
    {
        ZenityDialog zenity(message, XDisplayString(session->display.get()));
        const State state = run(owner, zenity);
        if (state != State::Unavailable) return withCancel && state != State::Accepted;
    }
    if (!relay->isOpen()) return withCancel;
    if (canBeSeen(session->display, owner.window())) return showInWindow(owner, message);
    std::fprintf(stderr, "%s\n", text.c_str());
    return withCancel;
}

}  // namespace vanta::gui
