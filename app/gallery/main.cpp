#include <cstdio>
#include <exception>

#include "app/gallery/gallery_page.hpp"
#include "app/gallery/options.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/offscreen/png_writer.hpp"
#include "gui/x11/x11_interface.hpp"

namespace vanta::gallery {
namespace {

void writeScreenshot(const Options& options) {
    gui::OffscreenInterface ui(kPageWidth, kPageHeight);
    ui.deviceBacking().setScale(options.scale > 0.0f ? options.scale : 1.0f);
    buildGallery(ui, false);
    ui.drainRelay();
    gui::writePng(*ui.picture(), options.screenshot);
}

void runWindow(const Options& options) {
    constexpr int kSoftware = 0;
    constexpr int kOpenGlOnAnyRenderer = 0x11;
    gui::X11Settings settings;
    settings.title = "Vanta Gallery";
    settings.width = kPageWidth;
    settings.height = kPageHeight;
    settings.scale = options.scale;
    settings.acceleration = options.openGl ? kOpenGlOnAnyRenderer : kSoftware;
    gui::X11Interface ui(settings);
    buildGallery(ui, true);
    ui.show();
    ui.run();
}

}  // namespace
}  // namespace vanta::gallery

int main(int argc, char** argv) {
    using namespace vanta::gallery;
    try {
        const Options options = parseOptions({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(kUsage, stdout);
        } else if (!options.screenshot.empty()) {
            writeScreenshot(options);
        } else {
            runWindow(options);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vanta-gallery: %s\n", error.what());
        return 1;
    }
}
