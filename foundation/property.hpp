#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace vanta {

/// Anything that can be handed a value: a property, a converter, a listener.
template <typename T>
class ValueAssignable {
public:
    virtual ~ValueAssignable() = default;
    /// `sender` identifies who assigns, or is null; properties ignore it.
    virtual void assign(T value, void* sender) = 0;
};

/// Base for objects of different classes that one owner keeps in one list.
class ManagedObject {
public:
    virtual ~ManagedObject() = default;
};

class AbstractProperty;

/// Owns properties and hears of every real change, with the address of the property.
class PropertyOwner {
public:
    virtual ~PropertyOwner() = default;
    /// Called synchronously, when the new value is already stored.
    virtual void propertyChanged(AbstractProperty& property) = 0;
};

/// The part of a property that does not depend on its type.
class AbstractProperty {
public:
    explicit AbstractProperty(PropertyOwner* propertyOwner) : owner(propertyOwner) {}
    AbstractProperty(const AbstractProperty&) = delete;
    AbstractProperty& operator=(const AbstractProperty&) = delete;

protected:
    ~AbstractProperty() = default;
    void notify() {
        if (owner) owner->propertyChanged(*this);
    }
    PropertyOwner* owner;
};

/// A typed cell that tells its owner when its value really changes. Assigning the value that it holds
/// does nothing; a NaN always counts as a change. Construction does not notify.
template <typename T>
class Property : public ValueAssignable<T>, public AbstractProperty {
public:
    Property(PropertyOwner* propertyOwner, T initial)
        : AbstractProperty(propertyOwner), value_(std::move(initial)) {}

    const T& value() const { return value_; }
    /// A cell reads as its value.
    operator const T&() const { return value_; }

    void assign(T value, void* /*sender*/ = nullptr) override { store(std::move(value)); }
    Property& operator=(T value) {
        store(std::move(value));
        return *this;
    }

private:
    void store(T&& value) {
        if (value == value_) return;
        value_ = std::move(value);
        notify();
    }

    T value_;
};

template <typename T>
using VectorProperty = Property<std::vector<T>>;

/// A property with a range. The clamp tests `minimum` first, and a NaN passes it. The limits may be moved
/// at any time without a notification; the value is clamped again only by the next `assign`.
template <typename T>
class LimitedProperty : public ValueAssignable<T>, public AbstractProperty {
public:
    LimitedProperty(PropertyOwner* propertyOwner, T low, T high, T initial)
        : AbstractProperty(propertyOwner), maximum(high), minimum(low), value_(initial) {}

    T value() const { return value_; }
    operator T() const { return value_; }

    void assign(T value, void* /*sender*/ = nullptr) override {
        if (value < minimum) {
            value = minimum;
        } else if (value > maximum) {
            value = maximum;
        }
        if (value == value_) return;
        value_ = value;
        notify();
    }
    LimitedProperty& operator=(T value) {
        assign(value);
        return *this;
    }

    T maximum;
    T minimum;

private:
    T value_;
};

/// A value receiver that an owner can keep in a list of managed objects.
template <typename T>
class ValueAssignableAdapter : public ManagedObject, public ValueAssignable<T> {};

/// Hands a value of one type to a receiver of another; a `bool` arrives as 0 or 1.
template <typename From, typename To>
class ValueAssignableConverter final : public ValueAssignableAdapter<From> {
public:
    explicit ValueAssignableConverter(ValueAssignable<To>& receiver) : target_(&receiver) {}
    void assign(From value, void* sender) override { target_->assign(static_cast<To>(value), sender); }

private:
    ValueAssignable<To>* target_;
};

}  // namespace vanta
