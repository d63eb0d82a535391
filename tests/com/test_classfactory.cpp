// The class factory, the entry points and the registration walk, as a
// component module gets them: this program links the module kit whole and
// defines its own class table, exactly like a module built with
// qxbase_add_module.
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

const GUID IID_ITestValue = {0x3C1F0000, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0x01}};
const GUID CLSID_Plain = {0x3C1F0001, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0x0A}};
const GUID CLSID_Failing = {0x3C1F0002, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0x0B}};
const GUID CLSID_Nothing = {0x3C1F0003, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0x0C}};
const GUID CLSID_HalfBuilt = {0x3C1F0004, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0x0D}};
const GUID CLSID_Hooked = {0x3C1F0005, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0x0E}};
const GUID CLSID_Unknown = {0x3C1F00FF, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 0xFF}};
const HRESULT E_TEST_CREATION = QX_HRESULT(0x80070005u);

class ITestValue : public IUnknown {
public:
    virtual int Value() = 0;
};

std::atomic<int> g_iCreations{0};
std::atomic<int> g_iDestructions{0};
std::vector<std::string> g_vecCalls;  // init and register hook calls, in order
HRESULT g_hrRegisterHook = S_OK;

class CValue : public CQxUnknown, public ITestValue {
public:
    CValue(IUnknown* in_pUnkOuter, HRESULT* out_phr) : CQxUnknown(L"CValue", in_pUnkOuter, out_phr)
    {
        ++g_iCreations;
    }
    ~CValue() override { ++g_iDestructions; }
    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override
    {
        if (IsEqualGUID(riid, IID_ITestValue))
            return QxGetInterface(static_cast<ITestValue*>(this), ppv);
        return CQxUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
    int Value() override { return 7; }
    int32_t Count() const { return m_i32RefCount; }
};

CQxUnknown* CreateValue(IUnknown* outer, HRESULT* phr) { return new CValue(outer, phr); }

CQxUnknown* CreateFailing(IUnknown*, HRESULT* phr)
{
    *phr = E_TEST_CREATION;
    return nullptr;
}

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

void InitHook(bool in_bLoading, const GUID* in_pClsid)
{
    g_vecCalls.push_back(Describe("init", in_bLoading, in_pClsid));
}

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

// An outer object that counts what reaches it.
class COuter : public IUnknown {
public:
    HRESULT QueryInterface(const GUID&, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override { return static_cast<uint32_t>(++m_iRefs); }
    uint32_t Release() override { return static_cast<uint32_t>(--m_iRefs); }
    int m_iRefs = 1;
};

IClassFactory* GetFactory(const GUID& in_clsid)
{
    IClassFactory* pFactory = nullptr;
    EXPECT_EQ(DllGetClassObject(in_clsid, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)),
              S_OK);
    return pFactory;
}

class ClassFactory : public ::testing::Test {
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

TEST_F(ClassFactory, AnswersItsTwoInterfacesAndCountsPlainly)
{
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    ASSERT_NE(pFactory, nullptr);
    EXPECT_EQ(g_i32Objects, m_i32Objects + 1);  // a factory is a live object too

    void* pv = nullptr;
    GUID copy = IID_IUnknown;
    EXPECT_EQ(pFactory->QueryInterface(copy, &pv), S_OK);
    EXPECT_EQ(pv, pFactory);
    copy = IID_IClassFactory;
    EXPECT_EQ(pFactory->QueryInterface(copy, &pv), S_OK);
    EXPECT_EQ(pv, pFactory);
    pv = &copy;
    EXPECT_EQ(pFactory->QueryInterface(IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, &copy);  // untouched
    EXPECT_EQ(pFactory->AddRef(), 4u);
    EXPECT_EQ(pFactory->Release(), 3u);
    EXPECT_EQ(pFactory->Release(), 2u);
    EXPECT_EQ(pFactory->Release(), 1u);
    EXPECT_EQ(pFactory->Release(), 0u);  // deleted
}

TEST_F(ClassFactory, CreatesWithExactlyTheQueriedReference)
{
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    ITestValue* pValue = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(nullptr, IID_ITestValue, reinterpret_cast<void**>(&pValue)),
              S_OK);
    EXPECT_EQ(pValue->Value(), 7);
    EXPECT_EQ(static_cast<CValue*>(pValue)->Count(), 1);
    EXPECT_EQ(pValue->Release(), 0u);
    EXPECT_EQ(g_iDestructions, 1);

    // A failed query destroys the new object again.
    void* pv = &pFactory;
    EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IClassFactory, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, nullptr);
    EXPECT_EQ(g_iCreations, 2);
    EXPECT_EQ(g_iDestructions, 2);
    pFactory->Release();
}

TEST_F(ClassFactory, AggregationHandsOutTheNonDelegatingSideOnly)
{
    IClassFactory* pFactory = GetFactory(CLSID_Plain);
    COuter outer;

    void* pv = &outer;
    EXPECT_EQ(pFactory->CreateInstance(&outer, IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, &outer);  // untouched
    EXPECT_EQ(g_iCreations, 0);  // refused before anything was built

    INonDelegatingUnknown* pInner = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&pInner)),
              S_OK);
    CValue* pObject = static_cast<CValue*>(pInner);
    EXPECT_EQ(pInner, static_cast<INonDelegatingUnknown*>(pObject));
    EXPECT_EQ(pObject->Count(), 1);
    EXPECT_EQ(outer.m_iRefs, 1);

    // Queries through the inner interface reach the outer's count only.
    ITestValue* pValue = nullptr;
    ASSERT_EQ(pInner->NonDelegatingQueryInterface(IID_ITestValue, reinterpret_cast<void**>(&pValue)),
              S_OK);
    EXPECT_EQ(outer.m_iRefs, 2);
    pValue->AddRef();
    EXPECT_EQ(outer.m_iRefs, 3);
    EXPECT_EQ(pObject->Count(), 1);
    void* pvOuter = &outer;
    EXPECT_EQ(pValue->QueryInterface(IID_ITestValue, &pvOuter), E_NOINTERFACE);  // the outer answered
    EXPECT_EQ(pvOuter, nullptr);
    pValue->Release();
    pValue->Release();
    EXPECT_EQ(outer.m_iRefs, 1);
    EXPECT_EQ(pInner->NonDelegatingRelease(), 0u);
    EXPECT_EQ(g_iDestructions, 1);
    pFactory->Release();
}

TEST_F(ClassFactory, CreationFailuresGiveTheirCodesAndLeaveNothingBehind)
{
    struct {
        const GUID* pClsid;
        HRESULT hrExpected;
    } cases[] = {
        {&CLSID_Failing, E_TEST_CREATION},
        {&CLSID_Nothing, E_OUTOFMEMORY},
        {&CLSID_HalfBuilt, E_TEST_CREATION},
    };
    for (const auto& c : cases) {
        IClassFactory* pFactory = GetFactory(*c.pClsid);
        void* pv = &pFactory;
        EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IUnknown, &pv), c.hrExpected);
        EXPECT_EQ(pv, &pFactory);  // *ppv is only written by a successful query
        pFactory->Release();
    }
    // The half-built object was destroyed through its virtual destructor.
    EXPECT_EQ(g_iCreations, 1);
    EXPECT_EQ(g_iDestructions, 1);
}

TEST_F(ClassFactory, GetClassObjectChecksTheInterfaceBeforeTheTable)
{
    void* pv = nullptr;
    const GUID* pIids[] = {&IID_IUnknown, &IID_IClassFactory};
    for (const GUID* pIid : pIids) {
        EXPECT_EQ(DllGetClassObject(CLSID_Unknown, *pIid, &pv), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(DllGetClassObject(CLSID_Hooked, *pIid, &pv), S_OK);
        static_cast<IClassFactory*>(pv)->Release();
    }
    EXPECT_EQ(DllGetClassObject(CLSID_Unknown, IID_ITestValue, &pv), E_NOINTERFACE);
    EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_ITestValue, &pv), E_NOINTERFACE);

    const int32_t i32Rows = g_iTemplates;
    g_iTemplates = 0;
    EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_IClassFactory, &pv), CLASS_E_NOAGGREGATION);
    g_iTemplates = -1;
    EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_IClassFactory, &pv), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(DllGetClassObject(CLSID_Plain, IID_ITestValue, &pv), E_NOINTERFACE);
    g_iTemplates = i32Rows;
}

TEST_F(ClassFactory, CanUnloadOnlyWithoutObjectsAndLocks)
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

TEST_F(ClassFactory, EntryPointRunsInitRoutinesForAttachAndDetachOnly)
{
    EXPECT_EQ(DllEntryPoint(4242, 1, nullptr), 1);
    EXPECT_EQ(g_hInst, 4242);
    EXPECT_EQ(DllEntryPoint(77, 0, nullptr), 1);
    EXPECT_EQ(g_hInst, 4242);
    EXPECT_EQ(DllEntryPoint(99, 5, nullptr), 1);
    EXPECT_EQ(DllEntryPoint(99, 2, nullptr), 1);
    EXPECT_EQ(g_hInst, 4242);
    EXPECT_EQ(g_vecCalls, (std::vector<std::string>{"init+1", "init+4", "init-1", "init-4"}));
}

TEST_F(ClassFactory, ModuleCountersStayExactUnderConcurrentUse)
{
    // Each thread uses its own factory (a factory's own count is not
    // shared between threads); objects, the live-object counter and the
    // lock count are.
    constexpr int kThreads = 4;
    constexpr int kRounds = 2000;
    ITestValue* pShared = nullptr;
    {
        IClassFactory* pFactory = GetFactory(CLSID_Plain);
        ASSERT_EQ(pFactory->CreateInstance(nullptr, IID_ITestValue, reinterpret_cast<void**>(&pShared)),
                  S_OK);
        pFactory->Release();
    }
    std::atomic<bool> bGo{false};
    std::atomic<int> iFailures{0};
    std::vector<std::thread> vecThreads;
    for (int t = 0; t < kThreads; ++t) {
        vecThreads.emplace_back([&] {
            while (!bGo.load()) {
            }
            IClassFactory* pFactory = nullptr;
            if (DllGetClassObject(CLSID_Plain, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)) != S_OK) {
                ++iFailures;
                return;
            }
            for (int i = 0; i < kRounds; ++i) {
                pFactory->LockServer(1);
                ITestValue* pValue = nullptr;
                if (pFactory->CreateInstance(nullptr, IID_ITestValue, reinterpret_cast<void**>(&pValue)) != S_OK)
                    ++iFailures;
                else if (pValue->Value() != 7 || pValue->Release() != 0)
                    ++iFailures;
                pShared->AddRef();
                pShared->Release();
                pFactory->LockServer(0);
            }
            pFactory->Release();
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

std::string RegistryLine(const GUID& in_clsid, const std::string& in_strPath)
{
    std::string str = " ";
    for (wchar_t c : qxGuidToString(in_clsid)) str += static_cast<char>(c);
    return str + "=" + in_strPath + "\n";
}

TEST_F(ClassFactory, RegistersEveryRowAndUnregistersThemAgain)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    const std::string strModule = "/usr/lib/qx/m\xC3\xB6" "dule.so";
    {
        CStdoutCapture capture;
        EXPECT_EQ(DllRegisterServer(L"/usr/lib/qx/m\u00F6dule.so"), S_OK);
        EXPECT_EQ(capture.Text(),
                  "- - Register Plain Class\n- - Register Failing Class\n"
                  "- - Register Nothing Class\n- - Register Half Built Class\n"
                  "- - Register Hooked Class \xC3\xA9\n");
    }
    // Each new key goes right below the header.
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")),
              " [CLSID]\n" + RegistryLine(CLSID_Hooked, strModule) +
                  RegistryLine(CLSID_HalfBuilt, strModule) + RegistryLine(CLSID_Nothing, strModule) +
                  RegistryLine(CLSID_Failing, strModule) + RegistryLine(CLSID_Plain, strModule));
    // Registering again replaces values in place.
    {
        CStdoutCapture capture;
        EXPECT_EQ(DllRegisterServer(L"/other.so"), S_OK);
    }
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")),
              " [CLSID]\n" + RegistryLine(CLSID_Hooked, "/other.so") +
                  RegistryLine(CLSID_HalfBuilt, "/other.so") + RegistryLine(CLSID_Nothing, "/other.so") +
                  RegistryLine(CLSID_Failing, "/other.so") + RegistryLine(CLSID_Plain, "/other.so"));
    {
        CStdoutCapture capture;
        EXPECT_EQ(DllUnregisterServer(), S_OK);
        EXPECT_EQ(capture.Text(),
                  "- - Unregister Plain Class\n- - Unregister Failing Class\n"
                  "- - Unregister Nothing Class\n- - Unregister Half Built Class\n"
                  "- - Unregister Hooked Class \xC3\xA9\n");
    }
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), " [CLSID]\n");
    EXPECT_EQ(g_vecCalls, (std::vector<std::string>{"reg+5", "reg+5", "reg-5"}));
}

TEST_F(ClassFactory, RegisterHookFailureStopsTheWalk)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    g_hrRegisterHook = E_TEST_CREATION;
    CStdoutCapture capture;
    EXPECT_EQ(DllRegisterServer(L"/m.so"), E_TEST_CREATION);
    // The rows before the refusing one are registered; its own line is not
    // printed.
    EXPECT_EQ(capture.Text(),
              "- - Register Plain Class\n- - Register Failing Class\n"
              "- - Register Nothing Class\n- - Register Half Built Class\n");
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")).find(RegistryLine(CLSID_Hooked, "/m.so")),
              std::string::npos);
    EXPECT_NE(ReadFile(dir.File("CLSIDs")).find(RegistryLine(CLSID_Plain, "/m.so")),
              std::string::npos);
}

TEST_F(ClassFactory, MissingRegistryFolderVariableStopsAfterTheFirstRow)
{
    CScopedEnv env("PLWUTILS", nullptr);
    {
        CStdoutCapture capture;
        EXPECT_EQ(DllRegisterServer(L"/m.so"), E_FAIL);
        EXPECT_EQ(capture.Text(),
                  "QxInternalGetIniFilePath: Environement variable PLWUTILS not found.\n"
                  "- - Register Plain Class\n");
    }
    {
        CStdoutCapture capture;
        EXPECT_EQ(DllUnregisterServer(), E_FAIL);
        EXPECT_EQ(capture.Text(),
                  "QxInternalGetIniFilePath: Environement variable PLWUTILS not found.\n"
                  "- - Unregister Plain Class\n");
    }
    EXPECT_TRUE(g_vecCalls.empty());  // the hooked row was never reached
}

TEST_F(ClassFactory, EmptyTableRegistersNothing)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    const int32_t i32Rows = g_iTemplates;
    g_iTemplates = 0;
    CStdoutCapture capture;
    EXPECT_EQ(DllRegisterServer(L"/m.so"), S_OK);
    EXPECT_EQ(DllUnregisterServer(), S_OK);
    g_iTemplates = i32Rows;
    EXPECT_EQ(capture.Text(), "");
    EXPECT_FALSE(NQxTest::FileExists(dir.File("CLSIDs")));
}

}  // namespace
