// The programs that create their components by class identifier, run
// against the class registry under /opt in a private mount namespace:
// before libqxbase is registered, after qxregsvr registered it, and with a
// registration that names a module that is not there. The examples run
// here, as a user runs them after installing.
#include "com/registry_sandbox.h"
#include "tools/toolrun.h"

#include <qxbase/qxguids.h>
#include <qxbase/qxregistry.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using NQxTest::Contains;
using NQxTest::RunTool;
using NQxTest::SToolRun;

namespace {

const char kszRegistryFolder[] = "/opt/QueltoVideo/PLW.utils";

std::string Narrow(const std::wstring& in_str) { return std::string(in_str.begin(), in_str.end()); }

// Registers a module's classes in the fixed registry, as an installer does.
void Register(const std::string& in_strModule)
{
    setenv("PLWUTILS", kszRegistryFolder, 1);
    const SToolRun s = RunTool({QXBASE_QXREGSVR_PATH, in_strModule});
    unsetenv("PLWUTILS");
    ASSERT_EQ(s.iStatus, 0) << s.strOut << s.strErr;
}

class Registered : public ::testing::Test {
protected:
    void SetUp() override
    {
        QX_REQUIRE_REGISTRY_SANDBOX();
        NQxTestSandbox::RemoveRegistry();
    }
    void TearDown() override
    {
        if (NQxTestSandbox::Active()) NQxTestSandbox::RemoveRegistry();
    }
};

TEST_F(Registered, WithoutRegistrationTheProgramsSaySo)
{
#ifdef QXBASE_EXAMPLE_COPYFRAME_PATH
    const SToolRun sCopy = RunTool({QXBASE_EXAMPLE_COPYFRAME_PATH});
    EXPECT_EQ(sCopy.iStatus, 1);
    EXPECT_TRUE(Contains(sCopy.strErr, "register libqxbase with qxregsvr")) << sCopy.strErr;
    const SToolRun sMeasure = RunTool({QXBASE_EXAMPLE_MEASURE_PATH});
    EXPECT_EQ(sMeasure.iStatus, 1);
    EXPECT_TRUE(Contains(sMeasure.strErr, "register libqxexample_framestats.so with qxregsvr")) << sMeasure.strErr;
#endif
    const SToolRun sOnly = RunTool({QXBASE_QXCONVERT_PATH, "--engine", "registry", "-s", "64x4", "-o", "/dev/null"});
    EXPECT_EQ(sOnly.iStatus, 1);
    EXPECT_TRUE(Contains(sOnly.strErr, "does not name the engine's class " + Narrow(qxGuidToString(CLSID_QxcBufferEngine))))
        << sOnly.strErr;
    // By default the linked library stands in, and says so when asked.
    const SToolRun sAny = RunTool({QXBASE_QXCONVERT_PATH, "-v", "-s", "64x4", "-o", "/dev/null"});
    EXPECT_EQ(sAny.iStatus, 0) << sAny.strErr;
    EXPECT_TRUE(Contains(sAny.strErr, "engine created through the factory of the linked libqxbase, as the class registry"))
        << sAny.strErr;
}

TEST_F(Registered, AfterQxregsvrTheEngineAndTheExampleModuleComeByClassIdentifier)
{
    Register(QXBASE_LIBRARY_PATH);
    char szModule[QX_MAX_PATH];
    ASSERT_TRUE(GetDllPath(CLSID_QxcBufferEngine, szModule));
    for (const char* pszEngine : {"registry", "any"}) {
        const SToolRun s = RunTool({QXBASE_QXCONVERT_PATH, "-v", "--engine", pszEngine, "-s", "64x4", "--to", "v210",
                                    "-o", "/dev/null"});
        EXPECT_EQ(s.iStatus, 0) << s.strErr;
        EXPECT_TRUE(Contains(s.strErr, "engine created by class identifier " +
                                           Narrow(qxGuidToString(CLSID_QxcBufferEngine)) + " from " + szModule))
            << s.strErr;
    }
    const SToolRun sSync = RunTool({QXBASE_QXCONVERT_PATH, "-v", "--engine", "registry", "--sync", "-s", "64x4", "-o",
                                    "/dev/null"});
    EXPECT_EQ(sSync.iStatus, 0) << sSync.strErr;
    EXPECT_TRUE(Contains(sSync.strErr, Narrow(qxGuidToString(CLSID_QxcSyncBufferEngine)))) << sSync.strErr;
#ifdef QXBASE_EXAMPLE_COPYFRAME_PATH
    const SToolRun sCopy = RunTool({QXBASE_EXAMPLE_COPYFRAME_PATH});
    EXPECT_EQ(sCopy.iStatus, 0) << sCopy.strOut << sCopy.strErr;
    EXPECT_EQ(sCopy.strOut, "copyframe: 1920x1080 YUYV -> v210: 0x00000000; first pixel Y 64 Cb 512, last pixel Y 940\n");

    Register(QXBASE_EXAMPLE_MODULE_PATH);
    const SToolRun sMeasure = RunTool({QXBASE_EXAMPLE_MEASURE_PATH});
    EXPECT_EQ(sMeasure.iStatus, 0) << sMeasure.strOut << sMeasure.strErr;
    EXPECT_EQ(sMeasure.strOut, "measure: luma minimum 16, maximum 235, mean 111.75\n");
#endif
}

TEST_F(Registered, ARegistrationOfAMissingModuleIsReported)
{
    NQxTestSandbox::WriteRegistry(" [CLSID]\n " + Narrow(qxGuidToString(CLSID_QxcBufferEngine)) +
                                  "=/nowhere/libqxbase.so\n");
    const SToolRun sAny = RunTool({QXBASE_QXCONVERT_PATH, "-s", "64x4", "-o", "/dev/null"});
    EXPECT_EQ(sAny.iStatus, 0) << sAny.strErr;
    EXPECT_TRUE(Contains(sAny.strErr, "warning: " QX_CLASS_REGISTRY_PATH " names /nowhere/libqxbase.so")) << sAny.strErr;
    const SToolRun sOnly = RunTool({QXBASE_QXCONVERT_PATH, "--engine", "registry", "-s", "64x4", "-o", "/dev/null"});
    EXPECT_EQ(sOnly.iStatus, 1);
    EXPECT_TRUE(Contains(sOnly.strErr, "/nowhere/libqxbase.so for the engine's class")) << sOnly.strErr;
}

}  // namespace
