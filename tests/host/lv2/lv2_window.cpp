#include "tests/host/lv2/lv2_window.hpp"

#include <lv2/atom/util.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace vanta::test {
namespace {

std::vector<std::uint64_t> copyOf(const LV2_Atom& atom) {
    std::vector<std::uint64_t> copy((sizeof atom + atom.size + 7) / 8);
    std::memcpy(copy.data(), &atom, sizeof atom + atom.size);
    return copy;
}

const LV2_Atom& atomIn(const std::vector<std::uint64_t>& words) {
    return *reinterpret_cast<const LV2_Atom*>(words.data());
}

}  // namespace

Lv2Window::Lv2Window(Lv2Host& of, const LV2UI_Descriptor& descriptor, Lv2WindowOffers offers)
    : host_(of), descriptor_(descriptor), offers_(offers) {
    shown_.assign(of.ports().size(), std::numeric_limits<float>::quiet_NaN());
    touch_ = {this, [](LV2UI_Feature_Handle self, std::uint32_t port, bool grabbed) {
                  using Kind = FormatHost::Edit::Kind;
                  auto& window = *static_cast<Lv2Window*>(self);
                  window.touches.emplace_back(port, grabbed);
                  window.host_.onWindowCall();
                  window.host_.noteEdit({grabbed ? Kind::Begin : Kind::End, static_cast<int>(port)});
              }};
    resize_ = {this, [](LV2UI_Feature_Handle self, int width, int height) {
                   Lv2Host& host = static_cast<Lv2Window*>(self)->host_;
                   host.onWindowCall();
                   host.wantedSizes.push_back({width, height});
                   return host.refusesSizes ? 1 : 0;
               }};
    portMap_ = {&host_, [](LV2UI_Feature_Handle host, const char* symbol) -> std::uint32_t {
                    const auto& all = static_cast<Lv2Host*>(host)->ports();
                    for (std::uint32_t i = 0; i < all.size(); ++i) {
                        if (all[i].symbol == symbol) return i;
                    }
                    return LV2UI_INVALID_PORT_INDEX;
                }};
    const LV2_Options_Option options[] = {{LV2_OPTIONS_INSTANCE, 0, Lv2Host::urid(LV2_UI__scaleFactor),
                                           sizeof(float), Lv2Host::urid(LV2_ATOM__Float), &offers_.scale},
                                          {}};
    const LV2_Feature all[] = {{LV2_URID__map, host_.map()},
                               {LV2_UI__touch, &touch_},
                               {LV2_UI__resize, &resize_},
                               {LV2_UI__portMap, &portMap_},
                               {LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)},
                               {LV2_UI__parent, offers_.parent},
                               {LV2_INSTANCE_ACCESS_URI, lilv_instance_get_handle(host_.instance())}};
    std::vector<const LV2_Feature*> features;
    for (const LV2_Feature& each : all) features.push_back(&each);
    if (!offers_.instance) features.pop_back();
    features.push_back(nullptr);
    const auto write = [](LV2UI_Controller self, std::uint32_t port, std::uint32_t size, std::uint32_t format,
                          const void* buffer) {
        static_cast<Lv2Window*>(self)->write(port, size, format, buffer);
    };
    const std::string uri = host_.instance()->lv2_descriptor->URI;
    ui_ = descriptor_.instantiate(&descriptor_, uri.c_str(), "", write, this, &widget_, features.data());
}

Lv2Window::~Lv2Window() {
    close();
    deliver();
}

void Lv2Window::close() {
    if (ui_) descriptor_.cleanup(std::exchange(ui_, nullptr));
}

void Lv2Window::write(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer) {
    ++written;
    if (format == Lv2Host::urid(LV2_ATOM__eventTransfer)) {
        const auto& atom = *static_cast<const LV2_Atom*>(buffer);
        if (host_.ports()[port].symbol == "control" && size >= sizeof atom + atom.size && !loses()) {
            events_.push_back(copyOf(atom));
        }
    } else if (format == 0 && size == sizeof(float)) {
        const float value = *static_cast<const float*>(buffer);
        values_.push_back({offers_.lag, port, value});
        host_.noteEdit({FormatHost::Edit::Kind::Value, static_cast<int>(port), static_cast<double>(value)});
    }
}

void Lv2Window::deliver() {
    while (!values_.empty() && values_.front().blocks == 0) {
        host_.ports()[values_.front().port].value = values_.front().value;
        shown_[values_.front().port] = values_.front().value;
        values_.pop_front();
    }
    for (Value& value : values_) --value.blocks;
    std::size_t taken = 0;
    while (taken < events_.size() && host_.addEvent(atomIn(events_[taken]))) ++taken;
    events_.erase(events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(taken));
}

void Lv2Window::portEvent(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer) {
    descriptor_.port_event(ui_, port, size, format, buffer);
}

void Lv2Window::collect() {
    LV2_ATOM_SEQUENCE_FOREACH(&host_.notified(), event) {
        const auto& object = reinterpret_cast<const LV2_Atom_Object&>(event->body);
        if (object.body.otype == Lv2Host::urid("urn:quillmark:vanta2#ToInterface")) {
            heard.push_back(copyOf(event->body));
        }
    }
}

void Lv2Window::idle() {
    extension<LV2UI_Idle_Interface>(LV2_UI__idleInterface)->idle(ui_);
}

void Lv2Window::follow() {
    std::uint32_t notifications = 0;
    for (std::uint32_t i = 0; i < host_.ports().size(); ++i) {
        const Lv2Host::Port& port = host_.ports()[i];
        if (port.symbol == "notify") notifications = i;
        if (!port.isControl || !port.isInput || shown_[i] == port.value) continue;
        shown_[i] = port.value;
        portEvent(i, sizeof(float), 0, &port.value);
    }
    for (; followed_ < heard.size(); ++followed_) {
        const LV2_Atom& atom = atomIn(heard[followed_]);
        if (loses()) continue;
        const auto size = static_cast<std::uint32_t>(sizeof atom + atom.size);
        portEvent(notifications, size, Lv2Host::urid(LV2_ATOM__eventTransfer), &atom);
    }
    idle();
}

}  // namespace vanta::test
