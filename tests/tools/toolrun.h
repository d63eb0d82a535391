// Runs a command-line program as a user would and collects its exit status
// and output, for the tests of the tools and examples.
#ifndef QXBASE_TESTS_TOOLS_TOOLRUN_H
#define QXBASE_TESTS_TOOLS_TOOLRUN_H

#include "support/qxtest_support.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace NQxTest {

struct SToolRun {
    int iStatus = -1;  // exit status; 128 + signal when killed
    std::string strOut;
    std::string strErr;
};

inline bool Contains(const std::string& in_strText, const std::string& in_strPart)
{
    return in_strText.find(in_strPart) != std::string::npos;
}

// Runs in_vecArgs[0] with the arguments, standard input from in_strStdin
// (empty: /dev/null), and the environment of this process.
inline SToolRun RunTool(const std::vector<std::string>& in_vecArgs, const std::string& in_strStdin = "")
{
    CTempDir oDir;
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
    s.strOut = ReadFile(strOut);
    s.strErr = ReadFile(strErr);
    return s;
}

}  // namespace NQxTest

#endif  // QXBASE_TESTS_TOOLS_TOOLRUN_H
