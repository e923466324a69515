#include <gtest/gtest.h>

#include <functional>

#include "foundation/notify_event.hpp"
#include "foundation/updated_object.hpp"

namespace vanta {
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
    event.setHandler(&p, &Listener::hear);
    int sender = 0;
    event.raise(&sender);
    EXPECT_EQ(log, (Names{"p", "b", "a"}));
    EXPECT_EQ(a.sender, &sender);
}

TEST(NotifyEvent, RemovesTheLastMatchAndNeverThePrimary) {
    Names log;
    Listener p("p", log), a("a", log), b("b", log);
    NotifyEvent event;
    event.setHandler(&p, &Listener::hear);
    event.addHandler(&a, &Listener::hear);
    event.addHandler(&b, &Listener::hear);
    event.addHandler(&a, &Listener::hear);
    event.addHandler(&a, &Listener::hearOther);
    event.removeHandler(&p, &Listener::hear);
    event.removeHandler(&b, &Listener::hearOther);
    event.removeHandler(&a, &Listener::hear);
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

TEST(NotifyEvent, DeletesThePrimaryFirstThenTheOthersInOrder) {
    struct Mortal : NotifyEvent::Handler {
        Mortal(std::string handlerName, Names& deaths) : name(std::move(handlerName)), log(deaths) {}
        ~Mortal() override { log.push_back(name); }
        void invoke(void*) override {}
        bool equals(const NotifyEvent::HandlerKey&) const override { return false; }
        std::string name;
        Names& log;
    };
    Names log;
    {
        NotifyEvent event;
        event.addHandler(std::make_unique<Mortal>("a", log));
        event.addHandler(std::make_unique<Mortal>("b", log));
        event.setHandler(std::make_unique<Mortal>("old", log));
        event.setHandler(std::make_unique<Mortal>("p", log));
    }
    EXPECT_EQ(log, (Names{"old", "p", "a", "b"}));
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
    model.lateNotification.signal();
    EXPECT_EQ(log, (Names{"early", "late", "late"}));
}

TEST(UpdatedObject, NeitherRecursesNorRepeatsForARequestInsideUpdate) {
    Model model;
    model.during = [&] {
        model.requestUpdate();
        const UpdateBlock block(model);
        model.requestUpdate();
    };
    model.requestUpdate();
    EXPECT_EQ(model.updates, 1);
    model.during = nullptr;
    model.requestUpdate();
    EXPECT_EQ(model.updates, 2) << "the object is idle again";
}

TEST(UpdatedObject, DeliversWhatHandlersSignalInOneFurtherPass) {
    Names log;
    Listener early("early", log), late("late", log);
    Model model;
    model.early.addHandler(&early, &Listener::hear);
    model.late.addHandler(&late, &Listener::hear);

    early.then = [&] { model.lateNotification.signal(); };
    model.earlyNotification.signal();
    EXPECT_EQ(log, (Names{"early", "late"})) << "a later entry is met by the running loop";
    EXPECT_EQ(model.updates, 1);

    log.clear();
    early.then = nullptr;
    late.then = [&] {
        const UpdateBlock block(model);
        model.earlyNotification.signal();
    };
    model.lateNotification.signal();
    EXPECT_EQ(log, (Names{"late", "early"}));

    // Two that signal each other do not hold the thread.
    log.clear();
    early.then = late.then;
    late.then = [&] { model.earlyNotification.signal(); };
    early.then = [&] { model.lateNotification.signal(); };
    model.lateNotification.signal();
    EXPECT_LE(log.size(), 4u);
}

struct Forwarders {
    EventForwarder& add(Listener& listener) {
        auto made = std::make_unique<EventForwarder>(
            list, std::make_unique<NotifyEvent::HandlerImpl<Listener>>(&listener, &Listener::hear));
        EventForwarder& added = *made;
        list.add(std::move(made));
        return added;
    }
    EventForwarderList list;
};

TEST(EventForwarder, CoalescesTriggersUntilDelivery) {
    Names log;
    Listener a("a", log), b("b", log);
    Forwarders forwarders;
    EventForwarder& toA = forwarders.add(a);
    EventForwarder& toB = forwarders.add(b);
    int first = 0;
    int second = 0;
    {
        const UpdateBlock block(forwarders.list);
        toB.trigger(&first);
        toA.trigger(&first);
        toB.trigger(&second);
        toA.trigger(&first);
        EXPECT_TRUE(log.empty());
    }
    EXPECT_EQ(log, (Names{"b", "a"})) << "in the order of the triggers";
    EXPECT_EQ(a.sender, &first);
    EXPECT_EQ(b.sender, nullptr) << "several senders";
    toB.trigger(&second);
    EXPECT_EQ(b.sender, &second);
}

TEST(EventForwarder, TriggersDuringDeliveryAreNeverLost) {
    Names log;
    Listener a("a", log), b("b", log);
    Forwarders forwarders;
    EventForwarder& toA = forwarders.add(a);
    EventForwarder& toB = forwarders.add(b);
    int sender = 0;

    a.then = [&] { toA.trigger(&sender); };
    toA.trigger(nullptr);
    EXPECT_EQ(log, (Names{"a"})) << "from its own handler it is part of the delivery";

    log.clear();
    a.then = [&] { toB.trigger(&sender); };
    toA.trigger(nullptr);
    EXPECT_EQ(log, (Names{"a", "b"}));

    // A forwarder that was delivered earlier in the pass follows in the next.
    log.clear();
    a.then = nullptr;
    b.then = [&] {
        b.then = nullptr;
        toA.trigger(&sender);
    };
    {
        const UpdateBlock block(forwarders.list);
        toA.trigger(nullptr);
        toB.trigger(nullptr);
    }
    EXPECT_EQ(log, (Names{"a", "b", "a"}));
    EXPECT_EQ(a.sender, &sender);

    // Two that trigger each other end, and both still work afterwards.
    log.clear();
    a.then = [&] { toB.trigger(nullptr); };
    b.then = [&] { toA.trigger(nullptr); };
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

}  // namespace
}  // namespace vanta
