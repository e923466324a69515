#pragma once

namespace vanta {

/// From now on interrupt, termination and hang-up only set a mark, so that work can stop where nothing is
/// left half done; and a full disk quota or a closed pipe fails the write instead of ending the process.
void watchForInterrupts();
/// Whether the mark is set.
bool interruptRequested();

}  // namespace vanta
