#ifndef LUMO_WIRECALL_HANDOVER_H
#define LUMO_WIRECALL_HANDOVER_H

/// For the thread sanitizer only, which does not see the locks of an uninstrumented gRPC. Everything that a
/// thread did before handOver(object) happens before what another thread does after takeOver(object), once
/// gRPC has passed the object to it. In other builds both do nothing.
namespace wirecall {

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define __SANITIZE_THREAD__ 1 // as GCC defines it
#endif
#endif

#if defined(__SANITIZE_THREAD__)
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);

inline void handOver(void* object)
{
    __tsan_release(object);
}
inline void takeOver(void* object)
{
    __tsan_acquire(object);
}
#else
inline void handOver(void*)
{
}
inline void takeOver(void*)
{
}
#endif

} // namespace wirecall

#endif
