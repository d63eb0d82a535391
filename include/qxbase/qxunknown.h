// Object identity and reference counting: IUnknown, the non-delegating
// unknown that lets an aggregated object keep its own identity, the two base
// classes of every component, the live-object counter, the owning interface
// pointer and the exception root.
//
// Interface layout (binding; modules built separately call each other
// through these tables): QueryInterface, AddRef, Release, then the virtual
// destructor, then the interface's own operations.
#ifndef QXBASE_QXUNKNOWN_H
#define QXBASE_QXUNKNOWN_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxguids.h>

#include <string>

class IUnknown {
public:
    virtual HRESULT QueryInterface(const GUID& riid, void** ppv) = 0;
    virtual uint32_t AddRef() = 0;
    virtual uint32_t Release() = 0;
    virtual ~IUnknown() {}
};

// The identity side of an aggregatable object; its first three slots have
// the shape of IUnknown's.
class INonDelegatingUnknown {
public:
    virtual HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) = 0;
    virtual uint32_t NonDelegatingAddRef() = 0;
    virtual uint32_t NonDelegatingRelease() = 0;
    virtual ~INonDelegatingUnknown() {}
};

// Live objects of this module: every CQxUnknown, CQxLightUnknown and
// CQxClassFactory adds one while it lives. Changed only atomically. Each
// component module has its own (see the module kit); this one is
// libqxbase's.
extern "C" QXBASE_API int32_t g_i32Objects;

// Base of aggregatable components. Handed out with a count of 0; its creator
// takes the first reference with NonDelegatingAddRef.
class QXBASE_API CQxUnknown : public INonDelegatingUnknown {
public:
    CQxUnknown(const wchar_t* in_pwszName, IUnknown* in_pUnkOuter);
    CQxUnknown(const wchar_t* in_pwszName, IUnknown* in_pUnkOuter, HRESULT* out_phr);
    CQxUnknown(bool in_bUnused, const wchar_t* in_pwszName, IUnknown* in_pUnkOuter,
               HRESULT* out_phr);

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;
    uint32_t NonDelegatingAddRef() override;
    uint32_t NonDelegatingRelease() override;
    ~CQxUnknown() override;

    // The controlling unknown: the outer object when aggregated, else this
    // object's own non-delegating side.
    IUnknown* GetOwner() const { return m_pUnkOuter; }

protected:
    IUnknown* m_pUnkOuter;
    int32_t m_i32RefCount;

private:
    CQxUnknown(const CQxUnknown&) = delete;
    CQxUnknown& operator=(const CQxUnknown&) = delete;
};

// Like CQxUnknown, but constructed owned by its creator with a count of 1.
class QXBASE_API CQxLightUnknown : public INonDelegatingUnknown {
public:
    CQxLightUnknown(const wchar_t* in_pwszName, IUnknown* in_pUnkOuter);
    CQxLightUnknown(const wchar_t* in_pwszName, IUnknown* in_pUnkOuter, HRESULT* out_phr);

    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;
    uint32_t NonDelegatingAddRef() override;
    uint32_t NonDelegatingRelease() override;
    ~CQxLightUnknown() override;

    IUnknown* GetOwner() const { return m_pUnkOuter; }

protected:
    IUnknown* m_pUnkOuter;
    int32_t m_i32RefCount;

private:
    CQxLightUnknown(const CQxLightUnknown&) = delete;
    CQxLightUnknown& operator=(const CQxLightUnknown&) = delete;
};

// Stores unk in *ppv and takes a reference through unk's second slot (AddRef,
// or NonDelegatingAddRef for a non-delegating pointer). Neither pointer is
// tested for null.
QXBASE_API HRESULT QxGetInterface(IUnknown* unk, void** ppv);
QXBASE_API HRESULT QxGetInterface(INonDelegatingUnknown* unk, void** ppv);

// Forwards a component's IUnknown methods to its controlling unknown. Place
// it in the public part of a class derived from CQxUnknown or
// CQxLightUnknown and from one or more interfaces.
#define QX_DECLARE_IUNKNOWN                                                    \
    HRESULT QueryInterface(const GUID& riid, void** ppv) override              \
    {                                                                          \
        return this->GetOwner()->QueryInterface(riid, ppv);                          \
    }                                                                          \
    uint32_t AddRef() override { return this->GetOwner()->AddRef(); }                \
    uint32_t Release() override { return this->GetOwner()->Release(); }

// Root of the exceptions of the library. The message names the class and the
// method, then an arrow and the fault.
class QXBASE_API CQxBaseException {
public:
    CQxBaseException() {}
    explicit CQxBaseException(const std::string& in_strMessage) : m_strMessage(in_strMessage) {}
    explicit CQxBaseException(const char* in_pszMessage) : m_strMessage(in_pszMessage) {}
    CQxBaseException(const CQxBaseException&) = default;
    CQxBaseException& operator=(const CQxBaseException&) = default;
    virtual ~CQxBaseException();

    const std::string& GetMessage() const { return m_strMessage; }
    const char* what() const { return m_strMessage.c_str(); }

    std::string m_strMessage;
};

class QXBASE_API CQxSmartPointerException : public CQxBaseException {
public:
    using CQxBaseException::CQxBaseException;
    ~CQxSmartPointerException() override;
};

// Owning interface pointer. Not synchronised.
template <class T>
class TQxSmartPtr {
public:
    TQxSmartPtr() : m_pInterface(nullptr) {}
    // Adopts the reference the caller already holds; no AddRef.
    explicit TQxSmartPtr(T* in_pInterface) : m_pInterface(in_pInterface) {}
    TQxSmartPtr(const TQxSmartPtr& other) : m_pInterface(other.m_pInterface)
    {
        if (m_pInterface) m_pInterface->AddRef();
    }
    TQxSmartPtr& operator=(const TQxSmartPtr& other)
    {
        *this = other.m_pInterface;
        return *this;
    }

    virtual ~TQxSmartPtr()
    {
        if (m_pInterface) {
            try {
                m_pInterface->Release();
            } catch (...) {
            }
        }
        m_pInterface = nullptr;
    }

    virtual operator T*() const { return m_pInterface; }

    virtual T& operator*()
    {
        if (!m_pInterface)
            throw CQxSmartPointerException("TQxSmartPtr::operator* -> Internal pointer is NULL!");
        return *m_pInterface;
    }

    // For use as an out-parameter, only while empty; the old pointer is never
    // released here.
    virtual T** operator&()
    {
        if (m_pInterface)
            throw CQxSmartPointerException(
                "TQxSmartPtr::operator& -> Internal pointer will be overriden!");
        return &m_pInterface;
    }

    virtual T* operator->() const
    {
        if (!m_pInterface)
            throw CQxSmartPointerException("TQxSmartPtr::operator-> -> Internal pointer is NULL!");
        return m_pInterface;
    }

    // AddRef first, then Release: assigning the held pointer to itself is safe.
    virtual T* operator=(T* in_pInterface)
    {
        if (in_pInterface) in_pInterface->AddRef();
        if (m_pInterface) m_pInterface->Release();
        m_pInterface = in_pInterface;
        return in_pInterface;
    }

    virtual bool operator!() { return m_pInterface == nullptr; }
    virtual bool operator==(T* in_pInterface) { return m_pInterface == in_pInterface; }

private:
    T* m_pInterface;
};

#endif  // QXBASE_QXUNKNOWN_H
