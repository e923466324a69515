#include "interface/binding/link_chains.hpp"

#include <algorithm>

namespace vanta::interface {

std::vector<int> LinkChains::chainOf(int parameter) const {
    while (row(parameter).previous >= 0) parameter = row(parameter).previous;
    std::vector<int> chain;
    for (int member = parameter; member >= 0; member = row(member).next) chain.push_back(member);
    return chain;
}

void LinkChains::link(int a, int b) {
    const std::vector<int> first = chainOf(a);
    if (std::find(first.begin(), first.end(), b) != first.end()) return;
    const int head = chainOf(b).front();
    row(first.back()).next = head;
    row(head).previous = first.back();
}

void LinkChains::leave(int parameter) {
    const Row left = row(parameter);
    if (left.previous >= 0) row(left.previous).next = left.next;
    if (left.next >= 0) row(left.next).previous = left.previous;
    row(parameter) = {};
}

}  // namespace vanta::interface
