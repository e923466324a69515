#include "gui/x11/menu_panel.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "gui/text/x11_text.hpp"
#include "gui/x11/x11_window.hpp"

namespace vanta::gui {
namespace {

// In logical units.
constexpr float kRowHeight = 22.0f;
constexpr float kSeparatorHeight = 8.0f;
constexpr float kEdge = 1.0f;
constexpr float kPadding = 4.0f;
constexpr float kTextLeft = 26.0f;
constexpr float kTextRight = 24.0f;
constexpr float kColumnGap = 24.0f;
constexpr float kLeastWidth = 96.0f;
constexpr float kFontSize = 8.25f;

}  // namespace

MenuPanel::MenuPanel(X11Session& session, const MenuArtwork& artwork, X11EventTarget& target,
                     const Menu& menu, const DeviceRect& besides)
    : session_(session), artwork_(artwork), bitmap_(session.backing, session.display) {
    addRows(menu);
    place(besides);
    X11Display& x = session_.display;
    bitmap_.setPixelSize(area_.width(), area_.height());
    window_ = createWindow(x, x.root(), area_, true);
    x.addTarget(window_, target);
    XMapRaised(x.get(), window_);
    paint();
}

MenuPanel::~MenuPanel() {
    session_.display.removeTarget(window_);
    XDestroyWindow(session_.display.get(), window_);
}

std::unique_ptr<Text> MenuPanel::makeText(const std::string& shown) const {
    auto text = std::make_unique<X11Text>(session_.backing);
    text->fontSize = kFontSize;
    text->text = shown;
    return text;
}

void MenuPanel::addRows(const Menu& menu) {
    float captions = 0.0f;
    float accelerators = 0.0f;
    float top = kEdge + kPadding;
    for (int i = 0; i < menu.itemCount(); ++i) {
        MenuItem& item = *menu.item(i);
        if (!item.visible) continue;
        Row row{&item,
                item.isSeparator(),
                item.canHighlight(),
                item.checked,
                item.hasItems(),
                item.caption(),
                nullptr,
                nullptr,
                {}};
        const float height = row.separator ? kSeparatorHeight : kRowHeight;
        row.area = Rect::ofSize(kEdge, top, 0.0f, height);
        top += height;
        if (!row.separator) {
            row.caption = makeText(item.caption());
            row.accelerator = makeText(item.accelerator());
            captions = std::max(captions, row.caption->width());
            accelerators = std::max(accelerators, row.accelerator->width());
        }
        rows_.push_back(std::move(row));
    }
    const float column = accelerators > 0.0f ? kColumnGap + accelerators : 0.0f;
    width_ = std::max(kLeastWidth, std::ceil(kTextLeft + captions + column + kTextRight));
    for (Row& row : rows_) row.area.right = width_ - kEdge;
    contentHeight_ = top + kPadding + kEdge;
}

/// Right of what it belongs to, or left of it where there is no room; on the monitor in any case.
void MenuPanel::place(const DeviceRect& besides) {
    const float scale = session_.backing.scale();
    const DeviceRect probe{besides.left, besides.top, besides.right + 1, besides.bottom + 1};
    const DeviceRect monitor = session_.display.monitorAt(probe);
    const int width = toDevice(width_, scale);
    const int height = std::min(toDevice(contentHeight_, scale), monitor.height());
    height_ = static_cast<float>(height) / scale;
    int left = besides.right;
    if (left + width > monitor.right) left = besides.left - width;
    left = std::clamp(left, monitor.left, std::max(monitor.left, monitor.right - width));
    // A submenu's first row is beside the row that opens it.
    const int lift = besides.height() > 0 ? toDevice(kEdge + kPadding, scale) : 0;
    const int top = std::clamp(besides.top - lift, monitor.top, monitor.bottom - height);
    area_ = DeviceRect::ofSize(left, top, width, height);
}

bool MenuPanel::contains(Point onScreen) const {
    return area_.contains({static_cast<int>(onScreen.x), static_cast<int>(onScreen.y)});
}

int MenuPanel::rowAt(Point onScreen) const {
    if (!contains(onScreen)) return -1;
    const float scale = session_.backing.scale();
    const Point point{(onScreen.x - static_cast<float>(area_.left)) / scale,
                      (onScreen.y - static_cast<float>(area_.top)) / scale};
    const auto hit = std::find_if(rows_.begin(), rows_.end(),
                                  [&](const Row& row) { return visibleArea(row).contains(point); });
    return hit == rows_.end() ? -1 : static_cast<int>(hit - rows_.begin());
}

bool MenuPanel::canHighlight(int row) const {
    return row >= 0 && row < rowCount() && rows_[static_cast<std::size_t>(row)].active;
}

bool MenuPanel::isSubmenu(int row) const {
    return canHighlight(row) && rows_[static_cast<std::size_t>(row)].submenu;
}

int MenuPanel::nextRow(int from, int step) const {
    const int count = rowCount();
    int at = from >= 0 ? from : (step > 0 ? -1 : count);
    for (int tried = 0; tried < count; ++tried) {
        at = (at + step + count) % count;
        if (canHighlight(at)) return at;
    }
    return -1;
}

int MenuPanel::rowBeginningWith(char32_t letter) const {
    if (letter == 0 || letter > 0x7F) return -1;
    for (int tried = 1; tried <= rowCount(); ++tried) {
        const int row = (std::max(highlighted_, -1) + tried) % rowCount();
        const std::string& caption = rows_[static_cast<std::size_t>(row)].letter;
        const bool matches = !caption.empty() && std::tolower(static_cast<unsigned char>(caption.front())) ==
                                                     std::tolower(static_cast<int>(letter));
        if (matches && canHighlight(row)) return row;
    }
    return -1;
}

DeviceRect MenuPanel::rowOnScreen(int row) const {
    const DeviceRect inside =
        toDevice(visibleArea(rows_[static_cast<std::size_t>(row)]), session_.backing.scale());
    return inside.translated({area_.left, area_.top});
}

void MenuPanel::highlight(int row) {
    if (row == highlighted_) return;
    highlighted_ = row;
    if (row >= 0) {
        const Rect area = visibleArea(rows_[static_cast<std::size_t>(row)]);
        const float margin = kEdge + kPadding;
        scroll_ += std::min(area.top - margin, 0.0f) + std::max(area.bottom - (height_ - margin), 0.0f);
    }
    paint();
}

void MenuPanel::scrollBy(float logicalUnits) {
    scroll_ = std::clamp(scroll_ + logicalUnits, 0.0f, std::max(0.0f, contentHeight_ - height_));
    paint();
}

}  // namespace vanta::gui
