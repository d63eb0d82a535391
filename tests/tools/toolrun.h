// Runs a command-line program as a user would and collects its exit status
// and output, for the tests of the tools and examples.
#ifndef QXBASE_TESTS_TOOLS_TOOLRUN_H
#define QXBASE_TESTS_TOOLS_TOOLRUN_H

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace NQxTest {

struct SToolRun {
    int iStatus = -1;  // exit status; 128 + signal when killed
    std::string strOut;
    std::string strErr;
};

inline std::string ReadWholeFile(const std::string& in_strPath)
{
    std::ifstream file(in_strPath, std::ios::binary);
    std::ostringstream oss;
    oss << file.rdbuf();
    return oss.str();
}

// A folder under /tmp that goes away with the object.
class CToolTempDir {
public:
    CToolTempDir()
    {
        char sz[] = "/tmp/qxtools-XXXXXX";
        m_strPath = mkdtemp(sz) ? sz : "/tmp";
    }
    ~CToolTempDir()
    {
        if (m_strPath != "/tmp") std::system(("rm -rf '" + m_strPath + "'").c_str());
    }
    CToolTempDir(const CToolTempDir&) = delete;
    CToolTempDir& operator=(const CToolTempDir&) = delete;
    const std::string& Path() const { return m_strPath; }
    std::string File(const std::string& in_strName) const { return m_strPath + "/" + in_strName; }

private:
    std::string m_strPath;
};

// Runs in_vecArgs[0] with the arguments, standard input from in_strStdin
// (empty: /dev/null), and the environment of this process.
inline SToolRun RunTool(const std::vector<std::string>& in_vecArgs, const std::string& in_strStdin = "")
{
    CToolTempDir oDir;
    const std::string strOut = oDir.File("out"), strErr = oDir.File("err");
    std::vector<char*> vecArgv;
    for (const std::string& s : in_vecArgs) vecArgv.push_back(const_cast<char*>(s.c_str()));
    vecArgv.push_back(nullptr);
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        const int iIn = open(in_strStdin.empty() ? "/dev/null" : in_strStdin.c_str(), O_RDONLY);
        const int iOut = open(strOut.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int iErr = open(strErr.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (iIn < 0 || iOut < 0 || iErr < 0) _exit(126);
        dup2(iIn, 0);
        dup2(iOut, 1);
        dup2(iErr, 2);
        execv(vecArgv[0], vecArgv.data());
        _exit(127);
    }
    SToolRun s;
    if (pid < 0) return s;
    int iStatus = 0;
    while (waitpid(pid, &iStatus, 0) < 0 && errno == EINTR) {
    }
    s.iStatus = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
    s.strOut = ReadWholeFile(strOut);
    s.strErr = ReadWholeFile(strErr);
    return s;
}

}  // namespace NQxTest

#endif  // QXBASE_TESTS_TOOLS_TOOLRUN_H
