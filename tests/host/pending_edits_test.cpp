#include "host/common/pending_edits.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using Edit = HostCallbacks::Edit;

/// A letter for each edit: b, e, or the value's digit.
std::string written(Edit edit, float value) {
    if (edit == Edit::Value) return std::to_string(static_cast<int>(value));
    return edit == Edit::Begin ? "b" : "e";
}

void add(PendingEdits& edits, const std::string& letters) {
    for (const char letter : letters) {
        const Edit edit = letter == 'b' ? Edit::Begin : letter == 'e' ? Edit::End : Edit::Value;
        edits.add(0, edit, edit == Edit::Value ? static_cast<float>(letter - '0') : 0.0f);
    }
}

/// What arrives while the host takes no more than `room`.
std::string taken(PendingEdits& edits, int room = 1000) {
    std::string all;
    edits.take([&](int, Edit edit, float value) {
        if (room-- <= 0) return false;
        all += written(edit, value);
        return true;
    });
    return all;
}

TEST(PendingEdits, KeepAllGesturesAndTheLastValueInTheirOrder) {
    PendingEdits edits(1);
    const auto arrives = [&](const std::string& letters) {
        add(edits, letters);
        return taken(edits);
    };
    EXPECT_EQ(arrives("b12"), "b2");
    EXPECT_EQ(arrives("3eb"), "3eb") << "an end and a begin within a block";
    EXPECT_EQ(arrives("4eb5e6"), "ebe6");
    EXPECT_EQ(arrives("7b8e"), "b8e");
    EXPECT_EQ(arrives("b9ebe"), "b9ebe");
    EXPECT_EQ(arrives("eeb1b"), "b1") << "nothing new is told twice";
    EXPECT_EQ(arrives("2e3"), "e3");
    add(edits, "b4");
    edits.forgetValues();
    EXPECT_EQ(taken(edits), "b");
}

TEST(PendingEdits, LoseNothingToAHostWithLittleRoom) {
    PendingEdits edits(1);
    add(edits, "b5eb");
    EXPECT_EQ(taken(edits, 1), "b");
    EXPECT_EQ(taken(edits, 1), "5");
    add(edits, "7e");
    EXPECT_EQ(taken(edits, 0), "");
    EXPECT_EQ(taken(edits, 2), "eb");
    int value = -1;
    edits.takeValues([&](int, float told) { return value = static_cast<int>(told), false; });
    EXPECT_EQ(value, 7);
    EXPECT_EQ(taken(edits), "7e");
    EXPECT_EQ(taken(edits), "");
}

TEST(PendingEdits, BalanceWhileOneThreadAddsAndAnotherTakes) {
    constexpr int kGestures = 8000;
    PendingEdits edits(2);
    std::atomic<bool> done{false};
    int begins = 0, ends = 0, wrong = 0, calls = 0;
    float last = 0.0f;
    const auto take = [&] {
        edits.take([&](int, Edit edit, float value) {
            if (++calls % 3 == 0) return false;
            begins += edit == Edit::Begin;
            ends += edit == Edit::End;
            if (edit == Edit::Value) last = value;
            wrong += begins - ends < 0 || begins - ends > 1;
            return true;
        });
    };
    std::thread taker([&] {
        while (!done) take();
    });
    for (int i = 1; i <= kGestures; ++i) {
        edits.add(1, Edit::Begin, 0.0f);
        edits.add(1, Edit::Value, static_cast<float>(i));
        edits.add(1, Edit::End, 0.0f);
    }
    done = true;
    taker.join();
    for (int i = 0; i < 3 * kGestures; ++i) take();
    EXPECT_EQ(begins, kGestures);
    EXPECT_EQ(ends, kGestures);
    EXPECT_EQ(last, static_cast<float>(kGestures));
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace vanta::test
