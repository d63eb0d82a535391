// A component module as an SDK module author writes it: the class and the
// class table, nothing else.
#include "shared.h"

namespace {

class CAdder : public CQxUnknown, public IConsumerAdder {
public:
    CAdder(IUnknown* outer, HRESULT* phr) : CQxUnknown(L"CAdder", outer, phr) {}
    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_IConsumerAdder))
            return QxGetInterface(static_cast<IConsumerAdder*>(this), ppv);
        return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
    int Add(int a, int b) override { return a + b; }
    static CQxUnknown* Create(IUnknown* outer, HRESULT* phr) { return new CAdder(outer, phr); }
};

}  // namespace

extern "C" CQxFactoryTemplate g_aoTemplates[] = {
    {L"Consumer Adder", &CLSID_ConsumerAdder, &CAdder::Create, nullptr, nullptr},
};
extern "C" int32_t g_iTemplates = 1;
