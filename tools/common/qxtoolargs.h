// A walk over command-line arguments in the usual forms: "--size 1920x1080",
// "--size=1920x1080", "-s 1920x1080", and plain words.
#ifndef QXBASE_TOOLS_QXTOOLARGS_H
#define QXBASE_TOOLS_QXTOOLARGS_H

#include "tools/common/qxtoolerror.h"

#include <string>

namespace NQxTool {

class CQxToolArgs {
public:
    CQxToolArgs(int in_iArgc, char** in_ppszArgv, int in_iFirst)
        : m_iArgc(in_iArgc), m_ppszArgv(in_ppszArgv), m_iNext(in_iFirst), m_bHasInline(false)
    {
    }

    bool Done() const { return m_iNext >= m_iArgc; }

    // The next argument; for "--name=value" only "--name", the value being
    // kept for Value().
    std::string Next()
    {
        if (m_bHasInline) throw UsageError("option " + m_strCurrent + " takes no value");
        std::string str = m_ppszArgv[m_iNext++];
        const size_t uEquals = str.find('=');
        if (str.compare(0, 2, "--") == 0 && uEquals != std::string::npos) {
            m_strInline = str.substr(uEquals + 1);
            m_bHasInline = true;
            str.erase(uEquals);
        }
        m_strCurrent = str;
        return str;
    }

    // The value of the option just returned by Next().
    std::string Value()
    {
        if (m_bHasInline) {
            m_bHasInline = false;
            return m_strInline;
        }
        if (Done()) throw UsageError("option " + m_strCurrent + " needs a value");
        return m_ppszArgv[m_iNext++];
    }

    // After the last argument: a flag given a value is an error there too.
    void End() const
    {
        if (m_bHasInline) throw UsageError("option " + m_strCurrent + " takes no value");
    }

    // Whether an argument is an option rather than a word ("-" alone is the
    // name of standard input or output).
    static bool IsOption(const std::string& in_str) { return in_str.size() > 1 && in_str[0] == '-'; }

private:
    int m_iArgc;
    char** m_ppszArgv;
    int m_iNext;
    bool m_bHasInline;
    std::string m_strInline;
    std::string m_strCurrent;
};

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLARGS_H
