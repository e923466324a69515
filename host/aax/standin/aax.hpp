#pragma once

// All that a plug-in includes of the interface. A build against the vendor's own library replaces this file:
// see the README.

#include "aax_chunk_data_parser.hpp"
#include "aax_description.hpp"
#include "aax_effect_gui.hpp"
#include "aax_effect_parameters.hpp"
#include "aax_host_interfaces.hpp"
#include "aax_host_processor.hpp"
#include "aax_packet_dispatcher.hpp"
#include "aax_parameter.hpp"
#include "aax_plugin_interfaces.hpp"
#include "aax_types.hpp"
#include "acf.hpp"
