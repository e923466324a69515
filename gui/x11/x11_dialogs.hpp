#pragma once

#include <memory>

#include "gui/desktop/file_question.hpp"
#include "gui/tree/file_dialogs.hpp"

namespace vanta::gui {

class X11Interface;
struct X11Session;

/// Asks for a file, with the interface locked and its loop going on. Comes back, with nothing chosen, when
/// the window dies.
class X11OpenSaveDialog final : public OpenSaveDialog {
public:
    using Kind = FileQuestion::Kind;
    X11OpenSaveDialog(X11Interface& interface, std::shared_ptr<X11Session> session, Kind kind);

    /// A file that would be replaced only for its extension is asked about.
    bool show() override;

private:
    X11Interface& owner_;
    std::shared_ptr<X11Session> session_;
    Kind kind_;
};

/// The same for a folder.
class X11SelectFolderDialog final : public SelectFolderDialog {
public:
    X11SelectFolderDialog(X11Interface& interface, std::shared_ptr<X11Session> session);
    bool show() override;

private:
    X11Interface& owner_;
    std::shared_ptr<X11Session> session_;
};

/// UserInterface::showMessage.
bool showX11Message(X11Interface& interface, const std::shared_ptr<X11Session>& session,
                    const std::string& text, int flags);

}  // namespace vanta::gui
