#include "registry_sandbox.h"

#include <qxbase/qxregistry.h>

#include <errno.h>
#include <ftw.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

namespace NQxTestSandbox {

namespace {

const char* const kDirVariable = "QXBASE_TEST_SANDBOX_DIR";
const char* const kRegistryFolder = "/opt/QueltoVideo/PLW.utils";

bool g_bActive = false;
std::string g_strReason = "not set up";

// Removes entries it cannot read too (the overlay leaves its work folder
// without permissions), as long as they are empty.
int RemoveEntry(const char* in_pszPath, const struct stat*, int, struct FTW*)
{
    return remove(in_pszPath);
}

// Runs argv and returns its exit status, or -1 when it could not run.
int Run(const std::vector<std::string>& in_vecArgs)
{
    std::vector<char*> vecArgv;
    for (const std::string& s : in_vecArgs) vecArgv.push_back(const_cast<char*>(s.c_str()));
    vecArgv.push_back(nullptr);
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0) return -1;
    if (pid == 0) {
        execvp(vecArgv[0], vecArgv.data());
        _exit(127);
    }
    int iStatus = 0;
    while (waitpid(pid, &iStatus, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

std::vector<std::string> UnsharePrefix()
{
    std::vector<std::string> vec = {"unshare", "--mount", "--propagation", "private"};
    if (geteuid() != 0) vec.push_back("--map-root-user");
    vec.push_back("--");
    return vec;
}

bool MountOverlay(const std::string& in_strDir)
{
    const std::string strUpper = in_strDir + "/upper";
    const std::string strWork = in_strDir + "/work";
    if (mkdir(strUpper.c_str(), 0755) != 0 || mkdir(strWork.c_str(), 0755) != 0) {
        g_strReason = "cannot create the overlay folders: " + std::string(strerror(errno));
        return false;
    }
    const std::string strOptions = "lowerdir=/opt,upperdir=" + strUpper + ",workdir=" + strWork;
    if (mount("overlay", "/opt", "overlay", 0, strOptions.c_str()) != 0) {
        g_strReason = "cannot mount an overlay on /opt: " + std::string(strerror(errno));
        return false;
    }
    std::error_code error;
    std::filesystem::create_directories(kRegistryFolder, error);
    if (error) g_strReason = "cannot create " + std::string(kRegistryFolder) + ": " + error.message();
    return !error;
}

}  // namespace

bool RunInSandbox(int argc, char** argv, int* out_iExitStatus)
{
    if (const char* pszDir = getenv(kDirVariable)) {
        g_bActive = MountOverlay(pszDir);
        return false;
    }

    char szSelf[PATH_MAX];
    const ssize_t iLength = readlink("/proc/self/exe", szSelf, sizeof(szSelf) - 1);
    if (iLength <= 0) {
        g_strReason = "cannot find this program's path";
        return false;
    }
    szSelf[iLength] = '\0';

    std::vector<std::string> vecProbe = UnsharePrefix();
    vecProbe.push_back("true");
    if (Run(vecProbe) != 0) {
        g_strReason = "unshare --mount is not available here";
        return false;
    }

    char szDir[] = "/tmp/qxbase-registry-sandbox-XXXXXX";
    if (!mkdtemp(szDir)) {
        g_strReason = "cannot create a temporary folder";
        return false;
    }
    setenv(kDirVariable, szDir, 1);
    std::vector<std::string> vecArgs = UnsharePrefix();
    vecArgs.push_back(szSelf);
    for (int i = 1; i < argc; ++i) vecArgs.push_back(argv[i]);
    *out_iExitStatus = Run(vecArgs);
    nftw(szDir, RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
    return true;
}

bool Active() { return g_bActive; }

const std::string& UnavailableReason() { return g_strReason; }

void WriteRegistry(const std::string& in_strBytes)
{
    RemoveRegistry();
    std::ofstream file(QX_CLASS_REGISTRY_PATH, std::ios::binary | std::ios::trunc);
    file.write(in_strBytes.data(), static_cast<std::streamsize>(in_strBytes.size()));
}

// A file, or the empty directory that stands in its place.
void RemoveRegistry()
{
    std::error_code error;
    std::filesystem::remove(QX_CLASS_REGISTRY_PATH, error);
}

void MakeRegistryADirectory()
{
    RemoveRegistry();
    mkdir(QX_CLASS_REGISTRY_PATH, 0755);
}

}  // namespace NQxTestSandbox
