// Library-wide parts of the object model: the interface-returning helper and
// the exception roots.
#include <qxbase/qxunknown.h>

HRESULT QxGetInterface(IUnknown* unk, void** ppv)
{
    *ppv = unk;
    unk->AddRef();
    return S_OK;
}

HRESULT QxGetInterface(INonDelegatingUnknown* unk, void** ppv)
{
    *ppv = unk;
    unk->NonDelegatingAddRef();
    return S_OK;
}

CQxBaseException::~CQxBaseException() {}

CQxSmartPointerException::~CQxSmartPointerException() {}
