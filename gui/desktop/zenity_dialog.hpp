#pragma once

#include "gui/desktop/child_process.hpp"
#include "gui/desktop/desktop_dialog.hpp"
#include "gui/desktop/file_question.hpp"

namespace vanta::gui {

/// What a message says, in UTF-8.
struct Message {
    std::string title;
    std::string text;
    bool withCancel = false;
    unsigned long window = 0;  ///< of X, that it belongs to; 0 for none
};

/// A dialog by zenity, which most desktops have.
class ZenityDialog final : public DesktopDialog {
public:
    /// `displayName` is that of the X server; empty for the environment's.
    ZenityDialog(const FileQuestion& question, const std::string& displayName);
    ZenityDialog(const Message& message, const std::string& displayName);

    State poll() override;
    std::string chosenPath() const override { return path_; }

private:
    ChildProcess process_;
    bool asksForPath_;
    std::string path_;
};

}  // namespace vanta::gui
