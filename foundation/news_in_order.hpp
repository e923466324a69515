#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

namespace vanta {

/// Tells news of tasks that run side by side in the order of the tasks, as early as that allows.
class NewsInOrder {
public:
    explicit NewsInOrder(std::size_t tasks) : waiting_(tasks), ended_(tasks) {}

    /// `tell` runs at once, or on whatever thread ends the last task before this one; never two at a time.
    void add(std::size_t task, std::function<void()> tell);
    /// The task has no more news.
    void end(std::size_t task);

private:
    std::mutex mutex_;
    std::vector<std::vector<std::function<void()>>> waiting_;
    std::vector<bool> ended_;
    std::size_t turn_ = 0;  ///< of the task whose news need not wait
};

}  // namespace vanta
