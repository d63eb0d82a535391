// A thread-pool manager component for the work-queue tests, built as a
// component module and found through the class registry, as the real one
// is. Its priority is module-wide: every instance answers the last value
// set through any of them.
#ifndef QXBASE_TESTS_SYNC_POOLMANAGER_H
#define QXBASE_TESTS_SYNC_POOLMANAGER_H

#include <qxbase/qxinterfaces.h>

// What the module itself saw.
class ITestPoolProbe : public IUnknown {
public:
    virtual int32_t PriorityQueries() = 0;
    virtual int32_t LiveManagers() = 0;
};

inline constexpr GUID IID_ITestPoolProbe = {0x5C0A7E11, 0x2B6D, 0x4F08, {0x8E, 0x31, 0x77, 0x02, 0x4A, 0x19, 0x60, 0x01}};

#endif  // QXBASE_TESTS_SYNC_POOLMANAGER_H
