#import <Foundation/NSLock.h>
#include <Tarvik/net/ILockable.h>
#include <Tarvik/support/Guard.h>

LockableImpl::LockableImpl() : m_lock([[NSRecursiveLock alloc] init]) {}

LockableImpl::~LockableImpl() { [m_lock release]; }

void LockableImpl::Lock() { [m_lock lock]; }

void LockableImpl::Unlock()
{
    // Unlocked by a thread that does not hold it, the platform's lock raises; it stays as it is.
    tarvik::attempt([&] { [m_lock unlock]; });
}
