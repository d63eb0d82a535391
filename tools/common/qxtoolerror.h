// Errors of the command-line tools. A tool reports one clear sentence and
// exits: usage mistakes with status 2, everything that went wrong while
// working (files, the engine) with status 1.
#ifndef QXBASE_TOOLS_QXTOOLERROR_H
#define QXBASE_TOOLS_QXTOOLERROR_H

#include <qxbase/qxdefs.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace NQxTool {

enum EExitStatus : int {
    keExitOk = 0,
    keExitFailure = 1,
    keExitUsage = 2
};

class CQxToolError : public std::runtime_error {
public:
    explicit CQxToolError(const std::string& in_strMessage, EExitStatus in_eStatus = keExitFailure)
        : std::runtime_error(in_strMessage), m_eStatus(in_eStatus)
    {
    }
    EExitStatus GetStatus() const { return m_eStatus; }

private:
    EExitStatus m_eStatus;
};

// A mistake on the command line.
inline CQxToolError UsageError(const std::string& in_strMessage)
{
    return CQxToolError(in_strMessage, keExitUsage);
}

// "0x89998039 (a change of pixel format that the surfaces do not allow)":
// the code in the form people search for, and what it means here.
std::string DescribeHResult(HRESULT in_hr);

// The text of errno for a file operation: "in.yuv: No such file or directory".
std::string FileError(const std::string& in_strPath, int in_iErrno);

// The body of a tool's main(): runs in_fnRun and turns what it throws into
// "TOOL: message" on standard error and the exit status (a usage error adds
// where to find the options).
int ToolMain(const char* in_pszTool, const std::function<int()>& in_fnRun);

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLERROR_H
