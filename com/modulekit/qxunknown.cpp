// Reference counting of the two component base classes. This file belongs to
// the module kit: every component module compiles its own copy, so each
// module counts its own live objects in its own g_i32Objects.
#include <qxbase/qxunknown.h>

extern "C" int32_t g_i32Objects = 0;

namespace {

inline int32_t AtomicAdd(int32_t* in_pValue, int32_t in_i32Delta)
{
    return __atomic_add_fetch(in_pValue, in_i32Delta, __ATOMIC_SEQ_CST);
}

inline int32_t AtomicRead(int32_t* in_pValue)
{
    return __atomic_load_n(in_pValue, __ATOMIC_SEQ_CST);
}

// The value handed back is read again after the increment, so it may already
// include other threads' changes; it is never 0 for a live reference.
uint32_t AddReference(int32_t* in_pCount)
{
    AtomicAdd(in_pCount, 1);
    int32_t i32Count = AtomicRead(in_pCount);
    return i32Count == 0 ? 1u : static_cast<uint32_t>(i32Count);
}

// Destroys through the virtual destructor when the count reaches zero. The
// count stands at 1 during the destruction, so a reference taken and dropped
// by a destructor cannot start a second one.
template <class TObject>
uint32_t ReleaseReference(TObject* in_pObject, int32_t* in_pCount)
{
    int32_t i32Count = AtomicAdd(in_pCount, -1);
    if (i32Count != 0) return static_cast<uint32_t>(i32Count);
    AtomicAdd(in_pCount, 1);
    delete in_pObject;
    return 0;
}

HRESULT QueryUnknown(INonDelegatingUnknown* in_pSelf, const GUID& riid, void** ppv)
{
    if (&riid == &IID_IUnknown || IsEqualGUID(riid, IID_IUnknown)) {
        // The non-delegating side answers as this object's IUnknown: its
        // second slot is NonDelegatingAddRef.
        *ppv = in_pSelf;
        in_pSelf->NonDelegatingAddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

IUnknown* SelfOrOuter(INonDelegatingUnknown* in_pSelf, IUnknown* in_pUnkOuter)
{
    return in_pUnkOuter ? in_pUnkOuter : reinterpret_cast<IUnknown*>(in_pSelf);
}

}  // namespace

// --- CQxUnknown -------------------------------------------------------------

CQxUnknown::CQxUnknown(const wchar_t*, IUnknown* in_pUnkOuter)
    : m_pUnkOuter(SelfOrOuter(this, in_pUnkOuter)), m_i32RefCount(0)
{
    AtomicAdd(&g_i32Objects, 1);
}

CQxUnknown::CQxUnknown(const wchar_t*, IUnknown* in_pUnkOuter, HRESULT* out_phr)
    : m_pUnkOuter(nullptr), m_i32RefCount(0)
{
    if (out_phr) *out_phr = S_OK;
    m_pUnkOuter = SelfOrOuter(this, in_pUnkOuter);
    AtomicAdd(&g_i32Objects, 1);
}

CQxUnknown::CQxUnknown(bool, const wchar_t* in_pwszName, IUnknown* in_pUnkOuter,
                       HRESULT* out_phr)
    : CQxUnknown(in_pwszName, in_pUnkOuter, out_phr)
{
}

CQxUnknown::~CQxUnknown() { AtomicAdd(&g_i32Objects, -1); }

HRESULT CQxUnknown::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    return QueryUnknown(this, riid, ppv);
}

uint32_t CQxUnknown::NonDelegatingAddRef() { return AddReference(&m_i32RefCount); }

uint32_t CQxUnknown::NonDelegatingRelease() { return ReleaseReference(this, &m_i32RefCount); }

// --- CQxLightUnknown --------------------------------------------------------

CQxLightUnknown::CQxLightUnknown(const wchar_t*, IUnknown* in_pUnkOuter)
    : m_pUnkOuter(SelfOrOuter(this, in_pUnkOuter)), m_i32RefCount(1)
{
    AtomicAdd(&g_i32Objects, 1);
}

CQxLightUnknown::CQxLightUnknown(const wchar_t*, IUnknown* in_pUnkOuter, HRESULT* out_phr)
    : m_pUnkOuter(nullptr), m_i32RefCount(1)
{
    if (out_phr) *out_phr = S_OK;
    m_pUnkOuter = SelfOrOuter(this, in_pUnkOuter);
    AtomicAdd(&g_i32Objects, 1);
}

CQxLightUnknown::~CQxLightUnknown() { AtomicAdd(&g_i32Objects, -1); }

HRESULT CQxLightUnknown::NonDelegatingQueryInterface(const GUID& riid, void** ppv)
{
    return QueryUnknown(this, riid, ppv);
}

uint32_t CQxLightUnknown::NonDelegatingAddRef() { return AddReference(&m_i32RefCount); }

uint32_t CQxLightUnknown::NonDelegatingRelease()
{
    return ReleaseReference(this, &m_i32RefCount);
}
