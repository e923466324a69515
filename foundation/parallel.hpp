#pragma once

#include <cstddef>
#include <functional>

namespace vanta {

/// Calls act(0) to act(count - 1), each once, begun in this order, up to `threads` of them at a time. Returns
/// when all have ended. What throws keeps those from beginning that have not; of several exceptions the one
/// of the lowest number is thrown on.
void inParallel(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& act);

}  // namespace vanta
