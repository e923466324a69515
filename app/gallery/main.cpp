#include <cstdio>
#include <exception>

#include "app/gallery/gallery_page.hpp"
#include "app/gallery/options.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/offscreen/png_writer.hpp"

int main(int argc, char** argv) {
    using namespace vanta;
    try {
        const gallery::Options options = gallery::parseOptions({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(gallery::kUsage, stdout);
            return 0;
        }
        gui::OffscreenInterface ui(gallery::kPageWidth, gallery::kPageHeight);
        ui.deviceBacking().setScale(options.scale);
        gallery::buildGallery(ui, false);
        ui.drainRelay();
        gui::writePng(*ui.picture(), options.screenshot);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vanta-gallery: %s\n", error.what());
        return 1;
    }
}
