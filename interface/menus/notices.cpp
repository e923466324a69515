#include "interface/menus/notices.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

void Notices::show(const std::string& text, int flags) {
    waiting_.push_back({text, flags});
    ui().postDeferred(*this, 0);
}

void Notices::deferredCall(int) {
    if (waiting_.empty()) return;
    const Notice notice = waiting_.front();
    waiting_.pop_front();
    ui().showMessage(notice.text, notice.flags);
}

}  // namespace vanta::interface
