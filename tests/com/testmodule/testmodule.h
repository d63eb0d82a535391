// Interfaces and class identifiers of the test component module: a module
// built on the module kit exactly as an SDK module is, loaded next to
// libqxbase by the registry tests.
#ifndef QXBASE_TESTS_TESTMODULE_H
#define QXBASE_TESTS_TESTMODULE_H

#include <qxbase/qxunknown.h>

// Counts, and reports what the module itself sees: its own live objects and
// how often its classes' init routines ran.
class ITestCounter : public IUnknown {
public:
    virtual int32_t Increment() = 0;
    virtual int32_t ModuleObjects() = 0;
    virtual int32_t ModuleInitCalls() = 0;
};

// Offered by the aggregatable class.
class ITestGreeter : public IUnknown {
public:
    virtual const wchar_t* Greeting() = 0;
};

inline constexpr GUID CLSID_TestCounter = {0x7D0C1A01, 0x51E2, 0x4C7B, {0x9A, 0x10, 0x3E, 0x55, 0x21, 0x60, 0x01, 0x01}};
inline constexpr GUID CLSID_TestGreeter = {0x7D0C1A01, 0x51E2, 0x4C7B, {0x9A, 0x10, 0x3E, 0x55, 0x21, 0x60, 0x01, 0x02}};
inline constexpr GUID IID_ITestCounter = {0x7D0C1A01, 0x51E2, 0x4C7B, {0x9A, 0x10, 0x3E, 0x55, 0x21, 0x60, 0x02, 0x01}};
inline constexpr GUID IID_ITestGreeter = {0x7D0C1A01, 0x51E2, 0x4C7B, {0x9A, 0x10, 0x3E, 0x55, 0x21, 0x60, 0x02, 0x02}};

#define TESTMODULE_COUNTER_NAME L"qxbase Test Counter"
#define TESTMODULE_GREETER_NAME L"qxbase Test Greeter (aggregatable)"

#endif  // QXBASE_TESTS_TESTMODULE_H
