#pragma once

#include <functional>
#include <string>

namespace vanta {

/// Hears what a user should know of the settings, in one sentence without a line break.
using SettingsNotice = std::function<void(const std::string& sentence)>;

/// Without a handler, or with an empty one, notices go to stderr. Any thread.
void setSettingsNotice(SettingsNotice handler);

/// Tells the user, unless the same has been said since the handler was set. Any thread.
void noticeOnce(const std::string& sentence);

}  // namespace vanta
