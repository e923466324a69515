#include "foundation/property.hpp"

#include <gtest/gtest.h>

namespace vanta::test {
namespace {

/// Counts what it hears, and sees the new value when it does.
template <typename T>
struct Owner : PropertyOwner {
    void propertyChanged(AbstractProperty& changed) override {
        ++heard;
        seen = static_cast<Property<T>&>(changed).value();
    }
    int heard = 0;
    T seen{};
};

enum class Shape { Triangle, Sine };

/// Assigns a new value, the same again, and the first one.
template <typename T>
void expectOnlyRealChanges(T first, T second) {
    Owner<T> owner;
    Property<T> property(&owner, first);
    property.assign(first, nullptr);
    EXPECT_EQ(owner.heard, 0) << "neither construction nor the same value is a change";
    property.assign(second, &owner);
    EXPECT_EQ(owner.seen, second);
    property = second;
    EXPECT_EQ(owner.heard, 1);
    property = first;
    EXPECT_EQ(owner.heard, 2);
}

TEST(Property, TellsOfRealChangesOnlyWhateverItsType) {
    expectOnlyRealChanges<bool>(false, true);
    expectOnlyRealChanges<float>(0.0f, 1e-30f);
    expectOnlyRealChanges<std::string>("a", "b");
    expectOnlyRealChanges<Shape>(Shape::Triangle, Shape::Sine);
    expectOnlyRealChanges<std::vector<float>>({1.0f, 2.0f}, {1.0f, 3.0f});
}

TEST(LimitedProperty, ClampsBeforeItComparesAndOnAssignmentOnly) {
    Owner<float> owner;
    LimitedProperty<float> property(&owner, -10.0f, 10.0f, 10.0f);
    property = 50.0f;
    EXPECT_EQ(owner.heard, 0);
    property = -50.0f;
    EXPECT_EQ(property, -10.0f);
    EXPECT_EQ(owner.heard, 1);
    property = 8.0f;
    property.maximum = 5.0f;
    EXPECT_EQ(property, 8.0f) << "limits that move leave the value alone";
    property = 8.0f;
    EXPECT_EQ(property, 5.0f);
}

TEST(ValueAssignableConverter, HandsOnValueAndSender) {
    struct Target : ValueAssignable<int> {
        void assign(int assigned, void* by) override { value = assigned, sender = by; }
        int value = -1;
        void* sender = nullptr;
    } target;
    ValueAssignableConverter<bool, int> converter(target);
    converter.assign(true, &converter);
    EXPECT_EQ(target.value, 1);
    EXPECT_EQ(target.sender, &converter);
}

}  // namespace
}  // namespace vanta::test
