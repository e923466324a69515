#pragma once

namespace vanta {

/// From now on the signal USR1, by which session managers ask a client of JACK to save, only sets a mark.
void watchForSaveRequests();
/// Whether the mark was set. It is not any more.
bool takeSaveRequest();

}  // namespace vanta
