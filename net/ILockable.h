/// \file
/// Something that can be locked, and the recursive lock that most such things hold.
///
///     library.GetLock().Lock();
///     ...                          // the same thread may lock again
///     library.GetLock().Unlock();
#pragma once

#ifdef __cplusplus

#ifdef __OBJC__
@class NSRecursiveLock;
#else
typedef struct objc_object NSRecursiveLock;
#endif

class ILockable {
public:
    virtual ~ILockable() = default;
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
};

/// A recursive lock: each Lock needs its Unlock, on the same thread.
class LockableImpl : public ILockable {
public:
    LockableImpl();
    ~LockableImpl() override;
    LockableImpl(const LockableImpl &) = delete;
    LockableImpl &operator=(const LockableImpl &) = delete;

    void Lock() override;
    void Unlock() override;

private:
    NSRecursiveLock *m_lock;
};

#endif
