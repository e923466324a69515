#pragma once

#include <lv2/core/lv2.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <string>

#include "host/lv2/lv2_port_change_request.hpp"
#include "host/lv2/lv2_uris.hpp"

namespace vanta {

/// What a host offers to an instance. It must map URIs; all else may be missing.
struct Lv2Features {
    /// `list` ends with null, and may be null.
    explicit Lv2Features(const LV2_Feature* const* list);

    const LV2_URID_Map* map;                   ///< null if missing
    const Lv2PortChangeRequest* portRequests;  ///< null if missing

    /// Samples, 0 if the host does not say. With the URIs of `map`.
    int largestBlock(const Lv2Uris& uris) const;

private:
    const void* options_;
};

/// What a host offers to an interface. The same holds; what is missing is null.
struct Lv2InterfaceFeatures {
    explicit Lv2InterfaceFeatures(const LV2_Feature* const* list);

    const LV2_URID_Map* map;
    LV2_Handle instance;  ///< of the plug-in, in the same process
    void* parent;         ///< a window
    const LV2UI_Resize* resize;
    const LV2UI_Touch* touch;
    const LV2UI_Port_Map* ports;
    const LV2UI_Port_Subscribe* subscribe;

    /// Pixels per point; 0 if the host does not say.
    double scale(const Lv2Uris& uris) const;
    /// Empty if the host does not say.
    std::string title(const Lv2Uris& uris) const;

private:
    const void* options_;
};

}  // namespace vanta
