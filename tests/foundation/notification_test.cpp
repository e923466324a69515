#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <utility>

#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "foundation/updated_object.hpp"

namespace vanta::test {
namespace {

using Names = std::vector<std::string>;

/// A listener with a name that writes down who was called.
struct Listener {
    Listener(std::string listenerName, Names& calls) : name(std::move(listenerName)), log(calls) {}
    void hear(void* by) {
        log.push_back(name);
        sender = by;
        // Called as a copy, so that a test may replace it from within.
        if (const auto next = then) next();
    }
    void hearOther(void*) { log.push_back(name + "'"); }
    std::string name;
    Names& log;
    void* sender = nullptr;
    std::function<void()> then;
};

TEST(NotifyEvent, CallsThePrimaryFirstAndTheOthersFromTheLast) {
    Names log;
    Listener p("p", log), a("a", log), b("b", log);
    NotifyEvent event;
    event.raise(nullptr);
    event.addHandler(&a, &Listener::hear);
    event.addHandler(&b, &Listener::hear);
    event.addHandler(&a, &Listener::hear);
    event.addHandler(&a, &Listener::hearOther);
    event.setHandler(&p, &Listener::hear);
    int sender = 0;
    event.raise(&sender);
    EXPECT_EQ(log, (Names{"p", "a'", "a", "b", "a"}));
    EXPECT_EQ(a.sender, &sender);
    // The last match goes, and never the primary.
    event.removeHandler(&p, &Listener::hear);
    event.removeHandler(&b, &Listener::hearOther);
    event.removeHandler(&a, &Listener::hear);
    log.clear();
    event.raise(nullptr);
    EXPECT_EQ(log, (Names{"p", "a'", "b", "a"}));
}

TEST(NotifyEvent, LetsHandlersRemoveThemselvesAndOthersWhileItIsRaised) {
    Names log;
    Listener a("a", log), b("b", log), c("c", log);
    NotifyEvent event;
    for (Listener* listener : {&a, &b, &c}) event.addHandler(listener, &Listener::hear);
    c.then = [&] {
        event.removeHandler(&c, &Listener::hear);
        event.removeHandler(&b, &Listener::hear);
        c.then = nullptr;
    };
    event.raise(nullptr);
    EXPECT_EQ(log, (Names{"c", "a"}));
    log.clear();
    a.then = [&] { event.addHandler(&b, &Listener::hear); };
    event.raise(nullptr);
    EXPECT_EQ(log, (Names{"a"})) << "a handler that is added in a raise waits for the next";
    a.then = nullptr;
    event.raise(nullptr);
    EXPECT_EQ(log, (Names{"a", "b", "a"}));
}

/// An object with two events, as the model has them.
struct Model : UpdatedObject {
    void update() override {
        EXPECT_FALSE(running) << "update() recurses";
        running = true;
        ++updates;
        UpdatedObject::update();
        if (during) during();
        running = false;
    }
    NotifyEvent early;
    NotifyEvent late;
    UpdateNotification earlyNotification{*this, early, this};
    UpdateNotification lateNotification{*this, late, this};
    std::function<void()> during;
    int updates = 0;
    bool running = false;
};

TEST(UpdatedObject, UpdatesOnceAtTheEndOfTheOutermostBlock) {
    Model model;
    {
        const UpdateBlock outer(model);
        {
            const UpdateBlock inner(model);
            model.requestUpdate();
        }
        model.requestUpdate();
        EXPECT_EQ(model.updates, 0);
    }
    EXPECT_EQ(model.updates, 1);
    { const UpdateBlock nothingAsked(model); }
    EXPECT_EQ(model.updates, 1);
    model.requestUpdate();
    EXPECT_EQ(model.updates, 2);
}

TEST(UpdatedObject, NeitherRecursesNorRepeatsForARequestInsideUpdate) {
    Model model;
    model.during = [&] {
        const UpdateBlock block(model);
        model.requestUpdate();
    };
    model.requestUpdate();
    model.requestUpdate();
    EXPECT_EQ(model.updates, 2);
}

TEST(UpdatedObject, RaisesEachSignalledEventOnceInTheirOrder) {
    Names log;
    Listener early("early", log), late("late", log);
    Model model;
    model.early.addHandler(&early, &Listener::hear);
    model.late.addHandler(&late, &Listener::hear);
    {
        const UpdateBlock block(model);
        model.lateNotification.signal();
        model.earlyNotification.signal();
        model.lateNotification.signal();
    }
    EXPECT_EQ(log, (Names{"early", "late"}));
    EXPECT_EQ(late.sender, &model);
    // What a handler signals follows in one further pass.
    late.then = [&] { model.earlyNotification.signal(); };
    model.lateNotification.signal();
    EXPECT_EQ(log, (Names{"early", "late", "late", "early"}));
    // Two that signal each other do not hold the thread.
    log.clear();
    early.then = [&] { model.lateNotification.signal(); };
    model.lateNotification.signal();
    EXPECT_LE(log.size(), 4u);
}

struct Forwarders : testing::Test {
    EventForwarder& add(Listener& listener) {
        auto made = std::make_unique<EventForwarder>(
            list, std::make_unique<NotifyEvent::HandlerImpl<Listener>>(&listener, &Listener::hear));
        EventForwarder& added = *made;
        list.add(std::move(made));
        return added;
    }
    Names log;
    EventForwarderList list;
    Listener a{"a", log}, b{"b", log};
    EventForwarder &toA = add(a), &toB = add(b);
};

TEST_F(Forwarders, CoalesceTriggersUntilDelivery) {
    int first = 0, second = 0;
    {
        const UpdateBlock block(list);
        toB.trigger(&first);
        toA.trigger(&first);
        toB.trigger(&second);
        toA.trigger(&first);
        EXPECT_TRUE(log.empty());
    }
    EXPECT_EQ(log, (Names{"b", "a"})) << "in the order of the triggers";
    EXPECT_EQ(a.sender, &first);
    EXPECT_EQ(b.sender, nullptr) << "several senders";
}

TEST_F(Forwarders, NeverLoseATriggerDuringDelivery) {
    a.then = [&] { toA.trigger(nullptr); };
    toA.trigger(nullptr);
    EXPECT_EQ(log, (Names{"a"})) << "from its own handler it is part of the delivery";

    // Whom b triggers was delivered earlier in the pass, and follows in the next.
    a.then = nullptr;
    b.then = [&] { toA.trigger(nullptr); };
    {
        const UpdateBlock block(list);
        toA.trigger(nullptr);
        toB.trigger(nullptr);
    }
    EXPECT_EQ(log, (Names{"a", "a", "b", "a"}));

    // Two that trigger each other end, and both still work afterwards.
    log.clear();
    a.then = [&] { toB.trigger(nullptr); };
    toA.trigger(nullptr);
    EXPECT_LE(log.size(), 4u);
    a.then = b.then = nullptr;
    toA.trigger(nullptr);
    toB.trigger(nullptr);
    log.clear();
    toA.trigger(nullptr);
    toB.trigger(nullptr);
    EXPECT_EQ(log, (Names{"a", "b"}));
}

// --- Property ---

/// Counts what it hears, and sees the new value when it does.
template <typename P>
struct Owner : PropertyOwner {
    void propertyChanged(AbstractProperty& changed) override {
        ++heard;
        seen = static_cast<P&>(changed).value();
    }
    int heard = 0;
    std::decay_t<decltype(std::declval<P>().value())> seen{};
};

enum class Shape { Triangle, Sine };

/// Assigns a new value, the same again, and the first one.
template <typename T>
void expectOnlyRealChanges(T first, T second) {
    Owner<Property<T>> owner;
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
    Owner<LimitedProperty<float>> owner;
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
