#include "app/window/transport_strip.hpp"

#include <fmt/format.h>

#include <cmath>

#include "gui/tree/root_control.hpp"

namespace vanta {
namespace {

using gui::Rect;
using interface::ButtonStyle;

constexpr float kTile = 50.0f;
constexpr float kRow = 4.0f;
constexpr float kButton = 24.0f;
constexpr float kCompareWidth = 64.0f;
constexpr float kTimeWidth = 84.0f;
constexpr float kGap = 12.0f;
constexpr float kMargin = 8.0f;

std::string minutes(double seconds) {
    const auto whole = static_cast<long>(std::max(seconds, 0.0));
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

}  // namespace

TransportStrip::TransportStrip(interface::ControlFactory& factory, Transport& transport,
                               std::function<void()> onCompare)
    : factory_(factory),
      transport_(transport),
      onCompare_(std::move(onCompare)),
      root_(factory.ui().rootControl()),
      ground_(&factory.addImage({}, "BottomBar.png")) {
    ground_->stretchMode = gui::Image::StretchMode::Stretched;
    ground_->tile = kTile;
    factory_.parent = ground_;
    float x = kMargin;
    const auto next = [&x] { return Rect::ofSize(std::exchange(x, x + kButton), kRow, kButton, 20.0f); };
    addButton(next(), "Restart", "Restart plays the file from its start. Key: Home.",
              &TransportStrip::restart)
        .setIcon("IconRestart.png");
    play_ = &addButton(next(), "Play", "Play starts the file, and pauses it. Key: the space bar.",
                       &TransportStrip::play);
    play_->setIcon("IconPlay.png");
    loop_ = &addButton(next(), "Loop", "Loop plays the file round and round. Key: l.", &TransportStrip::loop);
    loop_->setIcon("IconLoop.png");
    compare_ =
        &addButton(Rect::ofSize(x + kGap, kRow, kCompareWidth, 20.0f), "Compare",
                   "Compare switches between the limited sound and the bypassed input. Unity Gain comes on "
                   "with it, so that both are equally loud and the louder one cannot flatter. Key: b.",
                   &TransportStrip::compare);
    compare_->setCaption("Compare");
    line_ = &factory_.add<SeekLine>({});
    line_->accessibleName = std::string("Position");
    line_->hint = std::string("The line shows how far the file has played. Click or drag to go elsewhere.");
    line_->onSeek = [this](double place) { transport_.jump(place * transport_.length()); };
    time_ = &factory_.addLabel({}, {}, gui::Alignment::Right);
    factory_.parent = &root_;
    root_.onResize.addHandler(this, &TransportStrip::layOut);
    layOut();
    refresh(false);
}

TransportStrip::~TransportStrip() {
    root_.onResize.removeHandler(this, &TransportStrip::layOut);
}

gui::Button& TransportStrip::addButton(const Rect& at, const char* name, const char* hint,
                                       void (TransportStrip::*action)(void*)) {
    gui::Button& button = factory_.addButton(at, ButtonStyle::Bar);
    button.accessibleName = std::string(name);
    button.hint = std::string(hint);
    button.onClick.addHandler(this, action);
    return button;
}

void TransportStrip::layOut(void* /*sender*/) {
    const Rect& all = root_.localBounds();
    ground_->setBounds({0.0f, all.bottom - kHeight, all.right, all.bottom});
    const float left = compare_->bounds.value().right + kGap;
    const float right = all.right - kMargin - kTimeWidth;
    line_->setBounds({left, kRow, std::max(right, left), kRow + 20.0f});
    time_->setBounds(Rect::ofSize(right, kRow, kTimeWidth, 20.0f));
}

void TransportStrip::refresh(bool isBypassed) {
    const bool showsPause = !transport_.isPaused();
    if (showsPause != std::exchange(showsPause_, showsPause))
        play_->setIcon(showsPause ? "IconPause.png" : "IconPlay.png");
    loop_->on = transport_.isLooping();
    compare_->on = isBypassed;
    const double length = transport_.length();
    line_->show(length > 0.0 ? transport_.position() / length : 0.0);
    const std::string time = fmt::format("{} / {}", minutes(transport_.position()), minutes(length));
    if (time != shownTime_) time_->setText(time);
    shownTime_ = time;
}

}  // namespace vanta
