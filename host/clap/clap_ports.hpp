#pragma once

#include "host/common/speakers.hpp"

namespace vanta {

/// CLAP's number of a speaker. The channels of a port stand in its rising order.
int clapSpeaker(Speaker speaker);

}  // namespace vanta
