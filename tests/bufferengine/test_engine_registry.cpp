// An application's view: libqxbase registered with qxregsvr (inside a
// private mount namespace, see com/registry_sandbox.h), both engines created
// by class identifier, and a frame copied through each.
#include <qxbase/qxcbufferengine.h>
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxregistry.h>

#include <sys/wait.h>

#include <gtest/gtest.h>

#include "bufferengine/enginekit.h"
#include "com/registry_sandbox.h"
#include "support/qxtest_support.h"

namespace {

using namespace NQxEngineKit;

int RunRegsvr(const std::string& in_strArguments, std::string* out_strOutput)
{
    NQxTest::CTempDir oDir;
    const std::string strCommand = std::string(QXBASE_TEST_QXREGSVR_PATH) + " " + in_strArguments + " > " +
                                   oDir.File("out") + " 2>&1";
    const int iStatus = system(strCommand.c_str());
    *out_strOutput = NQxTest::ReadFile(oDir.File("out"));
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

TEST(EngineRegistry, BothEnginesAreCreatedByClassIdentifierOnceTheLibraryIsRegistered)
{
    QX_REQUIRE_REGISTRY_SANDBOX();
    NQxTest::CScopedEnv oEnv("PLWUTILS", "/opt/QueltoVideo/PLW.utils");
    NQxTestSandbox::RemoveRegistry();
    void* pv = nullptr;
    EXPECT_NE(CoCreateInstance(CLSID_QxcBufferEngine, nullptr, CLSCTX_INPROC_SERVER, IID_IQxcBufferEngineFactory, &pv),
              S_OK);

    std::string strOutput;
    ASSERT_EQ(RunRegsvr(QXBASE_TEST_LIBRARY_PATH, &strOutput), 0) << strOutput;
    EXPECT_EQ(strOutput, "- - Register QueltoVideo Host Buffer Engine\n"
                         "- - Register QueltoVideo Synchronous Host Buffer Engine\n");

    auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 1920, 1080));
    auto pDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 1920, 1080));
    std::memset(pSource->GetBuffer(), 0x5A, pSource->GetBufferSize());
    SQxRect s = Whole(pSource.get());

    IQxcBufferEngineFactory* pFactory = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_QxcBufferEngine, nullptr, CLSCTX_INPROC_SERVER, IID_IQxcBufferEngineFactory,
                               reinterpret_cast<void**>(&pFactory)),
              S_OK);
    IQxcBufferEngine* pEngine = nullptr;
    ASSERT_EQ(pFactory->CreateBufferEngine(nullptr, &pEngine), S_OK);
    pFactory->Release();
    EXPECT_EQ(pEngine->CopySurface(pSource.get(), &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
    EXPECT_EQ(0, std::memcmp(pSource->GetBuffer(), pDestination->GetBuffer(), pSource->GetBufferSize()));
    EXPECT_EQ(pEngine->Release(), 0u);

    IQxcSyncBufferEngineFactory* pSyncFactory = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_QxcSyncBufferEngine, nullptr, CLSCTX_INPROC_SERVER,
                               IID_IQxcSyncBufferEngineFactory, reinterpret_cast<void**>(&pSyncFactory)),
              S_OK);
    IQxSyncBufferEngine* pSync = nullptr;
    ASSERT_EQ(pSyncFactory->CreateSyncBufferEngine(nullptr, &pSync), S_OK);
    pSyncFactory->Release();
    EXPECT_EQ(pSync->SyncClearSurface(pDestination.get(), keQxColorBlack, 1.0f), S_OK);
    EXPECT_EQ(pDestination->GetBuffer()[0], 16);
    EXPECT_EQ(pSync->Release(), 0u);

    ASSERT_EQ(RunRegsvr(std::string("-u ") + QXBASE_TEST_LIBRARY_PATH, &strOutput), 0) << strOutput;
}

}  // namespace
