// The component bases, the owning pointer, the class factory, the entry
// points and the registration walk, as a component module gets them: this
// program links the module kit whole and defines its own class table,
// exactly like a module built with qxbase_add_module, so the object counter
// and the lock count seen here are its own.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxregistry.h>

#include "support/qxtest_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using NQxTest::CScopedEnv;
using NQxTest::CStdoutCapture;
using NQxTest::CTempDir;
using NQxTest::ReadFile;

constexpr GUID TestGuid(uint8_t in_ucRow)
{
    return {0x3C1F0000u + in_ucRow, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, in_ucRow}};
}
const GUID IID_ITestValue = TestGuid(0), CLSID_Plain = TestGuid(1), CLSID_Failing = TestGuid(2),
           CLSID_Nothing = TestGuid(3), CLSID_HalfBuilt = TestGuid(4), CLSID_Hooked = TestGuid(5),
           CLSID_Unknown = TestGuid(0xFF);
const HRESULT E_TEST_CREATION = QX_HRESULT(0x80070005u);

class ITestValue : public IUnknown {
public:
    virtual int Value() = 0;
};

std::atomic<int> g_iCreations{0}, g_iDestructions{0};
std::vector<std::string> g_vecCalls;  // init and register hook calls, in order
HRESULT g_hrRegisterHook = S_OK;

// A component answering ITestValue on either base, aggregatable.
template <class TBase>
class TValue : public TBase, public ITestValue {
public:
    explicit TValue(IUnknown* in_pUnkOuter) : TBase(L"value", in_pUnkOuter) { ++g_iCreations; }
    TValue(IUnknown* in_pUnkOuter, HRESULT* out_phr) : TBase(L"value", in_pUnkOuter, out_phr) { ++g_iCreations; }
    ~TValue() override { ++g_iDestructions; }
    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_ITestValue)) return QxGetInterface(static_cast<ITestValue*>(this), ppv);
        return TBase::NonDelegatingQueryInterface(riid, ppv);
    }
    int Value() override { return 7; }
    int32_t Count() const { return this->m_i32RefCount; }
};
using CValue = TValue<CQxUnknown>;
using CLightValue = TValue<CQxLightUnknown>;

CQxUnknown* CreateValue(IUnknown* outer, HRESULT* phr) { return new CValue(outer, phr); }
// Creation functions that fail: with their own code, with nothing at all,
// and after building the object.
CQxUnknown* CreateFailing(IUnknown*, HRESULT* phr) { return *phr = E_TEST_CREATION, nullptr; }
CQxUnknown* CreateNothing(IUnknown*, HRESULT*) { return nullptr; }
CQxUnknown* CreateHalfBuilt(IUnknown* outer, HRESULT* phr)
{
    CValue* p = new CValue(outer, phr);
    *phr = E_TEST_CREATION;
    return p;
}

std::string Describe(const char* in_pszWhat, bool in_b, const GUID* in_pClsid)
{
    return std::string(in_pszWhat) + (in_b ? "+" : "-") + std::to_string(in_pClsid->Data1 & 0xFF);
}
void InitHook(bool in_bLoading, const GUID* in_pClsid) { g_vecCalls.push_back(Describe("init", in_bLoading, in_pClsid)); }
HRESULT RegisterHook(bool in_bRegistering, const GUID* in_pClsid)
{
    g_vecCalls.push_back(Describe("reg", in_bRegistering, in_pClsid));
    return in_bRegistering ? g_hrRegisterHook : E_FAIL;  // the unregister answer is ignored
}

}  // namespace

extern "C" CQxFactoryTemplate g_aoTemplates[] = {
    {L"Plain Class", &CLSID_Plain, &CreateValue, &InitHook, nullptr},
    {L"Failing Class", &CLSID_Failing, &CreateFailing, nullptr, nullptr},
    {L"Nothing Class", &CLSID_Nothing, &CreateNothing, nullptr, nullptr},
    {L"Half Built Class", &CLSID_HalfBuilt, &CreateHalfBuilt, &InitHook, nullptr},
    {L"Hooked Class \u00E9", &CLSID_Hooked, &CreateValue, nullptr, &RegisterHook},
};
extern "C" int32_t g_iTemplates = sizeof(g_aoTemplates) / sizeof(g_aoTemplates[0]);

namespace {

// An outer object that counts the references and queries reaching it and
// answers IUnknown only, with itself.
class COuter : public IUnknown {
public:
    HRESULT QueryInterface(const GUID& riid, void** ppv) override
    {
        ++m_iQueries;
        *ppv = IsEqualGUID(riid, IID_IUnknown) ? this : nullptr;
        if (!*ppv) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    uint32_t AddRef() override { return static_cast<uint32_t>(++m_iRefs); }
    uint32_t Release() override { return static_cast<uint32_t>(--m_iRefs); }
    int m_iRefs = 1, m_iQueries = 0;
};

IClassFactory* GetFactory(const GUID& in_clsid)
{
    IClassFactory* pFactory = nullptr;
    EXPECT_EQ(DllGetClassObject(in_clsid, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)), S_OK);
    return pFactory;
}

// Every test starts from zero counts and must leave no live object behind.
class Components : public ::testing::Test {
protected:
    void SetUp() override
    {
        g_iCreations = g_iDestructions = 0;
        g_vecCalls.clear();
        g_hrRegisterHook = S_OK;
        m_i32Objects = g_i32Objects;
    }
    void TearDown() override { EXPECT_EQ(g_i32Objects, m_i32Objects) << "an object leaked"; }
    int32_t m_i32Objects = 0;
};

TEST_F(Components, BasesCountReferencesAndAnswerTheirOwnInterfacesOnly)
{
    // A heavy object is handed out without a reference, a light one owned
    // by its creator; both count as live objects until their last release.
    HRESULT hrLight = E_FAIL;
    auto* pHeavy = new CValue(nullptr);
    auto* pLight = new CLightValue(nullptr, &hrLight);
    EXPECT_EQ(hrLight, S_OK);
    EXPECT_EQ(g_i32Objects, m_i32Objects + 2);
    EXPECT_EQ(pHeavy->Count(), 0);
    EXPECT_EQ(pLight->Count(), 1);
    EXPECT_EQ(pHeavy->NonDelegatingAddRef(), 1u);

    void* pv = &pv;
    EXPECT_EQ(pHeavy->NonDelegatingQueryInterface(CLSID_Unknown, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, nullptr);
    // A copy of the identifier (not the constant itself) compares by bytes.
    GUID unknownCopy = IID_IUnknown;
    EXPECT_EQ(pHeavy->NonDelegatingQueryInterface(unknownCopy, &pv), S_OK);
    EXPECT_EQ(pv, static_cast<INonDelegatingUnknown*>(pHeavy));
    ITestValue* pValue = nullptr;
    EXPECT_EQ(pHeavy->QueryInterface(IID_ITestValue, reinterpret_cast<void**>(&pValue)), S_OK);
    EXPECT_EQ(pValue->Value(), 7);
    EXPECT_EQ(pHeavy->Count(), 3);
    pValue->Release();
    static_cast<INonDelegatingUnknown*>(pv)->NonDelegatingRelease();
    EXPECT_EQ(g_iDestructions, 0);
    EXPECT_EQ(pHeavy->NonDelegatingRelease(), 0u);
    EXPECT_EQ(pLight->NonDelegatingRelease(), 0u);
    EXPECT_EQ(g_iDestructions, 2);

    // The status is stored before anything else; the owner is the object.
    HRESULT hr = E_FAIL;
    struct CWithHr : CQxUnknown {
        explicit CWithHr(HRESULT* phr) : CQxUnknown(true, L"x", nullptr, phr) {}
    } object(&hr);
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(object.GetOwner(), reinterpret_cast<IUnknown*>(static_cast<INonDelegatingUnknown*>(&object)));
}

// Catches what in_fn throws and says whether it was the smart pointer's.
template <class TFn>
std::string Thrown(TFn in_fn)
{
    try {
        in_fn();
    } catch (const CQxBaseException& e) {
        return (dynamic_cast<const CQxSmartPointerException*>(&e) ? "" : "not a pointer exception: ") + e.m_strMessage;
    }
    return "nothing thrown";
}

TEST_F(Components, SmartPointerMisuseThrowsWithTheExactMessages)
{
    TQxSmartPtr<ITestValue> empty;
    EXPECT_TRUE(!empty);
    EXPECT_EQ(Thrown([&] { empty->Value(); }), "TQxSmartPtr::operator-> -> Internal pointer is NULL!");
    EXPECT_EQ(Thrown([&] { (*empty).Value(); }), "TQxSmartPtr::operator* -> Internal pointer is NULL!");

    auto* p = new CLightValue(nullptr);
    {
        TQxSmartPtr<ITestValue> sp;
        p->QueryInterface(IID_ITestValue, reinterpret_cast<void**>(&sp));  // fills the empty slot
        EXPECT_EQ(p->Count(), 2);
        EXPECT_EQ(Thrown([&] { (void)&sp; }), "TQxSmartPtr::operator& -> Internal pointer will be overriden!");
        // Self-assignment of the only reference keeps the object alive.
        p->NonDelegatingRelease();
        ITestValue* raw = sp;
        sp = raw;
        EXPECT_EQ(g_iDestructions, 0);
        EXPECT_EQ(p->Count(), 1);
        EXPECT_TRUE(sp == raw);
    }
    EXPECT_EQ(g_iDestructions, 1);
}

TEST_F(Components, FactoryCountsPlainlyAndCreatesWithExactlyTheQueriedReference)
{
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    ASSERT_NE(pFactory, nullptr);
    EXPECT_EQ(g_i32Objects, m_i32Objects + 1);  // a factory is a live object too
    void* pv = nullptr;
    for (GUID copy : {IID_IUnknown, IID_IClassFactory}) {
        EXPECT_EQ(pFactory->QueryInterface(copy, &pv), S_OK);
        EXPECT_EQ(pv, pFactory);
    }
    pv = &pv;
    EXPECT_EQ(pFactory->QueryInterface(IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, &pv);  // untouched
    EXPECT_EQ(pFactory->AddRef(), 4u);
    for (uint32_t uiLeft : {3u, 2u, 1u}) EXPECT_EQ(pFactory->Release(), uiLeft);

    ITestValue* pValue = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(nullptr, IID_ITestValue, reinterpret_cast<void**>(&pValue)), S_OK);
    EXPECT_EQ(static_cast<CValue*>(pValue)->Count(), 1);
    EXPECT_EQ(pValue->Release(), 0u);
    // A failed query destroys the new object again.
    EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IClassFactory, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, nullptr);
    EXPECT_EQ(g_iCreations, 2);
    EXPECT_EQ(g_iDestructions, 2);
    EXPECT_EQ(pFactory->Release(), 0u);  // deletes it
}

TEST_F(Components, AggregatedObjectHandsOutItsInnerSideAndDelegatesToTheOuter)
{
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    COuter outer;
    void* pv = &outer;
    EXPECT_EQ(pFactory->CreateInstance(&outer, IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, &outer);       // untouched
    EXPECT_EQ(g_iCreations, 0);  // refused before anything was built

    INonDelegatingUnknown* pInner = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&pInner)), S_OK);
    pFactory->Release();
    CValue* pObject = static_cast<CValue*>(pInner);
    EXPECT_EQ(pObject->Count(), 1);
    EXPECT_EQ(outer.m_iRefs, 1);
    // References taken through the interfaces reach the outer's count only,
    // and their queries are the outer's.
    ITestValue* pValue = nullptr;
    ASSERT_EQ(pInner->NonDelegatingQueryInterface(IID_ITestValue, reinterpret_cast<void**>(&pValue)), S_OK);
    EXPECT_EQ(outer.m_iRefs, 2);
    pValue->AddRef();
    EXPECT_EQ(outer.m_iRefs, 3);
    EXPECT_EQ(pValue->QueryInterface(IID_IUnknown, &pv), S_OK);
    EXPECT_EQ(pv, &outer);
    EXPECT_EQ(pValue->QueryInterface(IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(outer.m_iQueries, 2);
    outer.Release();
    pValue->Release();
    pValue->Release();
    EXPECT_EQ(outer.m_iRefs, 1);
    EXPECT_EQ(pObject->Count(), 1);
    EXPECT_EQ(pInner->NonDelegatingRelease(), 0u);
    EXPECT_EQ(g_iDestructions, 1);
}

TEST_F(Components, CreationFailuresGiveTheirCodesAndLeaveNothingBehind)
{
    const std::pair<const GUID*, HRESULT> cases[] = {
        {&CLSID_Failing, E_TEST_CREATION}, {&CLSID_Nothing, E_OUTOFMEMORY}, {&CLSID_HalfBuilt, E_TEST_CREATION}};
    for (const auto& [pClsid, hrExpected] : cases) {
        IClassFactory* pFactory = GetFactory(*pClsid);
        void* pv = &pFactory;
        EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IUnknown, &pv), hrExpected);
        EXPECT_EQ(pv, &pFactory);  // *ppv is only written by a successful query
        pFactory->Release();
    }
    // The half-built object was destroyed through its virtual destructor.
    EXPECT_EQ(g_iCreations, 1);
    EXPECT_EQ(g_iDestructions, 1);
}

TEST_F(Components, GetClassObjectChecksTheInterfaceBeforeTheTable)
{
    void* pv = nullptr;
    for (const GUID* pIid : {&IID_IUnknown, &IID_IClassFactory}) {
        EXPECT_EQ(DllGetClassObject(CLSID_Unknown, *pIid, &pv), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(DllGetClassObject(CLSID_Hooked, *pIid, &pv), S_OK);
        static_cast<IClassFactory*>(pv)->Release();
    }
    EXPECT_EQ(DllGetClassObject(CLSID_Unknown, IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_ITestValue, &pv), E_NOINTERFACE);

    // An empty (or negative) table knows no class and registers nothing.
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    const int32_t i32Rows = g_iTemplates;
    for (int32_t i32Empty : {0, -1}) {
        g_iTemplates = i32Empty;
        EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_IClassFactory, &pv), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_ITestValue, &pv), E_NOINTERFACE);
        CStdoutCapture capture;
        EXPECT_EQ(DllRegisterServer(L"/m.so"), S_OK);
        EXPECT_EQ(DllUnregisterServer(), S_OK);
        EXPECT_EQ(capture.Text(), "");
    }
    g_iTemplates = i32Rows;
    EXPECT_FALSE(NQxTest::FileExists(dir.File("CLSIDs")));
}

TEST_F(Components, CanUnloadOnlyWithoutObjectsAndLocks)
{
    ASSERT_EQ(g_i32Objects, 0);
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);  // the factory itself lives
    EXPECT_EQ(pFactory->LockServer(1), S_OK);
    EXPECT_EQ(pFactory->LockServer(5), S_OK);
    pFactory->Release();
    EXPECT_EQ(CQxClassFactory::ms_i32LockedCount, 2);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    CQxClassFactory standalone(&g_aoTemplates[0]);
    standalone.LockServer(0);
    standalone.LockServer(0);
    EXPECT_EQ(CQxClassFactory::ms_i32LockedCount, 0);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);  // "standalone" still lives
}

TEST_F(Components, EntryPointRunsInitRoutinesForAttachAndDetachOnly)
{
    EXPECT_EQ(DllEntryPoint(4242, 1, nullptr), 1);
    for (int iReason : {0, 5, 2}) EXPECT_EQ(DllEntryPoint(77, iReason, nullptr), 1);
    EXPECT_EQ(g_hInst, 4242);
    EXPECT_EQ(g_vecCalls, (std::vector<std::string>{"init+1", "init+4", "init-1", "init-4"}));
}

TEST_F(Components, CountsStayExactUnderConcurrentUse)
{
    // Each thread uses its own factory (a factory's own count is not shared
    // between threads); the shared object's count, the live-object counter
    // and the lock count are shared.
    constexpr int kThreads = 4, kRounds = 2000, kShared = 1000000;
    ITestValue* pShared = nullptr;
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    ASSERT_EQ(pFactory->CreateInstance(nullptr, IID_ITestValue, reinterpret_cast<void**>(&pShared)), S_OK);
    pFactory->Release();
    std::atomic<bool> bGo{false};
    std::atomic<int> iFailures{0};
    std::vector<std::thread> vecThreads;
    for (int t = 0; t < kThreads; ++t) {
        vecThreads.emplace_back([&] {
            while (!bGo.load()) {
            }
            for (int i = 0; i < kShared; ++i)
                if (pShared->AddRef() < 2 || pShared->Release() < 1) ++iFailures;
            IClassFactory* pOwn = GetFactory(CLSID_Plain);
            for (int i = 0; i < kRounds; ++i) {
                pOwn->LockServer(1);
                ITestValue* pValue = nullptr;
                if (pOwn->CreateInstance(nullptr, IID_ITestValue, reinterpret_cast<void**>(&pValue)) != S_OK ||
                    pValue->Release() != 0)
                    ++iFailures;
                pOwn->LockServer(0);
            }
            pOwn->Release();
        });
    }
    bGo = true;
    for (auto& thread : vecThreads) thread.join();
    EXPECT_EQ(iFailures.load(), 0);
    EXPECT_EQ(g_iCreations.load(), 1 + kThreads * kRounds);
    EXPECT_EQ(g_iDestructions.load(), kThreads * kRounds);
    EXPECT_EQ(CQxClassFactory::ms_i32LockedCount, 0);
    EXPECT_EQ(static_cast<CValue*>(pShared)->Count(), 1);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    pShared->Release();
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

// --- registration -----------------------------------------------------------

// The registry file after registering the given rows (in table order) with
// in_strPath: each new key goes right below the header.
std::string Registry(const std::vector<const GUID*>& in_vecRows, const std::string& in_strPath)
{
    std::string str;
    for (const GUID* pClsid : in_vecRows) {
        std::string strLine = " ";
        for (wchar_t c : qxGuidToString(*pClsid)) strLine += static_cast<char>(c);
        str = strLine + "=" + in_strPath + "\n" + str;
    }
    return " [CLSID]\n" + str;
}

std::string Lines(const char* in_pszVerb, int in_iRows)
{
    const char* const apszNames[] = {"Plain Class", "Failing Class", "Nothing Class", "Half Built Class",
                                     "Hooked Class \xC3\xA9"};
    std::string str;
    for (int i = 0; i < in_iRows; ++i) str += std::string("- - ") + in_pszVerb + " " + apszNames[i] + "\n";
    return str;
}

TEST_F(Components, RegistersEveryRowAndUnregistersThemAgain)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    const std::vector<const GUID*> vecAll = {&CLSID_Plain, &CLSID_Failing, &CLSID_Nothing, &CLSID_HalfBuilt,
                                             &CLSID_Hooked};
    CStdoutCapture capture;
    EXPECT_EQ(DllRegisterServer(L"/usr/lib/qx/m\u00F6dule.so"), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), Registry(vecAll, "/usr/lib/qx/m\xC3\xB6" "dule.so"));
    // Registering again replaces the values in place.
    EXPECT_EQ(DllRegisterServer(L"/other.so"), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), Registry(vecAll, "/other.so"));
    EXPECT_EQ(DllUnregisterServer(), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), " [CLSID]\n");
    EXPECT_EQ(capture.Text(), Lines("Register", 5) + Lines("Register", 5) + Lines("Unregister", 5));
    EXPECT_EQ(g_vecCalls, (std::vector<std::string>{"reg+5", "reg+5", "reg-5"}));

    // A refusing register routine stops the walk before its row, whose line
    // is not printed.
    CTempDir other;
    CScopedEnv otherEnv("PLWUTILS", other.Path().c_str());
    g_hrRegisterHook = E_TEST_CREATION;
    CStdoutCapture refused;
    EXPECT_EQ(DllRegisterServer(L"/m.so"), E_TEST_CREATION);
    EXPECT_EQ(refused.Text(), Lines("Register", 4));
    EXPECT_EQ(ReadFile(other.File("CLSIDs")), Registry({&CLSID_Plain, &CLSID_Failing, &CLSID_Nothing, &CLSID_HalfBuilt}, "/m.so"));
}

TEST_F(Components, MissingRegistryFolderVariableStopsAfterTheFirstRow)
{
    CScopedEnv env("PLWUTILS", nullptr);
    const std::string strMissing = "QxInternalGetIniFilePath: Environement variable PLWUTILS not found.\n";
    CStdoutCapture capture;
    EXPECT_EQ(DllRegisterServer(L"/m.so"), E_FAIL);
    EXPECT_EQ(DllUnregisterServer(), E_FAIL);
    EXPECT_EQ(capture.Text(), strMissing + Lines("Register", 1) + strMissing + Lines("Unregister", 1));
    EXPECT_TRUE(g_vecCalls.empty());  // the hooked row was never reached
}

}  // namespace
