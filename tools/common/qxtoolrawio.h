// Raw frame files: pictures one after the other, each line a pitch of bytes,
// nothing else (no header). "-" reads standard input or writes standard
// output, so that frames can be piped to and from other programs.
#ifndef QXBASE_TOOLS_QXTOOLRAWIO_H
#define QXBASE_TOOLS_QXTOOLRAWIO_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace NQxTool {

// The geometry of the frames of a raw file.
struct SQxToolRawLayout {
    uint32_t uiLineBytes;  // bytes of the pixels of one line
    uint32_t uiPitch;      // bytes from one line to the next (>= uiLineBytes)
    uint32_t uiHeight;     // lines of a frame

    uint64_t FrameBytes() const { return uint64_t(uiPitch) * uiHeight; }
};

class CQxToolRawReader {
public:
    // Opens the file and checks that it holds whole frames: in_uiFrames of
    // them when not 0, otherwise as many as it holds. Throws a tool error
    // that names the file, the sizes and what to check.
    CQxToolRawReader(const std::string& in_strPath, const SQxToolRawLayout& in_rsLayout, uint32_t in_uiFrames,
                     const std::string& in_strWhat);
    ~CQxToolRawReader();
    CQxToolRawReader(const CQxToolRawReader&) = delete;
    CQxToolRawReader& operator=(const CQxToolRawReader&) = delete;

    // Frames that will be read; 0 when reading a stream of unknown length.
    uint32_t GetFrameCount() const { return m_uiFrames; }

    // Reads the next frame's lines into a picture whose lines are
    // in_iPitch bytes apart. False at the end; throws for a frame cut
    // short or a read error.
    bool ReadFrame(uint8_t* out_pucPicture, int32_t in_iPitch);

private:
    std::string m_strPath;
    SQxToolRawLayout m_sLayout;
    FILE* m_pFile;
    bool m_bStream;
    uint32_t m_uiFrames;
    uint32_t m_uiRead;
    std::vector<uint8_t> m_vecFrame;
};

class CQxToolRawWriter {
public:
    // Creates (truncates) the file. Throws a tool error when it cannot. A
    // writer destroyed before Close() removes its file.
    explicit CQxToolRawWriter(const std::string& in_strPath);
    ~CQxToolRawWriter();
    CQxToolRawWriter(const CQxToolRawWriter&) = delete;
    CQxToolRawWriter& operator=(const CQxToolRawWriter&) = delete;

    // Writes the layout's lines from a picture whose lines are in_iPitch
    // bytes apart, each padded with zeros up to the layout's pitch.
    void WriteFrame(const uint8_t* in_pucPicture, int32_t in_iPitch, const SQxToolRawLayout& in_rsLayout);
    // Flushes and closes; throws when the data did not reach the file
    // (a full disk shows here).
    void Close();

private:
    void Fail();

    std::string m_strPath;
    FILE* m_pFile;
    bool m_bStream;
    std::vector<uint8_t> m_vecPadding;
};

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLRAWIO_H
