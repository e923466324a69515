#pragma once

#include <memory>
#include <vector>

namespace vanta {

/// A multicast callback that passes one untyped pointer, the sender. It owns its handlers.
/// Handlers may remove themselves or others while the event is being raised.
class NotifyEvent {
public:
    /// Identifies a pair of object and member function.
    struct HandlerKey {
        const void* object;
        const void* methodType;  ///< one address per member function type
        unsigned char method[sizeof(void*) * 2];
    };

    class Handler {
    public:
        virtual ~Handler() = default;
        virtual void invoke(void* sender) = 0;
        virtual bool equals(const HandlerKey& key) const = 0;
    };

    template <typename C>
    class HandlerImpl;

    NotifyEvent() = default;
    NotifyEvent(const NotifyEvent&) = delete;
    NotifyEvent& operator=(const NotifyEvent&) = delete;
    /// Deletes the primary handler first, then the others from the first to the last.
    ~NotifyEvent();

    /// Installs the primary handler, which is called first and never found by `removeHandler`.
    void setHandler(std::unique_ptr<Handler> primary);
    void addHandler(std::unique_ptr<Handler> further);
    /// Removes the last entry that is bound to this pair, if there is one.
    template <typename C>
    void removeHandler(C* object, void (C::*method)(void*));

    /// Shorthands that bind a member function.
    template <typename C>
    void setHandler(C* object, void (C::*method)(void*)) {
        setHandler(std::make_unique<HandlerImpl<C>>(object, method));
    }
    template <typename C>
    void addHandler(C* object, void (C::*method)(void*)) {
        addHandler(std::make_unique<HandlerImpl<C>>(object, method));
    }

    /// The primary handler first, then the others from the last to the first.
    void raise(void* sender);

private:
    void removeHandler(const HandlerKey& key);
    void dropRemoved();

    std::unique_ptr<Handler> handler_;
    std::vector<std::unique_ptr<Handler>> handlers_;
    std::vector<std::unique_ptr<Handler>> removed_;  ///< taken out during a raise, kept until it ends
    int raising_ = 0;
};

template <typename C>
class NotifyEvent::HandlerImpl final : public Handler {
public:
    using Method = void (C::*)(void*);

    HandlerImpl(C* boundObject, Method boundMethod) : object_(boundObject), method_(boundMethod) {}
    void invoke(void* sender) override { (object_->*method_)(sender); }
    bool equals(const HandlerKey& key) const override {
        static_assert(sizeof(Method) == sizeof(key.method), "a member function pointer is two words");
        if (key.object != object_ || key.methodType != &typeMark) return false;
        Method other;
        __builtin_memcpy(&other, key.method, sizeof other);
        return other == method_;
    }
    static HandlerKey key(C* object, Method method) {
        HandlerKey result{object, &typeMark, {}};
        __builtin_memcpy(result.method, &method, sizeof method);
        return result;
    }

private:
    static inline const char typeMark = 0;
    C* object_;
    Method method_;
};

template <typename C>
void NotifyEvent::removeHandler(C* object, void (C::*method)(void*)) {
    removeHandler(HandlerImpl<C>::key(object, method));
}

}  // namespace vanta
