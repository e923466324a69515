#include "foundation/news_in_order.hpp"

namespace vanta {

void NewsInOrder::add(std::size_t task, std::function<void()> tell) {
    const std::scoped_lock lock(mutex_);
    if (task == turn_) return tell();
    waiting_[task].push_back(std::move(tell));
}

void NewsInOrder::end(std::size_t task) {
    const std::scoped_lock lock(mutex_);
    ended_[task] = true;
    while (turn_ < ended_.size() && ended_[turn_]) {
        if (++turn_ == ended_.size()) return;
        for (const auto& tell : waiting_[turn_]) tell();
        waiting_[turn_].clear();
    }
}

}  // namespace vanta
