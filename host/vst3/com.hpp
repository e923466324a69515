#pragma once

#include <atomic>
#include <cstdint>
#include <new>
#include <type_traits>

#include <travesty/base.h>

namespace vanta::vst3 {

class ComObject;

/// One interface of an object, as a host holds it: the address of a table of functions, and behind it what
/// the functions need. Roles of an object derive from it. They have no virtual functions, so that the table
/// stays in front.
class ComInterface {
public:
    ComInterface(const v3_funknown& table, ComObject& object) : table_(&table), object_(&object) {}
    ComInterface(const ComInterface&) = delete;
    ComInterface& operator=(const ComInterface&) = delete;

    ComObject& object() const { return *object_; }

private:
    [[maybe_unused]] const v3_funknown* table_;  ///< only hosts read it
    ComObject* object_;
};

/// An object that lives until the last of its interfaces is given back. It begins with one reference.
class ComObject {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    /// Any thread.
    v3_result query(const std::uint8_t* id, void** found) noexcept;
    std::uint32_t ref() noexcept;
    std::uint32_t unref() noexcept;

protected:
    ComObject() = default;
    virtual ~ComObject() = default;
    /// Always the same one for an id; null if the object does not have it.
    virtual ComInterface* interfaceOf(const std::uint8_t* id) noexcept = 0;

private:
    std::atomic<std::uint32_t> references_{1};
};

/// Holds an object for a scope in which its host may let go of it.
class ComScope {
public:
    explicit ComScope(ComObject& object) : object_(object) { object_.ref(); }
    ~ComScope() { object_.unref(); }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    ComObject& object_;
};

// What every table begins with.

v3_result queryInterface(void* self, const v3_tuid id, void** found);
std::uint32_t addReference(void* self);
std::uint32_t release(void* self);
inline constexpr v3_funknown kUnknown{queryInterface, addReference, release};

/// The role that a host's pointer belongs to.
template <typename Role>
Role& roleOf(void* self) {
    static_assert(std::is_base_of_v<ComInterface, Role> && !std::is_polymorphic_v<Role>);
    return *static_cast<Role*>(static_cast<ComInterface*>(self));
}

template <auto function>
struct Entry;

template <typename Role, typename Result, typename... Arguments, bool cannotThrow,
          Result (Role::*function)(Arguments...) noexcept(cannotThrow)>
struct Entry<function> {
    static_assert(cannotThrow || std::is_same_v<Result, v3_result>);

    static Result call(void* self, Arguments... arguments) noexcept {
        if constexpr (cannotThrow) {
            return (roleOf<Role>(self).*function)(arguments...);
        } else {
            try {
                return (roleOf<Role>(self).*function)(arguments...);
            } catch (const std::bad_alloc&) {
                return V3_NOMEM;
            } catch (...) {
                return V3_INTERNAL_ERR;
            }
        }
    }
};

/// A member function as a table holds it. What may throw answers with a result, and so with an error then.
template <auto function>
inline constexpr auto entry = &Entry<function>::call;

}  // namespace vanta::vst3
