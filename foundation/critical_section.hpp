#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace vanta {

/// A lock that one thread may enter several times. Never used on the audio thread.
class CriticalSection {
public:
    virtual ~CriticalSection() = default;
    virtual void enter() = 0;
    virtual void leave() = 0;

    /// Holds the section for a scope.
    class Scope {
    public:
        explicit Scope(CriticalSection& entered) : section(entered) { section.enter(); }
        ~Scope() { section.leave(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        CriticalSection& section;
    };
};

class RecursiveCriticalSection final : public CriticalSection {
public:
    void enter() override { mutex.lock(); }
    void leave() override { mutex.unlock(); }

private:
    std::recursive_mutex mutex;
};

/// Base for objects with a lock, which the derived class makes.
class LockedObject {
public:
    void lockObject() { lock->enter(); }
    void unlockObject() { lock->leave(); }

protected:
    explicit LockedObject(std::unique_ptr<CriticalSection> section) : lock(std::move(section)) {}
    ~LockedObject() = default;

private:
    std::unique_ptr<CriticalSection> lock;
};

}  // namespace vanta
