#include "gui/desktop/portal_request.hpp"

#include <gio/gio.h>

#include <fmt/format.h>

namespace vanta::gui {
namespace {

constexpr guint32 kGlobPattern = 0;

void addOption(GVariantBuilder& options, const char* name, GVariant* value) {
    g_variant_builder_add(&options, "{sv}", name, value);
}

GVariant* validText(const std::string& text) {
    return g_variant_new_take_string(g_utf8_make_valid(text.c_str(), static_cast<gssize>(text.size())));
}

GVariant* filtersOf(const FileQuestion& question) {
    GVariantBuilder all;
    g_variant_builder_init(&all, G_VARIANT_TYPE("a(sa(us))"));
    for (const FileFilter& filter : question.filters) {
        g_variant_builder_open(&all, G_VARIANT_TYPE("(sa(us))"));
        g_variant_builder_add_value(&all, validText(filter.name));
        g_variant_builder_open(&all, G_VARIANT_TYPE("a(us)"));
        for (const std::string& pattern : filter.patterns) {
            g_variant_builder_open(&all, G_VARIANT_TYPE("(us)"));
            g_variant_builder_add(&all, "u", kGlobPattern);
            g_variant_builder_add_value(&all, validText(pattern));
            g_variant_builder_close(&all);
        }
        g_variant_builder_close(&all);
        g_variant_builder_close(&all);
    }
    return g_variant_builder_end(&all);
}

void addStart(GVariantBuilder& options, const FileQuestion& question) {
    const StartingPlace place = startingPlace(question.path);
    // Paths are bytes that end with a zero; names are text.
    if (!place.folder.empty())
        addOption(options, "current_folder", g_variant_new_bytestring(place.folder.c_str()));
    if (question.kind != FileQuestion::Kind::Save || place.name.empty()) return;
    const std::string file = place.folder + '/' + place.name;
    if (g_file_test(file.c_str(), G_FILE_TEST_EXISTS))
        addOption(options, "current_file", g_variant_new_bytestring(file.c_str()));
    addOption(options, "current_name",
              g_variant_new_take_string(g_filename_display_name(place.name.c_str())));
}

}  // namespace

const char* portalMethod(const FileQuestion& question) {
    return question.kind == FileQuestion::Kind::Save ? "SaveFile" : "OpenFile";
}

GVariant* portalArguments(const FileQuestion& question, const std::string& token) {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    addOption(options, "handle_token", g_variant_new_string(token.c_str()));
    addOption(options, "modal", g_variant_new_boolean(TRUE));
    if (question.kind == FileQuestion::Kind::Folder)
        addOption(options, "directory", g_variant_new_boolean(TRUE));
    if (!question.filters.empty()) addOption(options, "filters", filtersOf(question));
    addStart(options, question);
    const std::string window = question.window == 0 ? "" : fmt::format("x11:{:x}", question.window);
    return g_variant_new("(s@sa{sv})", window.c_str(), validText(question.title), &options);
}

std::string pathOf(GVariant* results) {
    std::string path;
    GVariant* uris = g_variant_lookup_value(results, "uris", G_VARIANT_TYPE_STRING_ARRAY);
    if (!uris) return path;
    if (g_variant_n_children(uris) > 0) {
        const gchar* uri = nullptr;
        g_variant_get_child(uris, 0, "&s", &uri);
        gchar* file = g_filename_from_uri(uri, nullptr, nullptr);
        if (file) path = file;
        g_free(file);
    }
    g_variant_unref(uris);
    return path;
}

}  // namespace vanta::gui
