#include "tools/common/qxtoolrawio.h"

#include "tools/common/qxtoolerror.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace NQxTool {

namespace {

std::string Bytes(uint64_t in_u) { return std::to_string(in_u) + (in_u == 1 ? " byte" : " bytes"); }

std::string Frames(uint64_t in_u) { return std::to_string(in_u) + (in_u == 1 ? " frame" : " frames"); }

std::string Shown(const std::string& in_strPath) { return in_strPath == "-" ? "standard input" : in_strPath; }

}  // namespace

CQxToolRawReader::CQxToolRawReader(const std::string& in_strPath, const SQxToolRawLayout& in_rsLayout,
                                   uint32_t in_uiFrames, const std::string& in_strWhat)
    : m_strPath(in_strPath), m_sLayout(in_rsLayout), m_pFile(nullptr), m_bStream(false), m_uiFrames(in_uiFrames),
      m_uiRead(0)
{
    const uint64_t uFrame = in_rsLayout.FrameBytes();
    if (in_strPath == "-") {
        m_pFile = stdin;
        m_bStream = true;
    } else {
        m_pFile = std::fopen(in_strPath.c_str(), "rb");
        if (!m_pFile) throw CQxToolError(FileError(in_strPath, errno));
        struct stat st;
        if (fstat(fileno(m_pFile), &st) != 0) {
            const int iErrno = errno;
            std::fclose(m_pFile);
            throw CQxToolError(FileError(in_strPath, iErrno));
        }
        if (S_ISDIR(st.st_mode)) {
            std::fclose(m_pFile);
            throw CQxToolError(FileError(in_strPath, EISDIR));
        }
        m_bStream = !S_ISREG(st.st_mode);
        if (!m_bStream) {
            const uint64_t uSize = uint64_t(st.st_size);
            const std::string strFrame = Bytes(uFrame) + " (" + in_strWhat + ")";
            std::string strProblem;
            if (uSize == 0)
                strProblem = in_strPath + " is empty";
            else if (uSize < uFrame)
                strProblem = in_strPath + " holds " + Bytes(uSize) + ", less than one frame of " + strFrame +
                             "; check --size, --format and --pitch";
            else if (in_uiFrames != 0 && uSize / uFrame < in_uiFrames)
                strProblem = in_strPath + " holds " + Frames(uSize / uFrame) + " of " + strFrame +
                             ", but --frames asks for " + std::to_string(in_uiFrames);
            else if (in_uiFrames == 0 && uSize % uFrame != 0)
                strProblem = in_strPath + " holds " + Bytes(uSize) + ": " + Frames(uSize / uFrame) + " of " +
                             strFrame + " and " + Bytes(uSize % uFrame) +
                             " more; check --size, --format and --pitch, or give --frames";
            if (!strProblem.empty()) {
                std::fclose(m_pFile);
                throw CQxToolError(strProblem);
            }
            if (in_uiFrames == 0) {
                if (uSize / uFrame > 0xFFFFFFFFull) {
                    std::fclose(m_pFile);
                    throw CQxToolError(in_strPath + " holds more frames than can be counted; give --frames");
                }
                m_uiFrames = uint32_t(uSize / uFrame);
            }
        }
    }
    m_vecFrame.resize(size_t(uFrame));
}

CQxToolRawReader::~CQxToolRawReader()
{
    if (m_pFile && m_pFile != stdin) std::fclose(m_pFile);
}

bool CQxToolRawReader::ReadFrame(uint8_t* out_pucPicture, int32_t in_iPitch)
{
    if (m_uiFrames != 0 && m_uiRead == m_uiFrames) return false;
    const size_t uGot = std::fread(m_vecFrame.data(), 1, m_vecFrame.size(), m_pFile);
    if (uGot != m_vecFrame.size()) {
        if (std::ferror(m_pFile)) throw CQxToolError(FileError(Shown(m_strPath), errno ? errno : EIO));
        if (uGot == 0 && m_bStream && m_uiFrames == 0) return false;
        throw CQxToolError(Shown(m_strPath) + " ended " + Bytes(uGot) + " into frame " + std::to_string(m_uiRead + 1) +
                           " (" + Bytes(m_vecFrame.size()) + " each)");
    }
    for (uint32_t y = 0; y < m_sLayout.uiHeight; ++y)
        std::memcpy(out_pucPicture + size_t(y) * size_t(in_iPitch), m_vecFrame.data() + size_t(y) * m_sLayout.uiPitch,
                    m_sLayout.uiLineBytes);
    ++m_uiRead;
    return true;
}

CQxToolRawWriter::CQxToolRawWriter(const std::string& in_strPath)
    : m_strPath(in_strPath), m_pFile(nullptr), m_bStream(in_strPath == "-")
{
    m_pFile = m_bStream ? stdout : std::fopen(in_strPath.c_str(), "wb");
    if (!m_pFile) throw CQxToolError(FileError(in_strPath, errno));
}

CQxToolRawWriter::~CQxToolRawWriter()
{
    // Never closed: the work failed on the way, and half a file of frames
    // would only mislead whoever finds it.
    if (m_pFile && !m_bStream) {
        std::fclose(m_pFile);
        std::remove(m_strPath.c_str());
    }
}

void CQxToolRawWriter::Fail()
{
    const int iErrno = errno ? errno : EIO;
    if (!m_bStream && m_pFile) {
        std::fclose(m_pFile);
        std::remove(m_strPath.c_str());
    }
    m_pFile = nullptr;
    throw CQxToolError(FileError(m_bStream ? "standard output" : m_strPath, iErrno));
}

void CQxToolRawWriter::WriteFrame(const uint8_t* in_pucPicture, int32_t in_iPitch, const SQxToolRawLayout& in_rsLayout)
{
    if (!m_pFile) throw CQxToolError(m_strPath + ": already closed");
    const size_t uPadding = in_rsLayout.uiPitch - in_rsLayout.uiLineBytes;
    if (m_vecPadding.size() < uPadding) m_vecPadding.assign(uPadding, 0);
    errno = 0;
    if (uPadding == 0 && uint32_t(in_iPitch) == in_rsLayout.uiLineBytes) {
        const size_t uBytes = size_t(in_rsLayout.FrameBytes());
        if (std::fwrite(in_pucPicture, 1, uBytes, m_pFile) != uBytes) Fail();
        return;
    }
    for (uint32_t y = 0; y < in_rsLayout.uiHeight; ++y) {
        if (std::fwrite(in_pucPicture + size_t(y) * size_t(in_iPitch), 1, in_rsLayout.uiLineBytes, m_pFile) !=
                in_rsLayout.uiLineBytes ||
            std::fwrite(m_vecPadding.data(), 1, uPadding, m_pFile) != uPadding)
            Fail();
    }
}

void CQxToolRawWriter::Close()
{
    if (!m_pFile) return;
    errno = 0;
    if (std::fflush(m_pFile) != 0) Fail();
    if (!m_bStream) {
        FILE* pFile = m_pFile;
        m_pFile = nullptr;
        if (std::fclose(pFile) != 0) {
            const int iErrno = errno;
            std::remove(m_strPath.c_str());
            throw CQxToolError(FileError(m_strPath, iErrno));
        }
    }
}

}  // namespace NQxTool
