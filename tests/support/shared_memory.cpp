// What the thread sanitizer does not see: shared memory that one thread gives back is seen by nobody before
// the system maps another piece at the same place. Threads that wrote into the old one race with nobody.

#include <dlfcn.h>
#include <sys/shm.h>

extern "C" {

void __tsan_acquire(void* place);
void __tsan_release(void* place);

__attribute__((visibility("default"))) void* shmat(int id, const void* at, int flags) {
    static const auto next = reinterpret_cast<void* (*)(int, const void*, int)>(dlsym(RTLD_NEXT, "shmat"));
    void* const mapped = next(id, at, flags);
    __tsan_acquire(mapped);
    return mapped;
}

__attribute__((visibility("default"))) int shmdt(const void* mapped) {
    static const auto next = reinterpret_cast<int (*)(const void*)>(dlsym(RTLD_NEXT, "shmdt"));
    __tsan_release(const_cast<void*>(mapped));
    return next(mapped);
}

}  // extern "C"
