/// Annotated locks of the node records (IpmiNode.h).
///
/// The annotations are read by clang's thread-safety analysis; other compilers
/// see nothing of them.
#ifndef VEK_IPMI_VEKMUTEX_H
#define VEK_IPMI_VEKMUTEX_H

#include <atomic>
#include <pthread.h>
#include <time.h>

#if defined(__clang__)
#define VEK_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VEK_THREAD_ANNOTATION(x)
#endif

#define VEK_CAPABILITY(x) VEK_THREAD_ANNOTATION(capability(x))
#define VEK_SCOPED_CAPABILITY VEK_THREAD_ANNOTATION(scoped_lockable)
#define VEK_GUARDED_BY(x) VEK_THREAD_ANNOTATION(guarded_by(x))
#define VEK_ACQUIRED_BEFORE(...)                                               \
    VEK_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define VEK_ACQUIRED_AFTER(...)                                                \
    VEK_THREAD_ANNOTATION(acquired_after(__VA_ARGS__))
#define VEK_REQUIRES(...)                                                      \
    VEK_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define VEK_REQUIRES_SHARED(...)                                               \
    VEK_THREAD_ANNOTATION(requires_shared_capability(__VA_ARGS__))
#define VEK_ACQUIRE(...) VEK_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define VEK_ACQUIRE_SHARED(...)                                                \
    VEK_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define VEK_TRY_ACQUIRE(...)                                                   \
    VEK_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define VEK_RELEASE(...) VEK_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define VEK_RELEASE_SHARED(...)                                                \
    VEK_THREAD_ANNOTATION(release_shared_capability(__VA_ARGS__))
#define VEK_RELEASE_GENERIC(...)                                               \
    VEK_THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))
#define VEK_NO_THREAD_SAFETY_ANALYSIS                                          \
    VEK_THREAD_ANNOTATION(no_thread_safety_analysis)
#define VEK_EXCLUDES(...) VEK_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

namespace VEK
{

/// Exactly one POSIX mutex with default attributes: not recursive.
class VEK_CAPABILITY("mutex") Mutex
{
public:
    Mutex() { pthread_mutex_init(&m_, nullptr); }
    ~Mutex() { pthread_mutex_destroy(&m_); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() VEK_ACQUIRE() { pthread_mutex_lock(&m_); }
    void unlock() VEK_RELEASE() { pthread_mutex_unlock(&m_); }
    bool tryLock() VEK_TRY_ACQUIRE(true)
    {
        return pthread_mutex_trylock(&m_) == 0;
    }
    pthread_mutex_t* native() { return &m_; }

private:
    pthread_mutex_t m_;
};

/// Holds a mutex for a scope, so that an exception releases it.
class VEK_SCOPED_CAPABILITY MutexLock
{
public:
    explicit MutexLock(Mutex& mutex) VEK_ACQUIRE(mutex) : m_{mutex.native()}
    {
        pthread_mutex_lock(m_);
    }
    ~MutexLock() VEK_RELEASE() { pthread_mutex_unlock(m_); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    pthread_mutex_t* m_;
};

/// Releases a mutex that is held, for a scope, and takes it again on every way
/// out, cancellation included. Unseen by the analysis: the caller holds the
/// mutex before and behind the scope.
class MutexUnlock
{
public:
    explicit MutexUnlock(Mutex& mutex) : m_{mutex.native()}
    {
        pthread_mutex_unlock(m_);
    }
    ~MutexUnlock() { pthread_mutex_lock(m_); }
    MutexUnlock(const MutexUnlock&) = delete;
    MutexUnlock& operator=(const MutexUnlock&) = delete;

private:
    pthread_mutex_t* m_;
};

/// A mutex that its holder may take again. Held only in scopes, and outside of
/// what the analysis can follow: that one thread takes it twice is the point.
class RecursiveMutex
{
public:
    RecursiveMutex()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&m_, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~RecursiveMutex() { pthread_mutex_destroy(&m_); }
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

private:
    friend class RecursiveLock;
    pthread_mutex_t m_;
};

class RecursiveLock
{
public:
    explicit RecursiveLock(RecursiveMutex& mutex) : m_{mutex.m_}
    {
        pthread_mutex_lock(&m_);
    }
    ~RecursiveLock() { pthread_mutex_unlock(&m_); }
    RecursiveLock(const RecursiveLock&) = delete;
    RecursiveLock& operator=(const RecursiveLock&) = delete;

private:
    pthread_mutex_t& m_;
};

/// A condition variable with default attributes (deadlines are times of day).
class Condition
{
public:
    Condition() { pthread_cond_init(&c_, nullptr); }
    /// Left alone while somebody waits: destroying it would wait for that
    /// thread, and a process that exits beside a polling thread would hang.
    ~Condition()
    {
        if (waiters_.load() == 0)
            pthread_cond_destroy(&c_);
    }
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void broadcast() { pthread_cond_broadcast(&c_); }
    void wait(Mutex& mutex) VEK_REQUIRES(mutex)
    {
        ++waiters_;
        pthread_cond_wait(&c_, mutex.native());
        --waiters_;
    }
    /// 0, or ETIMEDOUT once the time of day has reached the deadline.
    int waitUntil(Mutex& mutex, const timespec& deadline) VEK_REQUIRES(mutex)
    {
        ++waiters_;
        const int result =
            pthread_cond_timedwait(&c_, mutex.native(), &deadline);
        --waiters_;
        return result;
    }

private:
    pthread_cond_t c_;
    std::atomic<int> waiters_{0};
};

/// Exactly one POSIX reader/writer lock with default attributes.
class VEK_CAPABILITY("rwlock") RwLock
{
public:
    RwLock() { pthread_rwlock_init(&l_, nullptr); }
    ~RwLock() { pthread_rwlock_destroy(&l_); }
    RwLock(const RwLock&) = delete;
    RwLock& operator=(const RwLock&) = delete;

    void lockForReading() VEK_ACQUIRE_SHARED() { pthread_rwlock_rdlock(&l_); }
    void lockForWriting() VEK_ACQUIRE() { pthread_rwlock_wrlock(&l_); }
    void unlock() VEK_RELEASE_GENERIC() { pthread_rwlock_unlock(&l_); }
    bool tryLockForWriting() VEK_TRY_ACQUIRE(true)
    {
        return pthread_rwlock_trywrlock(&l_) == 0;
    }
    pthread_rwlock_t* native() { return &l_; }

private:
    pthread_rwlock_t l_;
};

/// Holds a reader/writer lock for reading, for a scope.
class VEK_SCOPED_CAPABILITY ReadLock
{
public:
    explicit ReadLock(RwLock& lock) VEK_ACQUIRE_SHARED(lock) : lock_{lock}
    {
        lock_.lockForReading();
    }
    ~ReadLock() VEK_RELEASE_GENERIC() { lock_.unlock(); }
    ReadLock(const ReadLock&) = delete;
    ReadLock& operator=(const ReadLock&) = delete;

private:
    RwLock& lock_;
};

/// Holds a reader/writer lock for writing, for a scope.
class VEK_SCOPED_CAPABILITY WriteLock
{
public:
    explicit WriteLock(RwLock& lock) VEK_ACQUIRE(lock) : lock_{lock}
    {
        lock_.lockForWriting();
    }
    ~WriteLock() VEK_RELEASE() { lock_.unlock(); }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

private:
    RwLock& lock_;
};

/// Releases a lock that is held for writing, for a scope, and takes it again
/// on every way out, cancellation included. Unseen by the analysis: the
/// caller holds the lock before and behind the scope.
class WriteUnlock
{
public:
    explicit WriteUnlock(RwLock& lock) : l_{lock.native()}
    {
        pthread_rwlock_unlock(l_);
    }
    ~WriteUnlock() { pthread_rwlock_wrlock(l_); }
    WriteUnlock(const WriteUnlock&) = delete;
    WriteUnlock& operator=(const WriteUnlock&) = delete;

private:
    pthread_rwlock_t* l_;
};

} // namespace VEK

#endif
