// FAST_MUTEX: the one mutex that guards singleton creation. Never destroyed.
#include "host/runtime/singleton.h"

VXMutex& FAST_MUTEX() {
    static VXMutex* mutex = new VXMutex();
    return *mutex;
}
