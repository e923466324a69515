#include "gui/controls/edit_line.hpp"

#include <algorithm>

namespace vanta::gui {
namespace {

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

std::string printable(const std::string& text) {
    std::string kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 && byte != 0x7F;
    });
    return kept;
}

std::string utf8(char32_t c) {
    const auto tail = [&](int shift) { return static_cast<char>(0x80u | (c >> shift & 0x3Fu)); };
    if (c < 0x80) return {static_cast<char>(c)};
    if (c < 0x800) return {static_cast<char>(0xC0u | c >> 6), tail(0)};
    if (c < 0x10000) return {static_cast<char>(0xE0u | c >> 12), tail(6), tail(0)};
    return {static_cast<char>(0xF0u | c >> 18), tail(12), tail(6), tail(0)};
}

}  // namespace

void EditLine::setText(const std::string& text) {
    text_ = printable(text);
    caret_ = anchor_ = text_.size();
}

std::string EditLine::selected() const {
    return text_.substr(selectionStart(), selectionEnd() - selectionStart());
}

void EditLine::selectAll() {
    anchor_ = 0;
    caret_ = text_.size();
}

void EditLine::moveTo(std::size_t position, bool selecting) {
    caret_ = std::min(position, text_.size());
    if (!selecting) anchor_ = caret_;
}

void EditLine::moveBy(int step, bool selecting) {
    if (!selecting && caret_ != anchor_) return moveTo(step < 0 ? selectionStart() : selectionEnd(), false);
    moveTo(neighbour(caret_, step), selecting);
}

std::size_t EditLine::neighbour(std::size_t position, int step) const {
    if (step < 0 ? position == 0 : position >= text_.size()) return position;
    do {
        position = step < 0 ? position - 1 : position + 1;
    } while (position > 0 && position < text_.size() && isContinuation(text_[position]));
    return position;
}

void EditLine::insert(const std::string& text) {
    const std::string added = printable(text);
    const std::size_t start = selectionStart();
    text_.replace(start, selectionEnd() - start, added);
    caret_ = anchor_ = start + added.size();
}

void EditLine::insert(char32_t character) {
    insert(utf8(character));
}

void EditLine::erase(int step) {
    if (caret_ == anchor_) caret_ = neighbour(caret_, step);
    insert(std::string{});
}

}  // namespace vanta::gui
