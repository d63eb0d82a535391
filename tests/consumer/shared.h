// What the consumer's application and module agree on.
#ifndef QXBASE_CONSUMER_SHARED_H
#define QXBASE_CONSUMER_SHARED_H

#include <qxbase/qxbase.h>

class IConsumerAdder : public IUnknown {
public:
    virtual int Add(int a, int b) = 0;
};

inline constexpr GUID CLSID_ConsumerAdder = {0x2B7E0C11, 0x6D1F, 0x4E2A, {0x8F, 0x01, 0x5A, 0x3C, 0x77, 0x10, 0x00, 0x01}};
inline constexpr GUID IID_IConsumerAdder = {0x2B7E0C11, 0x6D1F, 0x4E2A, {0x8F, 0x01, 0x5A, 0x3C, 0x77, 0x10, 0x00, 0x02}};

#endif
