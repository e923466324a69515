#pragma once

#include <lv2/ui/ui.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "tests/host/lv2/lv2_host.hpp"

namespace vanta::test {

/// What a host does for a window.
struct Lv2WindowOffers {
    bool instance = false;   ///< its handle
    void* parent = nullptr;  ///< a window
    float scale = 0.0f;
    int lag = 0;  ///< blocks that a value takes from the window to its port
};

/// The window of an instance, as hosts keep it: values go to ports, events to blocks, and back.
class Lv2Window {
public:
    Lv2Window(Lv2Host& of, const LV2UI_Descriptor& descriptor, Lv2WindowOffers offers = {});
    ~Lv2Window();
    Lv2Window(const Lv2Window&) = delete;
    Lv2Window& operator=(const Lv2Window&) = delete;

    bool isOpen() const { return ui_ != nullptr; }
    /// What it has written until then can still be delivered.
    void close();
    LV2UI_Widget widget() const { return widget_; }
    template <typename Extension>
    const Extension* extension(const char* uri) const {
        return static_cast<const Extension*>(descriptor_.extension_data(uri));
    }
    LV2UI_Handle handle() const { return ui_; }

    /// Before a block: what the window has written goes to the ports.
    void deliver();
    /// After a block: what it has said, for the window.
    void collect();
    /// The window hears of it, and has its turn.
    void follow();
    void idle();
    void portEvent(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer);

    std::vector<std::pair<std::uint32_t, bool>> touches;
    std::vector<std::vector<std::uint64_t>> heard;  ///< events that came out for it
    int written = 0;                                ///< events and values from the window
    /// Whether an event gets lost on its way.
    std::function<bool()> loses = [] { return false; };

private:
    struct Value {
        int blocks;
        std::uint32_t port;
        float value;
    };

    void write(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer);

    Lv2Host& host_;
    const LV2UI_Descriptor& descriptor_;
    const Lv2WindowOffers offers_;
    LV2UI_Touch touch_{};
    LV2UI_Resize resize_{};
    LV2UI_Port_Map portMap_{};
    std::deque<Value> values_;
    std::vector<std::vector<std::uint64_t>> events_;
    std::size_t followed_ = 0;  ///< of what was heard
    std::vector<float> shown_;  ///< of the ports, as the window knows them
    LV2UI_Widget widget_ = nullptr;
    LV2UI_Handle ui_ = nullptr;
};

}  // namespace vanta::test
