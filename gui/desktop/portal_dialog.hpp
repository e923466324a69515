#pragma once

#include <memory>

#include "gui/desktop/desktop_dialog.hpp"
#include "gui/desktop/file_question.hpp"

namespace vanta::gui {

/// A file dialog by the desktop's portal: the interface org.freedesktop.portal.FileChooser on the session
/// bus, https://flatpak.github.io/xdg-desktop-portal/docs/. The bus is the environment's, by a connection of
/// its own. Without a bus, without a portal or where that goes away the dialog is Unavailable.
class PortalDialog final : public DesktopDialog {
public:
    explicit PortalDialog(const FileQuestion& question);
    ~PortalDialog() override;

    State poll() override;
    std::string chosenPath() const override;

private:
    class Conversation;
    std::shared_ptr<Conversation> conversation_;
};

}  // namespace vanta::gui
