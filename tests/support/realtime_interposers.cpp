// Stands in for the allocator and for the locks of pthread in every program that links a RealtimeTrap: each
// function reports itself and passes on to the one of the C library.

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <semaphore.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "tests/support/realtime_trap_internal.hpp"

#if VANTA_TRAP_UNDER_SANITIZER
// Of the sanitizers' allocator interface, whose header does not come with every compiler.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));
#endif

namespace {

using vanta::test::RealtimeTrap;
using vanta::test::trap::offend;

#if VANTA_TRAP_UNDER_SANITIZER

void allocated(const volatile void*, std::size_t) {
    offend(RealtimeTrap::Kind::Allocation, "malloc", -1);
}

void freed(const volatile void*) {
    offend(RealtimeTrap::Kind::Allocation, "free", -1);
}

}  // namespace

void vanta::test::trap::installInterposers() {
    static const int installed = __sanitizer_install_malloc_and_free_hooks(&allocated, &freed);
    static_cast<void>(installed);
}

#else

void allocation(const char* call) {
    offend(RealtimeTrap::Kind::Allocation, call, -1);
}

/// The function that ours hides. Condition variables exist in two versions, of which a plain search may
/// find the old one.
template <typename Function>
Function* hidden(const char* name) {
    const vanta::test::trap::Pause pause;
    void* found = dlvsym(RTLD_NEXT, name, "GLIBC_2.3.2");
    if (!found) found = dlsym(RTLD_NEXT, name);
    if (!found) std::abort();
    return reinterpret_cast<Function*>(found);
}

}  // namespace

void vanta::test::trap::installInterposers() {}

extern "C" {

// The C library's own names for what is replaced here.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

void* malloc(std::size_t size) noexcept {
    allocation("malloc");
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    allocation("calloc");
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
    allocation("realloc");
    return __libc_realloc(block, size);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    allocation("memalign");
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    allocation("aligned_alloc");
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    allocation("posix_memalign");
    const bool isPower = alignment && (alignment & (alignment - 1)) == 0;
    if (!isPower || alignment % sizeof(void*)) return EINVAL;
    void* made = __libc_memalign(alignment, size);
    if (!made) return ENOMEM;
    *block = made;
    return 0;
}

void free(void* block) noexcept {
    if (block) allocation("free");
    __libc_free(block);
}

}  // extern "C"

// NOLINTBEGIN(bugprone-macro-parentheses): parameters and arguments come with parentheses of their own.
#define VANTA_TRAP_LOCK(name, parameters, arguments, specification) \
    extern "C" int name parameters specification {                  \
        using Function = int parameters;                            \
        static Function* const original = hidden<Function>(#name);  \
        offend(RealtimeTrap::Kind::Lock, #name, -1);                \
        return original arguments;                                  \
    }

VANTA_TRAP_LOCK(pthread_mutex_lock, (pthread_mutex_t * m), (m), noexcept)
VANTA_TRAP_LOCK(pthread_mutex_trylock, (pthread_mutex_t * m), (m), noexcept)
VANTA_TRAP_LOCK(pthread_mutex_timedlock, (pthread_mutex_t * m, const timespec* t), (m, t), noexcept)
VANTA_TRAP_LOCK(pthread_rwlock_rdlock, (pthread_rwlock_t * l), (l), noexcept)
VANTA_TRAP_LOCK(pthread_rwlock_tryrdlock, (pthread_rwlock_t * l), (l), noexcept)
VANTA_TRAP_LOCK(pthread_rwlock_wrlock, (pthread_rwlock_t * l), (l), noexcept)
VANTA_TRAP_LOCK(pthread_rwlock_trywrlock, (pthread_rwlock_t * l), (l), noexcept)
VANTA_TRAP_LOCK(pthread_spin_lock, (pthread_spinlock_t * l), (l), noexcept)
VANTA_TRAP_LOCK(pthread_cond_signal, (pthread_cond_t * c), (c), noexcept)
VANTA_TRAP_LOCK(pthread_cond_broadcast, (pthread_cond_t * c), (c), noexcept)
VANTA_TRAP_LOCK(pthread_cond_wait, (pthread_cond_t * c, pthread_mutex_t* m), (c, m), )
VANTA_TRAP_LOCK(pthread_cond_timedwait, (pthread_cond_t * c, pthread_mutex_t* m, const timespec* t),
                (c, m, t), )
VANTA_TRAP_LOCK(pthread_cond_clockwait,
                (pthread_cond_t * c, pthread_mutex_t* m, clockid_t k, const timespec* t), (c, m, k, t), )
VANTA_TRAP_LOCK(sem_wait, (sem_t * s), (s), )
VANTA_TRAP_LOCK(sem_trywait, (sem_t * s), (s), noexcept)
VANTA_TRAP_LOCK(sem_post, (sem_t * s), (s), noexcept)
// NOLINTEND(bugprone-macro-parentheses)

#endif
