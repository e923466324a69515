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
        explicit Scope(CriticalSection& entered) : section_(entered) { section_.enter(); }
        ~Scope() { section_.leave(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        CriticalSection& section_;
    };
};

class RecursiveCriticalSection final : public CriticalSection {
public:
    void enter() override { mutex_.lock(); }
    void leave() override { mutex_.unlock(); }

private:
    std::recursive_mutex mutex_;
};

/// Base for objects with a lock, which the derived class makes.
class LockedObject {
public:
    void lockObject() { lock_->enter(); }
    void unlockObject() { lock_->leave(); }

protected:
    explicit LockedObject(std::unique_ptr<CriticalSection> section) : lock_(std::move(section)) {}
    ~LockedObject() = default;

private:
    std::unique_ptr<CriticalSection> lock_;
};

}  // namespace vanta
