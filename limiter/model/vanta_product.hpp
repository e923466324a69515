#pragma once

#include "plugin/settings/plugin_settings.hpp"
#include "plugin/settings/product.hpp"

namespace vanta {

const Product& vantaProduct();

/// The sizes of the limiter's interface.
InterfaceSizes vantaInterfaceSizes();

}  // namespace vanta
