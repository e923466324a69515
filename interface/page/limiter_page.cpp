#include "interface/page/limiter_page.hpp"

#include "foundation/resource.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/tree/root_control.hpp"

namespace vanta::interface {
namespace {

constexpr int kFramesPerSecond = 60;
constexpr float kTopBar = 48.0f;  ///< the last 8 units are its shadow
constexpr float kBottomBar = 27.0f;

gui::Animator& makeAnimator(gui::UserInterface& interface) {
    addResources(gui::artworkResources());
    auto& animator = interface.make<gui::Animator>();
    animator.framesPerSecond = kFramesPerSecond;
    animator.running = true;
    return animator;
}

}  // namespace

LevelCounts levelCounts(ChannelLayout layout) {
    return {.channels = channelCount(layout),
            .audio = kCountOf<RecordedAudio>,
            .levelsPerChannel = kCountOf<ChannelLevel>,
            .globalLevels = kCountOf<ProgrammeLevel>,
            .spectra = 0};
}

LimiterPage::LimiterPage(gui::UserInterface& interface, ExchangeLink& link, float sampleRate)
    : Component(interface),
      link_(link),
      animator_(&makeAnimator(interface)),
      display_(&interface.make<LimiterDisplay>(animator_, link.levels())) {
    interface.loadBackdrop("Background");
    gui::RootControl& root = interface.rootControl();
    display_->sampleRate = sampleRate;
    display_->anchor = gui::anchor::kTopLeft;
    display_->parent = &root;
    scale_.emplace(root, *display_);
    panel_ = &interface.make<VantaMeterPanel>(root, link, animator_, VantaMeterPanel::Form::Regular);
    panel_->setMainScale(display_, {&scale_->grid(), &display_->grid()});
    buildBars();
    link_.onRestart = [this] { display_->restart(); };
    root.onResize.addHandler(this, &LimiterPage::layOut);
    panel_->onResize.addHandler(this, &LimiterPage::layOut);
    follow();
    layOut();
}

LimiterPage::~LimiterPage() {
    link_.onRestart = nullptr;
    if (!ui().isDestroying()) ui().rootControl().onResize.removeHandler(this, &LimiterPage::layOut);
}

void LimiterPage::buildBars() {
    topBar_ = &addBar("LogoBar", 100.0f);
    bottomBar_ = &addBar("BottomBar", 50.0f);
}

gui::Image& LimiterPage::addBar(const char* picture, float tile) {
    auto& bar = ui().make<gui::Image>();
    bar.stretchMode = gui::Image::StretchMode::Stretched;
    bar.tile = tile;
    bar.load(picture);
    bar.parent = &ui().rootControl();
    return bar;
}

void LimiterPage::layOut(void* /*sender*/) {
    const gui::Rect& all = ui().rootControl().localBounds();
    const float right = panel_->bounds.value().left;
    display_->setBounds({0.0f, 0.0f, right, all.height()});
    scale_->place(right, all.height());
    topBar_->setBounds({0.0f, 0.0f, all.width(), kTopBar});
    bottomBar_->setBounds({0.0f, all.height() - kBottomBar, all.width(), all.height()});
    display_->setMode(static_cast<DisplayMode>(mode_), all.width());
}

void LimiterPage::follow() {
    const VantaParameters& parameters = link_.parameters();
    mode_ = static_cast<VantaParameters::DisplayMode>(parameters.displayMode.currentIndex());
    display_->setMode(static_cast<DisplayMode>(mode_), ui().rootControl().localBounds().width());
    const bool isShown = mode_ != VantaParameters::DisplayMode::Off && !parameters.bypass.mapped();
    if (isShown != isShown_) display_->showPicture(isShown);
    isShown_ = isShown;
    panel_->parameterChanged(VantaMeterPanel::kAllParameters);
    display_->showSlowLevel(static_cast<MeterScale>(parameters.meterScale.currentIndex()),
                            static_cast<ProgrammeLevel>(parameters.loudnessTimeScale.currentIndex()));
}

}  // namespace vanta::interface
