// The class registry and instance creation, end to end: the test module is
// registered into the fixed registry path (inside a private mount namespace,
// see registry_sandbox.h) and created by class identifier in this process,
// which also uses libqxbase's own class table.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxregistry.h>

#include "com/registry_sandbox.h"
#include "com/testmodule/testmodule.h"
#include "support/qxtest_support.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <random>

namespace {

using NQxTest::CScopedEnv;
using NQxTest::CStdoutCapture;
using NQxTest::CTempDir;
using NQxTest::ReadFile;
using NQxTest::WriteFile;

const char* const kModule = QXBASE_TEST_MODULE_PATH;
const char* const kLackingModule = QXBASE_TEST_LACKING_MODULE_PATH;

std::string Narrow(const std::wstring& in_str)
{
    std::string str;
    for (wchar_t c : in_str) str += static_cast<char>(c);
    return str;
}

std::string RegistryText(const GUID& in_clsid, const std::string& in_strPath)
{
    return " [CLSID]\n " + Narrow(qxGuidToString(in_clsid)) + "=" + in_strPath + "\n";
}

// Tries CoCreateInstance and checks the failure contract.
HRESULT CreateFails(const GUID& in_clsid)
{
    void* pv = &pv;
    const HRESULT hr = CoCreateInstance(in_clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &pv);
    EXPECT_EQ(pv, nullptr);
    return hr;
}

template <class T>
T* ModuleEntry(const char* in_pszName)
{
    void* hModule = dlopen(kModule, RTLD_NOW | RTLD_NOLOAD);
    EXPECT_NE(hModule, nullptr) << "the test module is not loaded";
    if (!hModule) return nullptr;
    T* pfn = reinterpret_cast<T*>(dlsym(hModule, in_pszName));
    dlclose(hModule);  // only drops the reference taken by RTLD_NOLOAD
    return pfn;
}

TEST(IdentifierText, IsThirtySevenUpperCaseCharacters)
{
    const GUID guid = {1, 2, 3, {0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}};
    EXPECT_EQ(qxGuidToString(guid), L"{00000001-0002-0003-0A0B0C0D0E0F1011}");
    const GUID high = {0xFEDCBA98, 0xABCD, 0xEF01, {0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x88}};
    EXPECT_EQ(qxGuidToString(high), L"{FEDCBA98-ABCD-EF01-FFEEDDCCBBAA9988}");
    EXPECT_EQ(qxGuidToString(high).size(), 37u);
    EXPECT_EQ(qxGuidToString(IID_IClassFactory), L"{00000001-0000-0000-C000000000000046}");
}

TEST(RegistryPath, ComesFromTheEnvironmentOrFailsWithItsMessage)
{
    char szPath[QX_MAX_PATH];
    {
        CScopedEnv env("PLWUTILS", "/some/where");
        EXPECT_TRUE(QxBaseCOMNamespace::QxInternalGetIniFilePath(szPath));
        EXPECT_STREQ(szPath, "/some/where/CLSIDs");
    }
    {
        // Longer than the buffer: cut, never overrun.
        const std::string strLong(5000, 'p');
        CScopedEnv env("PLWUTILS", strLong.c_str());
        EXPECT_TRUE(QxBaseCOMNamespace::QxInternalGetIniFilePath(szPath));
        EXPECT_EQ(std::string(szPath), strLong.substr(0, QX_MAX_PATH - 1));
    }
    CScopedEnv env("PLWUTILS", nullptr);
    CStdoutCapture capture;
    EXPECT_FALSE(QxBaseCOMNamespace::QxInternalGetIniFilePath(szPath));
    EXPECT_EQ(QxBaseCOMNamespace::QxInternalRegisterServer(CLSID_TestCounter, L"x", L"/m.so"), E_FAIL);
    EXPECT_EQ(QxBaseCOMNamespace::QxInternalUnregisterServer(CLSID_TestCounter), E_FAIL);
    const std::string strLine = "QxInternalGetIniFilePath: Environement variable PLWUTILS not found.\n";
    EXPECT_EQ(capture.Text(), strLine + strLine + strLine);
}

TEST(RegistryFile, RegisterAndUnregisterOneClass)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    using namespace QxBaseCOMNamespace;
    EXPECT_EQ(QxInternalRegisterServer(CLSID_TestCounter, L"ignored", L"/a.so"), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), RegistryText(CLSID_TestCounter, "/a.so"));
    EXPECT_EQ(QxInternalRegisterServer(CLSID_TestCounter, nullptr, L"/b.so"), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), RegistryText(CLSID_TestCounter, "/b.so"));
    EXPECT_EQ(QxInternalUnregisterServer(CLSID_TestGreeter), S_OK);  // absent: no change
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), RegistryText(CLSID_TestCounter, "/b.so"));
    EXPECT_EQ(QxInternalUnregisterServer(CLSID_TestCounter), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), " [CLSID]\n");

    // An unwritable registry: the write reports itself, the answer stays S_OK.
    // The change is still pending when the file object goes, so its
    // destructor tries (and reports) once more.
    CScopedEnv missing("PLWUTILS", dir.File("no/such/folder").c_str());
    CStdoutCapture capture;
    EXPECT_EQ(QxInternalRegisterServer(CLSID_TestCounter, L"x", L"/a.so"), S_OK);
    const std::string strLine = "Unable to open " + dir.File("no/such/folder") + "/CLSIDs for writing\n";
    EXPECT_EQ(capture.Text(), strLine + strLine);
}

// --- in the sandbox ---------------------------------------------------------

class Creation : public ::testing::Test {
protected:
    void SetUp() override
    {
        QX_REQUIRE_REGISTRY_SANDBOX();
        NQxTestSandbox::RemoveRegistry();
    }
};

TEST_F(Creation, BadRegistryFilesAnswerNoInterface)
{
    EXPECT_FALSE(NQxTest::FileExists(QX_CLASS_REGISTRY_PATH));
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);  // missing

    NQxTestSandbox::MakeRegistryADirectory();  // cannot be read
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);

    NQxTestSandbox::WriteRegistry("");
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);

    std::mt19937 rng(99);
    std::string strGarbage(65536, '\0');
    for (char& c : strGarbage) c = static_cast<char>(rng());
    NQxTestSandbox::WriteRegistry(strGarbage);
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);

    // Lines of a megabyte around a real record of another class.
    NQxTestSandbox::WriteRegistry(std::string(1 << 20, 'x') + "\n[CLSID]\n" +
                                  Narrow(qxGuidToString(CLSID_TestGreeter)) + "=" +
                                  std::string(1 << 20, '/') + "\n");
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);
    // The megabyte path itself does not fit the path buffer.
    EXPECT_EQ(CreateFails(CLSID_TestGreeter), E_NOINTERFACE);

    // The 38-character form that other tools write never matches.
    NQxTestSandbox::WriteRegistry("[CLSID]\n{7D0C1A01-51E2-4C7B-9A10-3E5521600101}=" + std::string(kModule) + "\n");
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);
}

TEST_F(Creation, BadModulesAnswerNoInterface)
{
    CTempDir dir;
    const std::string strText = dir.File("text.so");
    WriteFile(strText, "this is not an ELF file\n");
    const std::string strNames[] = {dir.File("missing.so"), strText, kLackingModule, dir.Path()};
    for (const std::string& strPath : strNames) {
        NQxTestSandbox::WriteRegistry(RegistryText(CLSID_TestCounter, strPath));
        EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE) << strPath;
    }
    // The module without entry points was loaded, and libqxbase's own entry
    // points, visible through it, were not taken for its.
    EXPECT_NE(dlopen(kLackingModule, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST_F(Creation, RegisteredModuleCreatesItsClassesBesideLibqxbase)
{
    const int32_t i32LibraryObjects = g_i32Objects;
    NQxTestSandbox::WriteRegistry(RegistryText(CLSID_TestCounter, kModule));
    ITestCounter* pCounter = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_TestCounter, nullptr, CLSCTX_INPROC_SERVER, IID_ITestCounter,
                               reinterpret_cast<void**>(&pCounter)),
              S_OK);
    ASSERT_NE(pCounter, nullptr);
    EXPECT_EQ(pCounter->Increment(), 1);
    EXPECT_EQ(pCounter->Increment(), 2);
    // The module counts its object (the factory is gone); libqxbase's
    // counter never moved.
    EXPECT_EQ(pCounter->ModuleObjects(), 1);
    EXPECT_EQ(g_i32Objects, i32LibraryObjects);
    const int32_t i32Inits = pCounter->ModuleInitCalls();
    EXPECT_GE(i32Inits, 2);  // both rows' init routines ran on attach

    auto* pfnCanUnload = ModuleEntry<HRESULT()>("DllCanUnloadNow");
    ASSERT_NE(pfnCanUnload, nullptr);
    EXPECT_EQ(pfnCanUnload(), S_FALSE);
    EXPECT_EQ(DllCanUnloadNow(), S_OK);  // libqxbase's own view

    // libqxbase's table does not know the module's classes.
    void* pv = nullptr;
    EXPECT_EQ(DllGetClassObject(CLSID_TestCounter, IID_IClassFactory, &pv), CLASS_E_NOAGGREGATION);

    // Each creation attaches the module again.
    ITestCounter* pSecond = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_TestCounter, nullptr, 0, IID_ITestCounter,
                               reinterpret_cast<void**>(&pSecond)),
              S_OK);
    EXPECT_NE(pSecond, pCounter);
    EXPECT_EQ(pSecond->ModuleInitCalls(), i32Inits + 2);
    EXPECT_EQ(pSecond->ModuleObjects(), 2);
    EXPECT_EQ(pSecond->Release(), 0u);
    EXPECT_EQ(pCounter->Release(), 0u);
    EXPECT_EQ(pfnCanUnload(), S_OK);
}

TEST_F(Creation, FactoryAndModuleCodesPassThrough)
{
    // A class the registry sends to a module that does not have it.
    const GUID clsidStranger = {0x7D0C1A01, 0x51E2, 0x4C7B, {0x9A, 0x10, 0x3E, 0x55, 0x21, 0x60, 0x0F, 0x0F}};
    NQxTestSandbox::WriteRegistry(RegistryText(clsidStranger, kModule));
    EXPECT_EQ(CreateFails(clsidStranger), CLASS_E_NOAGGREGATION);

    // The class exists but not the interface: the new object dies again.
    NQxTestSandbox::WriteRegistry(RegistryText(CLSID_TestGreeter, kModule));
    void* pv = &pv;
    EXPECT_EQ(CoCreateInstance(CLSID_TestGreeter, nullptr, 0, IID_ITestCounter, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, nullptr);
    auto* pfnCanUnload = ModuleEntry<HRESULT()>("DllCanUnloadNow");
    ASSERT_NE(pfnCanUnload, nullptr);
    EXPECT_EQ(pfnCanUnload(), S_OK);

    ITestGreeter* pGreeter = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_TestGreeter, nullptr, 0, IID_ITestGreeter,
                               reinterpret_cast<void**>(&pGreeter)),
              S_OK);
    EXPECT_STREQ(pGreeter->Greeting(), L"hello from the test module");
    EXPECT_EQ(pGreeter->Release(), 0u);
}

TEST_F(Creation, ModuleAggregatesThroughItsFactory)
{
    NQxTestSandbox::WriteRegistry(RegistryText(CLSID_TestGreeter, kModule));
    ITestGreeter* pWarmUp = nullptr;  // loads the module
    ASSERT_EQ(CoCreateInstance(CLSID_TestGreeter, nullptr, 0, IID_ITestGreeter,
                               reinterpret_cast<void**>(&pWarmUp)),
              S_OK);
    pWarmUp->Release();

    auto* pfnGetClassObject = ModuleEntry<HRESULT(const GUID&, const GUID&, void**)>("DllGetClassObject");
    ASSERT_NE(pfnGetClassObject, nullptr);

    struct COuter : IUnknown {
        HRESULT QueryInterface(const GUID&, void** ppv) override
        {
            *ppv = nullptr;
            return E_NOINTERFACE;
        }
        uint32_t AddRef() override { return static_cast<uint32_t>(++refs); }
        uint32_t Release() override { return static_cast<uint32_t>(--refs); }
        int refs = 1;
    } outer;

    // The counter refuses an outer object with its own code.
    IClassFactory* pFactory = nullptr;
    ASSERT_EQ(pfnGetClassObject(CLSID_TestCounter, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)),
              S_OK);
    void* pv = &pv;
    EXPECT_EQ(pFactory->CreateInstance(&outer, IID_IUnknown, &pv), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(pv, &pv);
    EXPECT_EQ(pFactory->Release(), 0u);

    // The greeter aggregates: its interfaces' reference counts reach the
    // outer object only.
    ASSERT_EQ(pfnGetClassObject(CLSID_TestGreeter, IID_IUnknown, reinterpret_cast<void**>(&pFactory)), S_OK);
    INonDelegatingUnknown* pInner = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&pInner)), S_OK);
    delete pFactory;  // as instance creation does
    ITestGreeter* pGreeter = nullptr;
    ASSERT_EQ(pInner->NonDelegatingQueryInterface(IID_ITestGreeter, reinterpret_cast<void**>(&pGreeter)),
              S_OK);
    EXPECT_EQ(outer.refs, 2);
    EXPECT_EQ(pGreeter->AddRef(), 3u);
    void* pvOuter = &pvOuter;
    EXPECT_EQ(pGreeter->QueryInterface(IID_ITestGreeter, &pvOuter), E_NOINTERFACE);  // the outer decides
    pGreeter->Release();
    pGreeter->Release();
    EXPECT_EQ(outer.refs, 1);
    EXPECT_EQ(pInner->NonDelegatingRelease(), 0u);
    EXPECT_EQ(ModuleEntry<HRESULT()>("DllCanUnloadNow")(), S_OK);
}

TEST_F(Creation, NonAsciiModulePathLoadsInTheCLocale)
{
    ASSERT_NE(setlocale(LC_ALL, "C"), nullptr);
    CTempDir dir;
    const std::string strFolder = dir.File("m\xC3\xB6" "dul\xC3\xA9-\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88");
    ASSERT_EQ(mkdir(strFolder.c_str(), 0755), 0);
    const std::string strCopy = strFolder + "/copy.so";
    WriteFile(strCopy, ReadFile(kModule));
    NQxTestSandbox::WriteRegistry(RegistryText(CLSID_TestCounter, strCopy));
    char szPath[QX_MAX_PATH];
    ASSERT_TRUE(GetDllPath(CLSID_TestCounter, szPath));
    EXPECT_EQ(std::string(szPath), strCopy);
    ITestCounter* pCounter = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_TestCounter, nullptr, 0, IID_ITestCounter,
                               reinterpret_cast<void**>(&pCounter)),
              S_OK);
    // A separate copy is a separate module with its own counter.
    EXPECT_EQ(pCounter->ModuleObjects(), 1);
    EXPECT_EQ(pCounter->Release(), 0u);
}

#ifdef QXBASE_TEST_QXREGSVR_PATH
// Runs qxregsvr with PLWUTILS pointing at the fixed registry folder; returns
// its exit status and output.
int RunRegsvr(const std::string& in_strArgs, std::string* out_strOutput)
{
    CTempDir dir;
    const std::string strCommand = std::string(QXBASE_TEST_QXREGSVR_PATH) + " " + in_strArgs + " > " +
                                   dir.File("out") + " 2>&1";
    const int iStatus = system(strCommand.c_str());
    *out_strOutput = ReadFile(dir.File("out"));
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

TEST_F(Creation, RegisteredWithTheToolAndCreatedByIdentifier)
{
    CScopedEnv env("PLWUTILS", "/opt/QueltoVideo/PLW.utils");
    std::string strOutput;
    ASSERT_EQ(RunRegsvr(kModule, &strOutput), 0) << strOutput;
    EXPECT_EQ(strOutput, "- - Register " + Narrow(TESTMODULE_COUNTER_NAME) + "\n- - Register " +
                             Narrow(TESTMODULE_GREETER_NAME) + "\n");
    EXPECT_EQ(ReadFile(QX_CLASS_REGISTRY_PATH),
              " [CLSID]\n " + Narrow(qxGuidToString(CLSID_TestGreeter)) + "=" + kModule + "\n " +
                  Narrow(qxGuidToString(CLSID_TestCounter)) + "=" + kModule + "\n");

    ITestCounter* pCounter = nullptr;
    ITestGreeter* pGreeter = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_TestCounter, nullptr, 0, IID_ITestCounter,
                               reinterpret_cast<void**>(&pCounter)),
              S_OK);
    ASSERT_EQ(CoCreateInstance(CLSID_TestGreeter, nullptr, 0, IID_ITestGreeter,
                               reinterpret_cast<void**>(&pGreeter)),
              S_OK);
    EXPECT_EQ(pCounter->ModuleObjects(), 2);
    pGreeter->Release();
    pCounter->Release();

    ASSERT_EQ(RunRegsvr(std::string("-u ") + kModule, &strOutput), 0) << strOutput;
    EXPECT_EQ(strOutput, "- - Unregister " + Narrow(TESTMODULE_COUNTER_NAME) + "\n- - Unregister " +
                             Narrow(TESTMODULE_GREETER_NAME) + "\n");
    EXPECT_EQ(ReadFile(QX_CLASS_REGISTRY_PATH), " [CLSID]\n");
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);
}

TEST(Qxregsvr, RefusesWhatItCannotRegisterWithAClearMessage)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    WriteFile(dir.File("text.so"), "not an ELF file");
    struct {
        std::string strArgs;
        int iStatus;
        std::string strMessage;
    } cases[] = {
        {"", 2, "usage: qxregsvr [-u] MODULE.so"},
        {"-u -u " + std::string(kModule), 2, "usage:"},
        {dir.File("missing.so"), 4, dir.File("missing.so") + ": no such module file"},
        {dir.Path(), 4, "no such module file"},
        {dir.File("text.so"), 5, "is not a loadable module"},
        {kLackingModule, 6, "has no DllRegisterServer entry point"},
        {std::string("-u ") + kLackingModule, 6, "has no DllUnregisterServer entry point"},
    };
    std::string strOutput;
    for (const auto& c : cases) {
        EXPECT_EQ(RunRegsvr(c.strArgs, &strOutput), c.iStatus) << c.strArgs;
        EXPECT_NE(strOutput.find(c.strMessage), std::string::npos) << c.strArgs << ": " << strOutput;
    }
    EXPECT_FALSE(NQxTest::FileExists(dir.File("CLSIDs")));

    CScopedEnv unset("PLWUTILS", nullptr);
    EXPECT_EQ(RunRegsvr(kModule, &strOutput), 3);
    EXPECT_NE(strOutput.find("PLWUTILS is not set"), std::string::npos) << strOutput;
}
#endif

}  // namespace

int main(int argc, char** argv)
{
    int iExitStatus = 0;
    if (NQxTestSandbox::RunInSandbox(argc, argv, &iExitStatus)) return iExitStatus;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
