#pragma once

#include <algorithm>
#include <memory>

#include "host/common/embedded_view.hpp"

namespace vanta::test {

/// A view that draws nothing and notes down what happens to it.
struct FakeView final : EmbeddedView {
    struct Log {
        NativeWindow parent = 0;
        EmbeddedViewHost* host = nullptr;
        double scale = 0.0;
        ViewSize size{600, 400};
        bool isVisible = false;
        int idles = 0;
        int alive = 0;
    };
    static EmbeddedViewFactory factory(Log& log) {
        return [&log](HostedPlugin&, NativeWindow parent, EmbeddedViewHost& host) {
            log.parent = parent;
            log.host = &host;
            return std::make_unique<FakeView>(log);
        };
    }

    explicit FakeView(Log& to) : log(to) { ++log.alive; }
    ~FakeView() override { --log.alive; }
    NativeWindow window() const override { return 5; }
    void setVisible(bool visible) override { log.isVisible = visible; }
    ViewSize size() const override { return log.size; }
    bool isResizable() const override { return true; }
    ViewSize nearestSize(ViewSize wanted) const override { return {std::max(wanted.width, 300), 200}; }
    void resize(ViewSize size) override { log.size = size; }
    void setScale(double scale) override { log.scale = scale; }
    void idle() override { ++log.idles; }
    Log& log;
};

}  // namespace vanta::test
