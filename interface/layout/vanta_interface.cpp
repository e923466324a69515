#include "interface/layout/vanta_interface.hpp"

#include "foundation/resource.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/tree/root_control.hpp"
#include "interface/layout/compact_form.hpp"
#include "interface/layout/regular_form.hpp"

namespace vanta::interface {
namespace {

constexpr float kCompactWidth = 655.0f;
constexpr float kCompactHeight = 290.0f;

gui::UserInterface& withArtwork(gui::UserInterface& interface) {
    addResources(gui::artworkResources());
    return interface;
}

}  // namespace

VantaInterface::VantaInterface(gui::UserInterface& interface, VantaPlugin& plugin,
                               const std::string& helpFile)
    : QuillmarkPluginInterface(withArtwork(interface), plugin,
                               interfaceProduct(helpFile, {"Compact", "Small", "Medium", "Large"})),
      meters_(plugin, gestures()),
      context_{*this, plugin, meters_} {
    meters_.onRestart = [this] { form_->restartPicture(); };
    topBar_ = std::make_unique<TopBar>(context_);
    bottomBar_ = std::make_unique<BottomBar>(context_);
    formStart_ = factory().controls().size();
    rebuild();
    root().onResize.addHandler(this, &VantaInterface::resized);
    animator().onFrame.addHandler(this, &VantaInterface::frameStarts);
    finish();
}

VantaInterface::~VantaInterface() {
    close();
    root().onResize.removeHandler(this, &VantaInterface::resized);
    animator().onFrame.removeHandler(this, &VantaInterface::frameStarts);
    meters_.onRestart = nullptr;
    form_.reset();
}

void VantaInterface::removeForm() {
    form_.reset();
    factory().deleteFrom(formStart_);
}

/// The form lies below the bars, of whose shadows it shows what passes through.
void VantaInterface::rebuild() {
    removeForm();
    const bool isCompact = sizing().isCompact();
    const gui::Rect size = isCompact ? gui::Rect{0.0f, 0.0f, kCompactWidth, kCompactHeight}
                                     : gui::Rect{0.0f, 0.0f, RegularForm::kWidth, RegularForm::kHeight};
    ground_ = &factory().add<gui::Control>(size);
    root().moveChild(*ground_, 0);
    covered_ = {};
    {
        const ParentScope onGround(factory(), *ground_);
        if (isCompact) {
            form_ = std::make_unique<CompactForm>(context_, *bottomBar_);
        } else {
            form_ = std::make_unique<RegularForm>(context_);
        }
    }
    layOut();
    parameterChanged(event::kAllParameters);
}

/// The picture behind all controls is made for one size, and serves all smaller ones.
void VantaInterface::coverGround() {
    const gui::Rect& all = root().localBounds();
    if (all.width() <= covered_.width() && all.height() <= covered_.height()) return;
    covered_ = all;
    setBackground(form_->isCompact() ? "SmallLayoutBackground.png" : "Background.png");
}

void VantaInterface::layOut() {
    coverGround();
    const bool isCompact = form_->isCompact();
    if (!isCompact) ground_->setBounds(root().content());
    topBar_->layOut(isCompact);
    bottomBar_->layOut(isCompact);
    form_->layOut();
}

void VantaInterface::resized(void*) {
    if (form_->isCompact() != sizing().isCompact()) {
        rebuild();
    } else {
        layOut();
    }
}

void VantaInterface::parameterChanged(int index) {
    const ParameterChange change{index};
    bottomBar_->follow(change);
    form_->follow(change);
}

void VantaInterface::channelLayoutChanged() {
    form_->channelLayoutChanged();
    layOut();
}

void VantaInterface::controllerMoved(int controller) {
    QuillmarkPluginInterface::controllerMoved(controller);
    bottomBar_->controllerMoved();
}

void VantaInterface::frameStarts(void*) {
    form_->setSampleRate(model().sampleRate());
}

}  // namespace vanta::interface
