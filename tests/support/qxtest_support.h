// Small helpers shared by the test programs: a temporary folder that removes
// itself, whole-file reads and writes, and a capture of standard output.
#ifndef QXBASE_TESTS_QXTEST_SUPPORT_H
#define QXBASE_TESTS_QXTEST_SUPPORT_H

#include <fcntl.h>
#include <ftw.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace NQxTest {

class CTempDir {
public:
    CTempDir()
    {
        char szTemplate[] = "/tmp/qxbase-test-XXXXXX";
        if (!mkdtemp(szTemplate)) throw std::runtime_error("mkdtemp failed");
        m_strPath = szTemplate;
    }
    ~CTempDir()
    {
        nftw(m_strPath.c_str(),
             [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 16,
             FTW_DEPTH | FTW_PHYS);
    }
    const std::string& Path() const { return m_strPath; }
    std::string File(const std::string& in_strName) const { return m_strPath + "/" + in_strName; }

private:
    std::string m_strPath;
};

inline std::string ReadFile(const std::string& in_strPath)
{
    std::ifstream file(in_strPath, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

inline bool FileExists(const std::string& in_strPath) { return access(in_strPath.c_str(), F_OK) == 0; }

inline void WriteFile(const std::string& in_strPath, const std::string& in_strBytes)
{
    std::ofstream file(in_strPath, std::ios::binary | std::ios::trunc);
    file.write(in_strBytes.data(), static_cast<std::streamsize>(in_strBytes.size()));
}

// Everything written to file descriptor 1 while it lives; Text() stops the
// capture.
class CStdoutCapture {
public:
    CStdoutCapture()
    {
        fflush(stdout);
        char szTemplate[] = "/tmp/qxbase-stdout-XXXXXX";
        m_iFd = mkstemp(szTemplate);
        m_strPath = szTemplate;
        m_iSaved = dup(1);
        dup2(m_iFd, 1);
    }
    ~CStdoutCapture()
    {
        Stop();
        close(m_iFd);
        unlink(m_strPath.c_str());
    }
    std::string Text()
    {
        Stop();
        return ReadFile(m_strPath);
    }

private:
    void Stop()
    {
        if (m_iSaved < 0) return;
        fflush(stdout);
        dup2(m_iSaved, 1);
        close(m_iSaved);
        m_iSaved = -1;
    }
    int m_iFd = -1;
    int m_iSaved = -1;
    std::string m_strPath;
};

// Sets or unsets an environment variable for one scope.
class CScopedEnv {
public:
    CScopedEnv(const char* in_pszName, const char* in_pszValue) : m_strName(in_pszName)
    {
        if (const char* p = getenv(in_pszName)) {
            m_bHad = true;
            m_strOld = p;
        }
        if (in_pszValue)
            setenv(in_pszName, in_pszValue, 1);
        else
            unsetenv(in_pszName);
    }
    ~CScopedEnv()
    {
        if (m_bHad)
            setenv(m_strName.c_str(), m_strOld.c_str(), 1);
        else
            unsetenv(m_strName.c_str());
    }

private:
    std::string m_strName;
    std::string m_strOld;
    bool m_bHad = false;
};

}  // namespace NQxTest

#endif  // QXBASE_TESTS_QXTEST_SUPPORT_H
