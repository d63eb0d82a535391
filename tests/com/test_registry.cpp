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
// A class the registry may send to the test module, which does not have it.
const GUID CLSID_Stranger = {0x7D0C1A01, 0x51E2, 0x4C7B, {0x9A, 0x10, 0x3E, 0x55, 0x21, 0x60, 0x0F, 0x0F}};

std::string Key(const GUID& in_clsid)
{
    std::string str;
    for (wchar_t c : qxGuidToString(in_clsid)) str += static_cast<char>(c);
    return str;
}

std::string Record(const GUID& in_clsid, const std::string& in_strPath)
{
    return " " + Key(in_clsid) + "=" + in_strPath + "\n";
}

std::string RegistryText(const GUID& in_clsid, const std::string& in_strPath)
{
    return " [CLSID]\n" + Record(in_clsid, in_strPath);
}

// Tries CoCreateInstance and checks the failure contract.
HRESULT CreateFails(const GUID& in_clsid, const GUID& in_iid = IID_IUnknown)
{
    void* pv = &pv;
    const HRESULT hr = CoCreateInstance(in_clsid, nullptr, CLSCTX_INPROC_SERVER, in_iid, &pv);
    EXPECT_EQ(pv, nullptr);
    return hr;
}

template <class T>
T* Create(const GUID& in_clsid, const GUID& in_iid)
{
    T* p = nullptr;
    EXPECT_EQ(CoCreateInstance(in_clsid, nullptr, 0, in_iid, reinterpret_cast<void**>(&p)), S_OK);
    return p;
}

// An entry point of the loaded test module itself.
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

TEST(Registry, KeysAndTheRegistryFolder)
{
    EXPECT_EQ(qxGuidToString({1, 2, 3, {0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}}),
              L"{00000001-0002-0003-0A0B0C0D0E0F1011}");
    EXPECT_EQ(qxGuidToString({0xFEDCBA98, 0xABCD, 0xEF01, {0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x88}}),
              L"{FEDCBA98-ABCD-EF01-FFEEDDCCBBAA9988}");

    char szPath[QX_MAX_PATH];
    {
        CScopedEnv env("PLWUTILS", "/some/where");
        EXPECT_TRUE(QxBaseCOMNamespace::QxInternalGetIniFilePath(szPath));
        EXPECT_STREQ(szPath, "/some/where/CLSIDs");
    }
    // Longer than the buffer: cut, never overrun.
    const std::string strLong(5000, 'p');
    CScopedEnv env("PLWUTILS", strLong.c_str());
    EXPECT_TRUE(QxBaseCOMNamespace::QxInternalGetIniFilePath(szPath));
    EXPECT_EQ(std::string(szPath), strLong.substr(0, QX_MAX_PATH - 1));
}

TEST(Registry, AbsentClassesAndUnwritableFilesChangeNothing)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    using namespace QxBaseCOMNamespace;
    EXPECT_EQ(QxInternalRegisterServer(CLSID_TestCounter, nullptr, L"/b.so"), S_OK);
    EXPECT_EQ(QxInternalUnregisterServer(CLSID_TestGreeter), S_OK);
    EXPECT_EQ(ReadFile(dir.File("CLSIDs")), RegistryText(CLSID_TestCounter, "/b.so"));

    // The write reports itself and the answer stays S_OK. The change is
    // still pending when the file object goes, so its destructor tries (and
    // reports) once more.
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
    NQxTestSandbox::MakeRegistryADirectory();                   // cannot be read
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);

    std::mt19937 rng(99);
    std::string strGarbage(65536, '\0');
    for (char& c : strGarbage) c = static_cast<char>(rng());
    const std::string astrFiles[] = {
        "", strGarbage,
        // The 38-character form that other tools write never matches.
        "[CLSID]\n{7D0C1A01-51E2-4C7B-9A10-3E5521600101}=" + std::string(kModule) + "\n",
        // A path cut short by a NUL would name another file.
        RegistryText(CLSID_TestCounter, kModule + std::string(1, '\0') + ".old"),
        // Lines of a megabyte around a real record of another class.
        std::string(1 << 20, 'x') + "\n" + RegistryText(CLSID_TestGreeter, std::string(1 << 20, '/'))};
    for (const std::string& strFile : astrFiles) {
        NQxTestSandbox::WriteRegistry(strFile);
        EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE) << strFile.size() << " bytes";
    }
    // The megabyte path itself does not fit the path buffer.
    EXPECT_EQ(CreateFails(CLSID_TestGreeter), E_NOINTERFACE);
}

TEST_F(Creation, BadModulesAnswerNoInterface)
{
    CTempDir dir;
    const std::string strText = dir.File("text.so");
    WriteFile(strText, "this is not an ELF file\n");
    for (const std::string& strPath : {dir.File("missing.so"), strText, std::string(kLackingModule), dir.Path()}) {
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
    NQxTestSandbox::WriteRegistry(RegistryText(CLSID_TestCounter, kModule) + Record(CLSID_TestGreeter, kModule) +
                                  Record(CLSID_Stranger, kModule));
    ITestCounter* pCounter = Create<ITestCounter>(CLSID_TestCounter, IID_ITestCounter);
    ASSERT_NE(pCounter, nullptr);
    EXPECT_EQ(pCounter->Increment(), 1);
    // The module counts its object (the factory is gone); libqxbase's
    // counter never moved, and its table does not know the module's classes.
    EXPECT_EQ(pCounter->ModuleObjects(), 1);
    EXPECT_EQ(g_i32Objects, i32LibraryObjects);
    void* pv = nullptr;
    EXPECT_EQ(DllGetClassObject(CLSID_TestCounter, IID_IClassFactory, &pv), CLASS_E_NOAGGREGATION);
    const int32_t i32Inits = pCounter->ModuleInitCalls();
    EXPECT_GE(i32Inits, 2);  // both rows' init routines ran on attach
    auto* pfnCanUnload = ModuleEntry<HRESULT()>("DllCanUnloadNow");
    ASSERT_NE(pfnCanUnload, nullptr);
    EXPECT_EQ(pfnCanUnload(), S_FALSE);
    EXPECT_EQ(DllCanUnloadNow(), S_OK);  // libqxbase's own view

    // Each creation attaches the module again.
    ITestGreeter* pGreeter = Create<ITestGreeter>(CLSID_TestGreeter, IID_ITestGreeter);
    ASSERT_NE(pGreeter, nullptr);
    EXPECT_STREQ(pGreeter->Greeting(), L"hello from the test module");
    EXPECT_EQ(pCounter->ModuleInitCalls(), i32Inits + 2);
    EXPECT_EQ(pCounter->ModuleObjects(), 2);
    // The factory's and the module's codes pass through; an object whose
    // query failed dies again.
    EXPECT_EQ(CreateFails(CLSID_TestGreeter, IID_ITestCounter), E_NOINTERFACE);
    EXPECT_EQ(CreateFails(CLSID_Stranger), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(pCounter->ModuleObjects(), 2);

    // The aggregatable class, made through the module's own factory: its
    // interfaces' references reach the outer object only.
    struct COuter : IUnknown {
        HRESULT QueryInterface(const GUID&, void**) override { return E_NOINTERFACE; }
        uint32_t AddRef() override { return static_cast<uint32_t>(++refs); }
        uint32_t Release() override { return static_cast<uint32_t>(--refs); }
        int refs = 1;
    } outer;
    auto* pfnGetClassObject = ModuleEntry<HRESULT(const GUID&, const GUID&, void**)>("DllGetClassObject");
    IClassFactory* pFactory = nullptr;
    ASSERT_EQ(pfnGetClassObject(CLSID_TestGreeter, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)), S_OK);
    INonDelegatingUnknown* pInner = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&pInner)), S_OK);
    delete pFactory;  // as instance creation does
    ITestGreeter* pAggregated = nullptr;
    ASSERT_EQ(pInner->NonDelegatingQueryInterface(IID_ITestGreeter, reinterpret_cast<void**>(&pAggregated)), S_OK);
    EXPECT_EQ(outer.refs, 2);
    EXPECT_EQ(pAggregated->Release(), 1u);
    EXPECT_EQ(pCounter->ModuleObjects(), 3);
    EXPECT_EQ(pInner->NonDelegatingRelease(), 0u);

    EXPECT_EQ(pGreeter->Release(), 0u);
    EXPECT_EQ(pCounter->Release(), 0u);
    EXPECT_EQ(pfnCanUnload(), S_OK);
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
    ITestCounter* pCounter = Create<ITestCounter>(CLSID_TestCounter, IID_ITestCounter);
    ASSERT_NE(pCounter, nullptr);
    // A separate copy is a separate module with its own counter.
    EXPECT_EQ(pCounter->ModuleObjects(), 1);
    EXPECT_EQ(pCounter->Release(), 0u);
}

#ifdef QXBASE_TEST_QXREGSVR_PATH
// Runs qxregsvr; returns its exit status and output.
int RunRegsvr(const std::string& in_strArgs, std::string* out_strOutput)
{
    CTempDir dir;
    const std::string strCommand =
        std::string(QXBASE_TEST_QXREGSVR_PATH) + " " + in_strArgs + " > " + dir.File("out") + " 2>&1";
    const int iStatus = system(strCommand.c_str());
    *out_strOutput = ReadFile(dir.File("out"));
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

std::string RegsvrLines(const std::string& in_strVerb)
{
    std::string str;
    for (const wchar_t* pwszName : {TESTMODULE_COUNTER_NAME, TESTMODULE_GREETER_NAME})
        str += "- - " + in_strVerb + " " + std::string(pwszName, pwszName + wcslen(pwszName)) + "\n";
    return str;
}

TEST_F(Creation, RegisteredWithTheToolAndCreatedByIdentifier)
{
    CScopedEnv env("PLWUTILS", "/opt/QueltoVideo/PLW.utils");
    std::string strOutput;
    ASSERT_EQ(RunRegsvr(kModule, &strOutput), 0) << strOutput;
    EXPECT_EQ(strOutput, RegsvrLines("Register"));
    EXPECT_EQ(ReadFile(QX_CLASS_REGISTRY_PATH),
              RegistryText(CLSID_TestGreeter, kModule) + Record(CLSID_TestCounter, kModule));
    ITestCounter* pCounter = Create<ITestCounter>(CLSID_TestCounter, IID_ITestCounter);
    ASSERT_NE(pCounter, nullptr);
    pCounter->Release();

    ASSERT_EQ(RunRegsvr(std::string("-u ") + kModule, &strOutput), 0) << strOutput;
    EXPECT_EQ(strOutput, RegsvrLines("Unregister"));
    EXPECT_EQ(ReadFile(QX_CLASS_REGISTRY_PATH), " [CLSID]\n");
    EXPECT_EQ(CreateFails(CLSID_TestCounter), E_NOINTERFACE);
}

TEST(Qxregsvr, RefusesWhatItCannotRegisterWithAClearMessage)
{
    CTempDir dir;
    CScopedEnv env("PLWUTILS", dir.Path().c_str());
    WriteFile(dir.File("text.so"), "not an ELF file");
    const struct {
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
