#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {
namespace {

/// Calls `what(gui)` for a window that the host has created.
template <typename What>
bool withWindow(const clap_plugin_t* handle, What what) {
    return answer(handle, false,
                  [&](ClapPlugin& plugin) { return plugin.gui().isCreated() && what(plugin.gui()); });
}

ViewSize sizeOf(std::uint32_t width, std::uint32_t height) {
    return {static_cast<int>(width), static_cast<int>(height)};
}

bool tell(ViewSize size, std::uint32_t* width, std::uint32_t* height) {
    *width = static_cast<std::uint32_t>(size.width);
    *height = static_cast<std::uint32_t>(size.height);
    return true;
}

bool preferApi(const clap_plugin_t*, const char** api, bool* isFloating) {
    *api = CLAP_WINDOW_API_X11;
    *isFloating = false;
    return true;
}

bool setParent(const clap_plugin_t* handle, const clap_window_t* window) {
    return withWindow(handle, [=](ClapGui& gui) {
        return window && gui.supports(window->api, false) && gui.setParent(window->x11);
    });
}

bool setTransient(const clap_plugin_t* handle, const clap_window_t* window) {
    return withWindow(handle, [=](ClapGui& gui) {
        return window && gui.supports(window->api, true) && gui.setTransient(window->x11);
    });
}

/// Any size above the least, of any shape.
bool resizeHints(const clap_plugin_t* handle, clap_gui_resize_hints_t* hints) {
    return withWindow(handle, [=](ClapGui& gui) {
        const bool can = gui.isResizable();
        *hints = {can, can, false, 0, 0};
        return true;
    });
}

}  // namespace

const clap_plugin_gui_t kClapGuiTable{
    .is_api_supported =
        [](const clap_plugin_t* handle, const char* api, bool isFloating) {
            return answer(handle, false,
                          [=](ClapPlugin& plugin) { return plugin.gui().supports(api, isFloating); });
        },
    .get_preferred_api = preferApi,
    .create =
        [](const clap_plugin_t* handle, const char* api, bool isFloating) {
            return answer(handle, false,
                          [=](ClapPlugin& plugin) { return plugin.gui().create(api, isFloating); });
        },
    .destroy =
        [](const clap_plugin_t* handle) {
            withWindow(handle, [](ClapGui& gui) { return gui.destroy(), true; });
        },
    .set_scale =
        [](const clap_plugin_t* handle, double scale) {
            return withWindow(handle, [=](ClapGui& gui) { return gui.setScale(scale); });
        },
    .get_size =
        [](const clap_plugin_t* handle, std::uint32_t* width, std::uint32_t* height) {
            return withWindow(handle, [=](ClapGui& gui) { return tell(gui.size(), width, height); });
        },
    .can_resize =
        [](const clap_plugin_t* handle) {
            return withWindow(handle, [](ClapGui& gui) { return gui.isResizable(); });
        },
    .get_resize_hints = resizeHints,
    .adjust_size =
        [](const clap_plugin_t* handle, std::uint32_t* width, std::uint32_t* height) {
            return withWindow(handle, [=](ClapGui& gui) {
                return tell(gui.nearestSize(sizeOf(*width, *height)), width, height);
            });
        },
    .set_size =
        [](const clap_plugin_t* handle, std::uint32_t width, std::uint32_t height) {
            return withWindow(handle, [=](ClapGui& gui) { return gui.resize(sizeOf(width, height)); });
        },
    .set_parent = setParent,
    .set_transient = setTransient,
    .suggest_title =
        [](const clap_plugin_t* handle, const char* title) {
            withWindow(handle, [=](ClapGui& gui) { return gui.suggestTitle(title), true; });
        },
    .show =
        [](const clap_plugin_t* handle) {
            return withWindow(handle, [](ClapGui& gui) { return gui.setVisible(true); });
        },
    .hide =
        [](const clap_plugin_t* handle) {
            return withWindow(handle, [](ClapGui& gui) { return gui.setVisible(false); });
        },
};

const clap_plugin_timer_support_t kClapTimerTable{
    .on_timer =
        [](const clap_plugin_t* handle, clap_id timer) {
            withWindow(handle, [=](ClapGui& gui) { return gui.onTimer(timer), true; });
        },
};

const ClapPluginPosixFdSupport kClapPosixFdTable{
    .on_fd =
        [](const clap_plugin_t* handle, int fd, std::uint32_t) {
            withWindow(handle, [=](ClapGui& gui) { return gui.onDescriptor(fd), true; });
        },
};

}  // namespace vanta
