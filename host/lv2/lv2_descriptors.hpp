#pragma once

#include <lv2/core/lv2.h>

#include <cstdint>

namespace vanta {

/// Our plug-ins as a module offers them, in the order of lv2Layouts; null after the last, or if memory runs
/// out. Nothing that is called through them throws.
const LV2_Descriptor* lv2Descriptor(std::uint32_t index);

}  // namespace vanta
