#include "foundation/property.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace vanta {
namespace {

struct Owner : PropertyOwner {
    void propertyChanged(AbstractProperty& property) override {
        heard.push_back(&property);
        if (onChange) onChange();
    }
    std::vector<AbstractProperty*> heard;
    std::function<void()> onChange;
};

enum class Shape { Triangle, Sine };

/// Assigns a new value, the same again, and the first one.
template <typename T>
void expectOnlyRealChanges(T first, T second) {
    Owner owner;
    Property<T> property(&owner, first);
    EXPECT_TRUE(owner.heard.empty()) << "construction is silent";
    property.assign(first, nullptr);
    EXPECT_TRUE(owner.heard.empty());
    property.assign(second, &owner);
    EXPECT_EQ(property.value(), second);
    property = second;
    EXPECT_EQ(owner.heard.size(), 1u);
    EXPECT_EQ(owner.heard.front(), &property);
    property = first;
    EXPECT_EQ(owner.heard.size(), 2u);
}

TEST(Property, TellsOfRealChangesOnlyWhateverItsType) {
    expectOnlyRealChanges<bool>(false, true);
    expectOnlyRealChanges<int>(-1, 1);
    expectOnlyRealChanges<float>(0.0f, 1e-30f);
    expectOnlyRealChanges<std::string>("a", "b");
    expectOnlyRealChanges<Shape>(Shape::Triangle, Shape::Sine);
    expectOnlyRealChanges<std::vector<float>>({1.0f, 2.0f}, {1.0f, 2.0f, 3.0f});
    expectOnlyRealChanges<std::vector<float>>({1.0f, 2.0f}, {1.0f, 3.0f});
}

TEST(Property, TakesEveryNanAsAChange) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Owner owner;
    Property<float> single(&owner, nan);
    single = nan;
    single = nan;
    EXPECT_EQ(owner.heard.size(), 2u);
    VectorProperty<float> several(&owner, {nan});
    several = std::vector<float>{nan};
    EXPECT_EQ(owner.heard.size(), 3u);
}

TEST(Property, HasStoredTheValueWhenItsOwnerHears) {
    Owner owner;
    Property<int> property(&owner, 1);
    int seen = 0;
    owner.onChange = [&] { seen = property; };
    property = 5;
    EXPECT_EQ(seen, 5);
    Property<int> orphan(nullptr, 1);
    orphan = 2;
    EXPECT_EQ(orphan, 2);
}

TEST(LimitedProperty, ClampsBeforeItCompares) {
    Owner owner;
    LimitedProperty<int> property(&owner, -10, 10, 10);
    property = 50;
    EXPECT_TRUE(owner.heard.empty());
    property = -50;
    EXPECT_EQ(property, -10);
    EXPECT_EQ(owner.heard.size(), 1u);
}

TEST(LimitedProperty, ReclampsOnlyOnTheNextAssignment) {
    Owner owner;
    LimitedProperty<float> property(&owner, 0.0f, 10.0f, 8.0f);
    property.maximum = 5.0f;
    EXPECT_EQ(property, 8.0f);
    EXPECT_TRUE(owner.heard.empty());
    property = 8.0f;
    EXPECT_EQ(property, 5.0f);
    EXPECT_EQ(owner.heard.size(), 1u);
}

TEST(LimitedProperty, LetsTheMinimumWinBelowItAndNanThrough) {
    LimitedProperty<float> property(nullptr, 5.0f, 1.0f, 0.0f);
    property = 3.0f;
    EXPECT_EQ(property, 5.0f);
    property = 7.0f;
    EXPECT_EQ(property, 1.0f);
    property = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(property.value()));
}

TEST(ValueAssignableConverter, HandsOnValueAndSender) {
    struct Target : ValueAssignable<int> {
        void assign(int assigned, void* by) override {
            value = assigned;
            sender = by;
        }
        int value = -1;
        void* sender = nullptr;
    } target;
    std::unique_ptr<ManagedObject> kept = std::make_unique<ValueAssignableConverter<bool, int>>(target);
    auto& converter = dynamic_cast<ValueAssignable<bool>&>(*kept);
    converter.assign(true, &kept);
    EXPECT_EQ(target.value, 1);
    EXPECT_EQ(target.sender, &kept);
    converter.assign(false, nullptr);
    EXPECT_EQ(target.value, 0);
}

}  // namespace
}  // namespace vanta
