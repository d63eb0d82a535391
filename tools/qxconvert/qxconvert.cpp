// qxconvert: converts raw video frames between the library's pixel formats
// through the host buffer engine, and clears, rotates, combines and
// extracts them. The input is a raw file or a built-in test pattern; the
// output is raw frames or PNG pictures a person can look at.
//
//   qxconvert --pattern bars --format yuyv8 --to v210,argb -o bars.png
//   qxconvert -i in.v210 -s 1920x1080 -f v210 --to yuyv8 -o out.yuyv
//   qxconvert rotate --angle 90 -o turned.png
#include "tools/common/qxtoolargs.h"
#include "tools/common/qxtoolengine.h"
#include "tools/common/qxtoolerror.h"
#include "tools/common/qxtoolformats.h"
#include "tools/common/qxtoolpattern.h"
#include "tools/common/qxtoolpng.h"
#include "tools/common/qxtoolrawio.h"

#include <qxbase/qxhelper.h>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace NQxTool;

namespace {

const char kszUsage[] =
    "usage: qxconvert [COMMAND] [OPTIONS]\n"
    "\n"
    "Converts raw video frames between pixel formats through the host buffer engine.\n"
    "\n"
    "Commands:\n"
    "  convert            convert the input through the --to formats (the default)\n"
    "  clear              make frames of one colour (--color, --alpha) in --format\n"
    "  rotate             turn 8-bit YUYV frames by --angle 90, 180 or 270 degrees clockwise\n"
    "  combine            merge video (yuyv8 or v210) and a key into 4:2:2:4 (yuayva8 or yuayva10)\n"
    "  extract            split 4:2:2:4 frames into video (-o) and a grey key (--key-output)\n"
    "  formats            list the pixel formats and what each converts to\n"
    "\n"
    "Input: a raw file, or else a built-in test pattern:\n"
    "  -i, --input FILE       raw frames, one after the other (\"-\": standard input)\n"
    "  -p, --pattern NAME     bars (default), ramp or zoneplate\n"
    "  -s, --size WxH         picture size: 1920x1080, or sd, 486, 720p, hd, uhd, dci4k, 8k\n"
    "                         (a pattern is 1920x1080 unless told otherwise)\n"
    "  -f, --format NAME      pixel format of the input (a pattern is made in yuyv8 unless told otherwise)\n"
    "      --pitch BYTES      bytes from one line to the next in the input file (default: packed lines)\n"
    "  -c, --colorimetry NAME 601, 709, 2020, 2100pq, 2100hlg, 2020linear (default: from the size)\n"
    "  -n, --frames N         frames to take (default: the whole file, or 1 frame of a pattern)\n"
    "\n"
    "Operation:\n"
    "  -t, --to FMT[,FMT...]  convert through each format in turn; the last one is written\n"
    "      --filter MODE      chroma between RGB and 4:2:2: nearest (default) or filtered\n"
    "      --color NAME       clear: black (default), zero-black, white, red, green, blue\n"
    "      --alpha A          clear: key from 0 to 1 (default 1)\n"
    "      --angle DEG        rotate: 90, 180 or 270\n"
    "      --key FILE         combine: raw key frames of the video's size and format\n"
    "      --key-pattern NAME combine: a test pattern whose luma is the key (default ramp)\n"
    "      --alpha-scaling    combine: stretch the key's video-range luma to the full key range\n"
    "      --key-output FILE  extract: where the key goes (raw or PNG, as -o)\n"
    "\n"
    "Output:\n"
    "  -o, --output FILE      raw frames, or PNG when FILE ends in .png (\"-\": standard output);\n"
    "                         several PNG frames need a number field: out-%04d.png\n"
    "      --png              write PNG whatever the name\n"
    "      --png-depth 8|16   PNG samples; 16 keeps 10-bit pictures whole (default 8)\n"
    "      --out-pitch BYTES  line pitch of raw output (default: packed lines)\n"
    "\n"
    "Engine:\n"
    "      --engine WHERE     any (default: by class identifier, else the linked factory),\n"
    "                         registry (by class identifier only) or factory\n"
    "      --sync             use the synchronous engine (convert and clear)\n"
    "  -v, --verbose          say how the engine was made and what ran\n"
    "  -q, --quiet            no progress line and no summary\n"
    "  -h, --help             this text\n";

enum ECommand { keConvert, keClear, keRotate, keCombine, keExtract, keFormats, keHelp };

struct SOptions {
    ECommand eCommand = keConvert;
    std::string strInput;
    EQxToolPattern ePattern = keQxToolPatternBars;
    bool bPatternGiven = false;
    std::optional<SQxToolSize> optSize;
    const SQxToolFormat* psFormat = nullptr;
    uint32_t uiPitch = 0;
    std::optional<EQxColorimetry> optColorimetry;
    uint32_t uiFrames = 0;
    std::vector<const SQxToolFormat*> vecTo;
    EQxFilterMode eFilter = keQxFilterModeNearest;
    EQxColor eColor = keQxColorBlack;
    float fAlpha = 1.0f;
    std::optional<EQxRotationAngle> optAngle;
    std::string strKey;
    EQxToolPattern eKeyPattern = keQxToolPatternRamp;
    bool bKeyPatternGiven = false;
    bool bAlphaScaling = false;
    std::string strKeyOutput;
    std::string strOutput;
    bool bPng = false;
    uint32_t uiPngDepth = 8;
    uint32_t uiOutPitch = 0;
    EQxToolEngineOrigin eEngine = keQxToolEngineAny;
    bool bSync = false;
    bool bVerbose = false;
    bool bQuiet = false;
};

bool EndsWithPng(const std::string& in_str)
{
    if (in_str.size() < 4) return false;
    std::string strEnd = in_str.substr(in_str.size() - 4);
    for (char& c : strEnd) c = char(std::tolower(static_cast<unsigned char>(c)));
    return strEnd == ".png";
}

SOptions Parse(int argc, char** argv)
{
    SOptions s;
    int iFirst = 1;
    if (argc > 1 && !CQxToolArgs::IsOption(argv[1])) {
        const std::string strCommand = argv[1];
        static const struct {
            const char* psz;
            ECommand e;
        } s_asCommands[] = {{"convert", keConvert}, {"clear", keClear},     {"rotate", keRotate},
                            {"combine", keCombine}, {"extract", keExtract}, {"formats", keFormats},
                            {"help", keHelp}};
        bool bFound = false;
        for (const auto& r : s_asCommands)
            if (strCommand == r.psz) {
                s.eCommand = r.e;
                bFound = true;
            }
        if (!bFound)
            throw UsageError("unknown command \"" + strCommand +
                             "\"; use convert, clear, rotate, combine, extract or formats (an input file is -i FILE)");
        iFirst = 2;
    }
    CQxToolArgs oArgs(argc, argv, iFirst);
    while (!oArgs.Done()) {
        const std::string str = oArgs.Next();
        if (str == "-i" || str == "--input") {
            s.strInput = oArgs.Value();
        } else if (str == "-p" || str == "--pattern") {
            s.ePattern = ParsePattern(oArgs.Value());
            s.bPatternGiven = true;
        } else if (str == "-s" || str == "--size") {
            s.optSize = ParseSize(oArgs.Value());
        } else if (str == "-f" || str == "--format") {
            s.psFormat = &ParseFormat(oArgs.Value());
        } else if (str == "--pitch") {
            s.uiPitch = ParseCount(oArgs.Value(), "pitch", 1, 0x7FFFFFFF);
        } else if (str == "-c" || str == "--colorimetry") {
            s.optColorimetry = ParseColorimetry(oArgs.Value());
        } else if (str == "-n" || str == "--frames") {
            s.uiFrames = ParseCount(oArgs.Value(), "frame count", 1, 0xFFFFFFFF);
        } else if (str == "-t" || str == "--to") {
            for (const std::string& strFormat : SplitList(oArgs.Value(), "--to"))
                s.vecTo.push_back(&ParseFormat(strFormat));
        } else if (str == "--filter") {
            s.eFilter = ParseFilter(oArgs.Value());
        } else if (str == "--color" || str == "--colour") {
            s.eColor = ParseColor(oArgs.Value());
        } else if (str == "--alpha") {
            s.fAlpha = ParseUnit(oArgs.Value(), "alpha");
        } else if (str == "--angle") {
            s.optAngle = ParseAngle(oArgs.Value());
        } else if (str == "--key") {
            s.strKey = oArgs.Value();
        } else if (str == "--key-pattern") {
            s.eKeyPattern = ParsePattern(oArgs.Value());
            s.bKeyPatternGiven = true;
        } else if (str == "--alpha-scaling") {
            s.bAlphaScaling = true;
        } else if (str == "--key-output") {
            s.strKeyOutput = oArgs.Value();
        } else if (str == "-o" || str == "--output") {
            s.strOutput = oArgs.Value();
        } else if (str == "--png") {
            s.bPng = true;
        } else if (str == "--png-depth") {
            const std::string strDepth = oArgs.Value();
            if (strDepth != "8" && strDepth != "16")
                throw UsageError("bad PNG depth \"" + strDepth + "\"; use 8 or 16");
            s.uiPngDepth = strDepth == "8" ? 8 : 16;
        } else if (str == "--out-pitch") {
            s.uiOutPitch = ParseCount(oArgs.Value(), "output pitch", 1, 0x7FFFFFFF);
        } else if (str == "--engine") {
            const std::string strWhere = oArgs.Value();
            if (strWhere == "any")
                s.eEngine = keQxToolEngineAny;
            else if (strWhere == "registry")
                s.eEngine = keQxToolEngineRegistry;
            else if (strWhere == "factory")
                s.eEngine = keQxToolEngineFactory;
            else
                throw UsageError("bad engine origin \"" + strWhere + "\"; use any, registry or factory");
        } else if (str == "--sync") {
            s.bSync = true;
        } else if (str == "-v" || str == "--verbose") {
            s.bVerbose = true;
        } else if (str == "-q" || str == "--quiet") {
            s.bQuiet = true;
        } else if (str == "-h" || str == "--help") {
            s.eCommand = keHelp;
        } else if (!CQxToolArgs::IsOption(str)) {
            throw UsageError("unexpected argument \"" + str + "\" (an input file is given with -i FILE)");
        } else {
            throw UsageError("unknown option " + str);
        }
    }
    oArgs.End();
    return s;
}

// Checks what the options mean together, before any work.
void Validate(SOptions& io_s)
{
    if (io_s.eCommand == keFormats || io_s.eCommand == keHelp) return;
    const bool bRaw = !io_s.strInput.empty();
    if (io_s.strOutput.empty()) throw UsageError("say where the frames go with -o FILE (FILE.png for a picture)");
    if (bRaw && io_s.bPatternGiven) throw UsageError("give either an input file (-i) or a test pattern (-p), not both");
    if (bRaw && (!io_s.optSize || !io_s.psFormat))
        throw UsageError("a raw input file needs its picture size (--size WxH) and pixel format (--format NAME)");
    if (!bRaw && io_s.uiPitch != 0) throw UsageError("--pitch describes an input file; there is none (-i FILE)");
    if (io_s.eCommand == keClear && bRaw) throw UsageError("clear makes its own frames; it takes no input file");
    if (io_s.eCommand != keRotate && io_s.optAngle) throw UsageError("--angle belongs to the rotate command");
    if (io_s.eCommand == keRotate && !io_s.optAngle) throw UsageError("rotate needs --angle 90, 180 or 270");
    if (io_s.eCommand != keCombine && (!io_s.strKey.empty() || io_s.bKeyPatternGiven || io_s.bAlphaScaling))
        throw UsageError("--key, --key-pattern and --alpha-scaling belong to the combine command");
    if (io_s.eCommand == keCombine && !io_s.strKey.empty() && io_s.bKeyPatternGiven)
        throw UsageError("give the key either as a file (--key) or as a pattern (--key-pattern), not both");
    if (io_s.eCommand != keExtract && !io_s.strKeyOutput.empty())
        throw UsageError("--key-output belongs to the extract command");
    if (io_s.eCommand == keExtract && io_s.strKeyOutput.empty())
        throw UsageError("extract writes two pictures: give the key's file with --key-output FILE");
    if (io_s.eCommand == keExtract && !io_s.vecTo.empty())
        throw UsageError("extract writes its video and key as the engine makes them; convert them afterwards");
    if (io_s.bSync && io_s.eCommand != keConvert && io_s.eCommand != keClear)
        throw UsageError("the synchronous engine (--sync) only converts and clears");
    if (io_s.strOutput == "-" && io_s.strKeyOutput == "-")
        throw UsageError("the video and the key cannot both go to standard output");

    if (!io_s.optSize) io_s.optSize = SQxToolSize{1920, 1080};
    if (!io_s.psFormat) io_s.psFormat = &ParseFormat(io_s.eCommand == keExtract ? "yuayva8" : "yuyv8");
    if (!io_s.optColorimetry) {
        SQxResolutionInfo sResolution{sizeof(SQxResolutionInfo), io_s.optSize->uiWidth, io_s.optSize->uiHeight,
                                      keQxFrameRateInvalid, keQxScanModeProgressive};
        io_s.optColorimetry = NQxHelper::GetColorimetryFromResolution(sResolution);
    }
    if (!bRaw && io_s.uiFrames == 0) io_s.uiFrames = 1;
    const uint32_t uiMultiple = WidthMultiple(*io_s.psFormat);
    if (io_s.optSize->uiWidth % uiMultiple != 0)
        throw UsageError(std::string("a ") + io_s.psFormat->pszName + " picture's width must be a multiple of " +
                         std::to_string(uiMultiple) + "; " + std::to_string(io_s.optSize->uiWidth) + " is not");
    if (bRaw) {
        const uint32_t uiLine = PackedLineBytes(*io_s.psFormat, io_s.optSize->uiWidth);
        if (io_s.uiPitch != 0 && io_s.uiPitch < uiLine)
            throw UsageError("a pitch of " + std::to_string(io_s.uiPitch) + " bytes is shorter than one line of " +
                             std::to_string(io_s.optSize->uiWidth) + " " + io_s.psFormat->pszName + " pixels (" +
                             std::to_string(uiLine) + " bytes)");
    }
}

int ListFormats(const SOptions& in_rs)
{
    CQxToolEngine oEngine(in_rs.eEngine, in_rs.bSync);
    printf("%-18s %-22s %-4s %s\n", "name", "SDK format", "bits", "layout");
    for (const SQxToolFormat& r : ToolFormats()) {
        printf("%-18s %-22ls %-4u %s\n", r.pszName, NQxHelper::SurfaceFormatToString(r.eFormat), r.uiBitCount,
               r.pszLayout);
        std::string strTargets;
        for (const SQxToolFormat& rTo : ToolFormats())
            if (&rTo != &r && oEngine.CanConvert(r, rTo)) strTargets += std::string(strTargets.empty() ? "" : " ") + rTo.pszName;
        printf("%-18s converts to: %s\n", "", strTargets.empty() ? "(nothing)" : strTargets.c_str());
    }
    return keExitOk;
}

// --- Frames in ----------------------------------------------------------------

// Fills a picture with one frame after another: from a raw file or from a
// test pattern (drawn directly where it can be, else drawn in a 4:2:2 layout
// and converted by the engine).
class CFrameSource {
public:
    CFrameSource(const SOptions& in_rs, const std::string& in_strFile, EQxToolPattern in_ePattern,
                 const CQxToolPicture& in_rPicture, CQxToolEngine& in_rEngine, uint32_t in_uiFrames)
        : m_rPicture(in_rPicture), m_rEngine(in_rEngine), m_uiFrames(in_uiFrames), m_uiNext(0)
    {
        const SQxToolFormat& rs = in_rPicture.GetFormat();
        if (!in_strFile.empty()) {
            const uint32_t uiLine = in_rPicture.GetLineBytes();
            const SQxToolRawLayout sLayout{uiLine, in_rs.uiPitch ? in_rs.uiPitch : uiLine, in_rPicture.GetHeight()};
            m_pReader.reset(new CQxToolRawReader(in_strFile, sLayout, in_uiFrames,
                                                 in_rPicture.Describe() + ", pitch " + std::to_string(sLayout.uiPitch)));
            m_uiFrames = m_pReader->GetFrameCount();
            return;
        }
        m_pPattern.reset(new CQxToolPattern(in_ePattern, in_rPicture.GetWidth(), in_rPicture.GetHeight(),
                                            in_rPicture.GetColorimetry()));
        if (CQxToolPattern::IsNative(rs)) return;
        for (const char* pszDrawn : {"yuyv10", "yuyv8", "v210", "2vuy"}) {
            const SQxToolFormat& rsDrawn = ParseFormat(pszDrawn);
            const std::vector<const SQxToolFormat*> vecRoute = in_rEngine.FindRoute(rsDrawn, rs);
            if (!vecRoute.empty() && (m_vecRoute.empty() || vecRoute.size() < m_vecRoute.size())) {
                m_psDrawn = &rsDrawn;
                m_vecRoute = vecRoute;
            }
        }
        if (!m_psDrawn)
            throw CQxToolError(std::string("no test pattern can be made in ") + rs.pszName +
                               ": the engine converts nothing into it");
        m_vecPictures.emplace_back(new CQxToolPicture(*m_psDrawn, in_rPicture.GetWidth(), in_rPicture.GetHeight(),
                                                      in_rPicture.GetColorimetry()));
        for (size_t i = 0; i + 1 < m_vecRoute.size(); ++i)
            m_vecPictures.emplace_back(new CQxToolPicture(*m_vecRoute[i], in_rPicture.GetWidth(),
                                                          in_rPicture.GetHeight(), in_rPicture.GetColorimetry()));
    }

    // Frames that will come; 0 for a stream of unknown length.
    uint32_t GetFrameCount() const { return m_uiFrames; }

    // How the frames are made, for the summary: "in.v210" or "bars".
    std::string Describe(const std::string& in_strFile) const
    {
        if (m_pReader) return in_strFile == "-" ? "standard input" : in_strFile;
        std::string str = PatternName(m_pPattern->GetPattern());
        if (m_psDrawn) str += std::string(" drawn in ") + m_psDrawn->pszName;
        return str;
    }

    bool Next()
    {
        if (m_pReader) {
            ++m_uiNext;
            return m_pReader->ReadFrame(m_rPicture.GetBuffer(), m_rPicture.GetPitch());
        }
        if (m_uiNext == m_uiFrames) return false;
        if (!m_psDrawn) {
            m_pPattern->Render(m_uiNext++, m_rPicture.GetFormat(), m_rPicture.GetBuffer(), m_rPicture.GetPitch());
            return true;
        }
        m_pPattern->Render(m_uiNext++, *m_psDrawn, m_vecPictures[0]->GetBuffer(), m_vecPictures[0]->GetPitch());
        for (size_t i = 0; i < m_vecRoute.size(); ++i)
            m_rEngine.Copy(*m_vecPictures[i], i + 1 < m_vecPictures.size() ? *m_vecPictures[i + 1] : m_rPicture,
                           keQxFilterModeNearest);
        return true;
    }

private:
    const CQxToolPicture& m_rPicture;
    CQxToolEngine& m_rEngine;
    uint32_t m_uiFrames;
    uint32_t m_uiNext;
    std::unique_ptr<CQxToolRawReader> m_pReader;
    std::unique_ptr<CQxToolPattern> m_pPattern;
    const SQxToolFormat* m_psDrawn = nullptr;
    std::vector<const SQxToolFormat*> m_vecRoute;
    std::vector<std::unique_ptr<CQxToolPicture>> m_vecPictures;
};

// --- Frames out ---------------------------------------------------------------

// Writes pictures as raw frames or as PNG files; for PNG, a picture that is
// not an image yet goes through the engine to 8-bit ARGB (or 16-bit ABGR).
class CFrameSink {
public:
    CFrameSink(const SOptions& in_rs, const std::string& in_strPath, const CQxToolPicture& in_rPicture,
               CQxToolEngine& in_rEngine, uint32_t in_uiFrames)
        : m_strPath(in_strPath), m_rEngine(in_rEngine), m_bPng(in_rs.bPng || EndsWithPng(in_strPath)),
          m_uiNumber(0)
    {
        const SQxToolFormat& rs = in_rPicture.GetFormat();
        if (!m_bPng) {
            const uint32_t uiLine = in_rPicture.GetLineBytes();
            if (in_rs.uiOutPitch != 0 && in_rs.uiOutPitch < uiLine)
                throw UsageError("an output pitch of " + std::to_string(in_rs.uiOutPitch) +
                                 " bytes is shorter than one line of " + in_rPicture.Describe() + " (" +
                                 std::to_string(uiLine) + " bytes)");
            m_sLayout = {uiLine, in_rs.uiOutPitch ? in_rs.uiOutPitch : uiLine, in_rPicture.GetHeight()};
            m_pWriter.reset(new CQxToolRawWriter(in_strPath));
            return;
        }
        if (in_strPath == "-" && in_uiFrames != 1)
            throw UsageError("only one PNG picture can go to standard output; give --frames 1");
        const bool bNumbered = HasNumberField(in_strPath);
        if (in_uiFrames != 1 && !bNumbered)
            throw UsageError(in_strPath + ": " +
                             (in_uiFrames ? std::to_string(in_uiFrames) + " frames" : std::string("a stream of frames")) +
                             " need a numbered name such as frame-%04d.png (or --frames 1)");
        CheckWritable(NumberedName(in_strPath, 0));
        const SQxToolFormat& rsImage = ParseFormat(in_rs.uiPngDepth == 16 ? "abgr16" : "argb");
        if (IsImageFormat(rs) && (in_rs.uiPngDepth == 8 || &rs == &rsImage || rs.eFormat == keQxSurfaceFormatAlpha ||
                                  rs.eFormat == keQxSurfaceFormatAlphaLuminance))
            return;
        m_vecRoute = in_rEngine.FindRoute(rs, rsImage);
        if (m_vecRoute.empty())
            throw CQxToolError(std::string("a ") + rs.pszName + " picture cannot be shown as PNG: the engine has no way to " +
                               rsImage.pszName);
        for (const SQxToolFormat* p : m_vecRoute)
            m_vecPictures.emplace_back(new CQxToolPicture(*p, in_rPicture.GetWidth(), in_rPicture.GetHeight(),
                                                          in_rPicture.GetColorimetry()));
    }

    // "out.png (through argb)"
    std::string Describe() const
    {
        std::string str = m_strPath == "-" ? std::string("standard output") : m_strPath;
        if (!m_vecRoute.empty()) str += " (shown through " + RouteText(m_vecRoute) + ")";
        return str;
    }

    void Write(const CQxToolPicture& in_rPicture)
    {
        if (m_pWriter) {
            m_pWriter->WriteFrame(in_rPicture.GetBuffer(), in_rPicture.GetPitch(), m_sLayout);
            return;
        }
        const CQxToolPicture* p = &in_rPicture;
        for (const std::unique_ptr<CQxToolPicture>& pNext : m_vecPictures) {
            m_rEngine.Copy(*p, *pNext, keQxFilterModeNearest);
            p = pNext.get();
        }
        WritePng(NumberedName(m_strPath, m_uiNumber++),
                 ImageFromPicture(p->GetFormat(), p->GetBuffer(), p->GetPitch(), p->GetWidth(), p->GetHeight()));
    }

    void Close()
    {
        if (m_pWriter) m_pWriter->Close();
    }

private:
    std::string m_strPath;
    CQxToolEngine& m_rEngine;
    bool m_bPng;
    uint32_t m_uiNumber;
    SQxToolRawLayout m_sLayout{};
    std::unique_ptr<CQxToolRawWriter> m_pWriter;
    std::vector<const SQxToolFormat*> m_vecRoute;
    std::vector<std::unique_ptr<CQxToolPicture>> m_vecPictures;
};

// --- Progress -----------------------------------------------------------------

// A line on standard error for inputs of many frames: rewritten in place on
// a terminal, else one line for every tenth of the work.
class CProgress {
public:
    CProgress(uint32_t in_uiFrames, bool in_bQuiet)
        : m_uiFrames(in_uiFrames), m_bShow(!in_bQuiet && (in_uiFrames == 0 || in_uiFrames >= kuiManyFrames)),
          m_bTerminal(isatty(STDERR_FILENO) != 0), m_uiLastTenth(0), m_tStart(std::chrono::steady_clock::now())
    {
    }

    void Done(uint32_t in_uiDone)
    {
        if (!m_bShow) return;
        const double dSeconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - m_tStart).count();
        const double dRate = dSeconds > 0 ? in_uiDone / dSeconds : 0.0;
        const std::string strOf = m_uiFrames ? "/" + std::to_string(m_uiFrames) : std::string();
        if (m_bTerminal) {
            fprintf(stderr, "\rqxconvert: frame %u%s, %.1f frames/s ", in_uiDone, strOf.c_str(), dRate);
            return;
        }
        const uint32_t uiTenth = m_uiFrames ? uint32_t(uint64_t(in_uiDone) * 10 / m_uiFrames) : in_uiDone / 100;
        if (uiTenth != m_uiLastTenth) {
            m_uiLastTenth = uiTenth;
            fprintf(stderr, "qxconvert: frame %u%s, %.1f frames/s\n", in_uiDone, strOf.c_str(), dRate);
        }
    }

    void End()
    {
        if (m_bShow && m_bTerminal) fputc('\n', stderr);
    }

private:
    // Fewer frames than this finish before a progress line could help.
    static constexpr uint32_t kuiManyFrames = 25;
    uint32_t m_uiFrames;
    bool m_bShow;
    bool m_bTerminal;
    uint32_t m_uiLastTenth;
    std::chrono::steady_clock::time_point m_tStart;
};

// --- The commands -------------------------------------------------------------

int Run(SOptions& io_s)
{
    Validate(io_s);
    CQxToolEngine oEngine(io_s.eEngine, io_s.bSync);
    if (io_s.bVerbose) fprintf(stderr, "qxconvert: engine %s\n", oEngine.GetOrigin().c_str());
    if (!io_s.bQuiet && !io_s.bVerbose && !oEngine.GetWarning().empty())
        fprintf(stderr, "qxconvert: warning: %s\n", oEngine.GetWarning().c_str());

    const uint32_t uiWidth = io_s.optSize->uiWidth, uiHeight = io_s.optSize->uiHeight;
    const EQxColorimetry eColorimetry = *io_s.optColorimetry;
    const SQxToolFormat& rsInput = *io_s.psFormat;
    CQxToolPicture oInput(rsInput, uiWidth, uiHeight, eColorimetry);

    std::unique_ptr<CFrameSource> pSource;
    if (io_s.eCommand != keClear)
        pSource.reset(new CFrameSource(io_s, io_s.strInput, io_s.ePattern, oInput, oEngine, io_s.uiFrames));
    const uint32_t uiFrames = pSource ? pSource->GetFrameCount() : io_s.uiFrames;

    // The operation's own output, then the --to chain.
    std::vector<std::unique_ptr<CQxToolPicture>> vecPictures;
    const CQxToolPicture* pOperated = &oInput;
    std::unique_ptr<CQxToolPicture> pKey, pKeyOut;
    std::unique_ptr<CFrameSource> pKeySource;
    std::string strOperation;
    switch (io_s.eCommand) {
    case keRotate: {
        const bool bQuarter = *io_s.optAngle != keQxRotationAngle180;
        vecPictures.emplace_back(new CQxToolPicture(rsInput, bQuarter ? uiHeight : uiWidth,
                                                    bQuarter ? uiWidth : uiHeight, eColorimetry));
        strOperation = " turned " + std::string(*io_s.optAngle == keQxRotationAngle90    ? "90"
                                                : *io_s.optAngle == keQxRotationAngle180 ? "180"
                                                                                         : "270") +
                       " degrees";
        break;
    }
    case keCombine: {
        pKey.reset(new CQxToolPicture(rsInput, uiWidth, uiHeight, eColorimetry));
        pKeySource.reset(new CFrameSource(io_s, io_s.strKey, io_s.eKeyPattern, *pKey, oEngine,
                                          io_s.strKey.empty() && uiFrames == 0 ? UINT32_MAX : uiFrames));
        const bool b10 = rsInput.eFormat == keQxSurfaceFormatV210;
        vecPictures.emplace_back(new CQxToolPicture(ParseFormat(b10 ? "yuayva10" : "yuayva8"), uiWidth, uiHeight,
                                                    eColorimetry));
        strOperation = " combined with the key " + pKeySource->Describe(io_s.strKey);
        break;
    }
    case keExtract: {
        const bool b10 = rsInput.eFormat == keQxSurfaceFormatYUAYVA4224 && rsInput.uiBitCount == 10;
        const SQxToolFormat& rsVideo = ParseFormat(b10 ? "v210" : "yuyv8");
        vecPictures.emplace_back(new CQxToolPicture(rsVideo, uiWidth, uiHeight, eColorimetry));
        pKeyOut.reset(new CQxToolPicture(rsVideo, uiWidth, uiHeight, eColorimetry));
        strOperation = " split into video and key";
        break;
    }
    default:
        break;
    }
    if (!vecPictures.empty()) pOperated = vecPictures.back().get();
    for (const SQxToolFormat* p : io_s.vecTo)
        vecPictures.emplace_back(
            new CQxToolPicture(*p, pOperated->GetWidth(), pOperated->GetHeight(), eColorimetry));
    const CQxToolPicture& rOutput = vecPictures.empty() ? oInput : *vecPictures.back();

    CFrameSink oSink(io_s, io_s.strOutput, rOutput, oEngine, uiFrames);
    std::unique_ptr<CFrameSink> pKeySink;
    if (pKeyOut) pKeySink.reset(new CFrameSink(io_s, io_s.strKeyOutput, *pKeyOut, oEngine, uiFrames));

    CProgress oProgress(uiFrames, io_s.bQuiet);
    uint32_t uiDone = 0;
    for (;;) {
        if (pSource) {
            if (!pSource->Next()) break;
        } else {
            if (uiDone == uiFrames) break;
            oEngine.Clear(oInput, io_s.eColor, io_s.fAlpha);
        }
        if (io_s.eCommand == keRotate) oEngine.Rotate(oInput, *vecPictures[0], *io_s.optAngle);
        if (io_s.eCommand == keCombine) {
            if (!pKeySource->Next())
                throw CQxToolError(io_s.strKey + " has fewer frames than the video (" + std::to_string(uiDone) + ")");
            oEngine.Combine(oInput, *pKey, *vecPictures[0], io_s.bAlphaScaling);
        }
        if (io_s.eCommand == keExtract) oEngine.Extract(oInput, *vecPictures[0], *pKeyOut);
        const CQxToolPicture* p = pOperated;
        for (size_t i = vecPictures.size() - io_s.vecTo.size(); i < vecPictures.size(); ++i) {
            oEngine.Copy(*p, *vecPictures[i], io_s.eFilter);
            p = vecPictures[i].get();
        }
        oSink.Write(rOutput);
        if (pKeySink) pKeySink->Write(*pKeyOut);
        oProgress.Done(++uiDone);
    }
    oProgress.End();
    oSink.Close();
    if (pKeySink) pKeySink->Close();
    if (uiDone == 0) throw CQxToolError("the input held no frames");

    if (!io_s.bQuiet) {
        std::string strChain = oInput.Describe();
        strChain += pSource ? " (" + pSource->Describe(io_s.strInput) + ")" : " cleared";
        strChain += strOperation;
        if (pOperated != &oInput) strChain += " -> " + pOperated->Describe();
        for (const SQxToolFormat* p : io_s.vecTo) strChain += std::string(" -> ") + p->pszName;
        fprintf(stderr, "qxconvert: %u frame%s, %s, written to %s%s\n", uiDone, uiDone == 1 ? "" : "s",
                strChain.c_str(), oSink.Describe().c_str(),
                pKeySink ? (" and " + pKeySink->Describe()).c_str() : "");
    }
    return keExitOk;
}

}  // namespace

int main(int argc, char** argv)
{
    return ToolMain("qxconvert", [&] {
        SOptions s = Parse(argc, argv);
        if (s.eCommand == keHelp) {
            fputs(kszUsage, stdout);
            return int(keExitOk);
        }
        return s.eCommand == keFormats ? ListFormats(s) : Run(s);
    });
}
