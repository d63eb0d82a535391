#include "tools/common/qxtoolpng.h"

#include "tools/common/qxtoolerror.h"

#include <png.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>

namespace NQxTool {

namespace {

// libpng reports through longjmp; the message is kept for the exception
// thrown once the C frames are left.
struct SPngState {
    char szMessage[256];
};

void OnPngError(png_structp in_pPng, png_const_charp in_pszMessage)
{
    SPngState* ps = static_cast<SPngState*>(png_get_error_ptr(in_pPng));
    std::snprintf(ps->szMessage, sizeof(ps->szMessage), "%s", in_pszMessage);
    png_longjmp(in_pPng, 1);
}

void OnPngWarning(png_structp, png_const_charp) {}

// Plain C frame between setjmp and longjmp: nothing here has a destructor.
// Returns false with the message in in_psState.
bool WriteRows(FILE* in_pFile, const SQxToolImage& in_rsImage, png_bytep* in_ppRows, SPngState* in_psState)
{
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, in_psState, OnPngError, OnPngWarning);
    if (!pPng) {
        std::snprintf(in_psState->szMessage, sizeof(in_psState->szMessage), "libpng could not start");
        return false;
    }
    png_infop pInfo = png_create_info_struct(pPng);
    if (!pInfo || setjmp(png_jmpbuf(pPng))) {
        if (!pInfo) std::snprintf(in_psState->szMessage, sizeof(in_psState->szMessage), "out of memory");
        png_destroy_write_struct(&pPng, pInfo ? &pInfo : nullptr);
        return false;
    }
    static const int s_aiColorTypes[5] = {0, PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                          PNG_COLOR_TYPE_RGB_ALPHA};
    png_init_io(pPng, in_pFile);
    // Pictures are large and written often; a fast setting keeps the file
    // a fraction of the raw size without making people wait.
    png_set_compression_level(pPng, 3);
    png_set_IHDR(pPng, pInfo, in_rsImage.uiWidth, in_rsImage.uiHeight, int(in_rsImage.uiBits),
                 s_aiColorTypes[in_rsImage.uiChannels], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(pPng, pInfo);
    png_write_image(pPng, in_ppRows);
    png_write_end(pPng, pInfo);
    png_destroy_write_struct(&pPng, &pInfo);
    return true;
}

void PutBigEndian16(uint8_t* out_puc, uint16_t in_ui)
{
    out_puc[0] = uint8_t(in_ui >> 8);
    out_puc[1] = uint8_t(in_ui);
}

uint16_t GetLittleEndian16(const uint8_t* in_puc) { return uint16_t(in_puc[0] | in_puc[1] << 8); }

// The position and width of the one number field of a name, if any.
bool FindNumberField(const std::string& in_strPattern, size_t* out_puStart, size_t* out_puLength)
{
    bool bFound = false;
    for (size_t i = 0; i < in_strPattern.size(); ++i) {
        if (in_strPattern[i] != '%') continue;
        size_t j = i + 1;
        while (j < in_strPattern.size() && in_strPattern[j] >= '0' && in_strPattern[j] <= '9' && j - i <= 2) ++j;
        if (j >= in_strPattern.size() || in_strPattern[j] != 'd')
            throw UsageError("the output name \"" + in_strPattern +
                             "\" has a % that is not a frame number field (%d, %4d or %04d)");
        if (bFound)
            throw UsageError("the output name \"" + in_strPattern + "\" has more than one frame number field");
        bFound = true;
        *out_puStart = i;
        *out_puLength = j + 1 - i;
        i = j;
    }
    return bFound;
}

}  // namespace

void SQxToolImage::Allocate(uint32_t in_uiWidth, uint32_t in_uiHeight, uint32_t in_uiChannels, uint32_t in_uiBits)
{
    uiWidth = in_uiWidth;
    uiHeight = in_uiHeight;
    uiChannels = in_uiChannels;
    uiBits = in_uiBits;
    vecPixels.assign(RowBytes() * in_uiHeight, 0);
}

void WritePng(const std::string& in_strPath, const SQxToolImage& in_rsImage)
{
    if (in_rsImage.uiWidth == 0 || in_rsImage.uiHeight == 0 || in_rsImage.uiChannels < 1 ||
        in_rsImage.uiChannels > 4 || (in_rsImage.uiBits != 8 && in_rsImage.uiBits != 16) ||
        in_rsImage.vecPixels.size() < in_rsImage.RowBytes() * in_rsImage.uiHeight)
        throw CQxToolError(in_strPath + ": not a picture that PNG can hold");
    const bool bStdout = in_strPath == "-";
    FILE* pFile = bStdout ? stdout : std::fopen(in_strPath.c_str(), "wb");
    if (!pFile) throw CQxToolError(FileError(in_strPath, errno));
    std::vector<png_bytep> vecRows(in_rsImage.uiHeight);
    for (uint32_t y = 0; y < in_rsImage.uiHeight; ++y)
        vecRows[y] = const_cast<png_bytep>(in_rsImage.vecPixels.data() + y * in_rsImage.RowBytes());
    SPngState sState{};
    bool bOk = WriteRows(pFile, in_rsImage, vecRows.data(), &sState);
    errno = 0;
    if (std::fflush(pFile) != 0 || std::ferror(pFile)) {
        if (bOk) std::snprintf(sState.szMessage, sizeof(sState.szMessage), "%s", std::strerror(errno ? errno : EIO));
        bOk = false;
    }
    if (!bStdout && std::fclose(pFile) != 0 && bOk) {
        std::snprintf(sState.szMessage, sizeof(sState.szMessage), "%s", std::strerror(errno));
        bOk = false;
    }
    if (!bOk) {
        if (!bStdout) std::remove(in_strPath.c_str());
        throw CQxToolError(in_strPath + ": " + sState.szMessage);
    }
}

void CheckWritable(const std::string& in_strPath)
{
    if (in_strPath == "-") return;
    const bool bExisted = access(in_strPath.c_str(), F_OK) == 0;
    FILE* pFile = std::fopen(in_strPath.c_str(), "ab");
    if (!pFile) throw CQxToolError(FileError(in_strPath, errno));
    std::fclose(pFile);
    if (!bExisted) std::remove(in_strPath.c_str());
}

bool IsImageFormat(const SQxToolFormat& in_rsFormat)
{
    return (in_rsFormat.eFormat == keQxSurfaceFormatARGBGraphic && !in_rsFormat.bShaped) ||
           in_rsFormat.eFormat == keQxSurfaceFormatABGR16 || in_rsFormat.eFormat == keQxSurfaceFormatAlpha ||
           in_rsFormat.eFormat == keQxSurfaceFormatAlphaLuminance;
}

SQxToolImage ImageFromPicture(const SQxToolFormat& in_rsFormat, const uint8_t* in_pucBuffer, int32_t in_iPitch,
                              uint32_t in_uiWidth, uint32_t in_uiHeight)
{
    SQxToolImage sImage;
    auto Line = [&](uint32_t y) { return in_pucBuffer + size_t(y) * size_t(in_iPitch); };
    switch (in_rsFormat.eFormat) {
    case keQxSurfaceFormatAlpha:
        sImage.Allocate(in_uiWidth, in_uiHeight, 1, 8);
        for (uint32_t y = 0; y < in_uiHeight; ++y) std::memcpy(sImage.Row(y), Line(y), in_uiWidth);
        return sImage;
    case keQxSurfaceFormatAlphaLuminance:
        sImage.Allocate(in_uiWidth, in_uiHeight, 2, 8);
        for (uint32_t y = 0; y < in_uiHeight; ++y)
            for (uint32_t x = 0; x < in_uiWidth; ++x) {
                sImage.Row(y)[2 * x] = Line(y)[2 * x + 1];
                sImage.Row(y)[2 * x + 1] = Line(y)[2 * x];
            }
        return sImage;
    case keQxSurfaceFormatARGBGraphic:
    case keQxSurfaceFormatABGR16:
        break;
    default:
        throw CQxToolError(std::string("a ") + in_rsFormat.pszName + " picture is not an image; convert it first");
    }

    const bool b16 = in_rsFormat.eFormat == keQxSurfaceFormatABGR16;
    bool bOpaque = true;
    for (uint32_t y = 0; y < in_uiHeight && bOpaque; ++y)
        for (uint32_t x = 0; x < in_uiWidth && bOpaque; ++x)
            bOpaque = b16 ? GetLittleEndian16(Line(y) + 8 * x) == 0xFFFF : Line(y)[4 * x + 3] == 0xFF;
    const uint32_t uiChannels = bOpaque ? 3 : 4;
    sImage.Allocate(in_uiWidth, in_uiHeight, uiChannels, b16 ? 16 : 8);
    for (uint32_t y = 0; y < in_uiHeight; ++y) {
        const uint8_t* pucIn = Line(y);
        uint8_t* pucOut = sImage.Row(y);
        for (uint32_t x = 0; x < in_uiWidth; ++x) {
            if (b16) {
                // Words A, B, G, R.
                const uint8_t* puc = pucIn + 8 * x;
                uint8_t* pucPixel = pucOut + 2 * uiChannels * x;
                PutBigEndian16(pucPixel, GetLittleEndian16(puc + 6));
                PutBigEndian16(pucPixel + 2, GetLittleEndian16(puc + 4));
                PutBigEndian16(pucPixel + 4, GetLittleEndian16(puc + 2));
                if (!bOpaque) PutBigEndian16(pucPixel + 6, GetLittleEndian16(puc));
            } else {
                // Bytes B, G, R, A.
                const uint8_t* puc = pucIn + 4 * x;
                uint8_t* pucPixel = pucOut + uiChannels * x;
                pucPixel[0] = puc[2];
                pucPixel[1] = puc[1];
                pucPixel[2] = puc[0];
                if (!bOpaque) pucPixel[3] = puc[3];
            }
        }
    }
    return sImage;
}

bool HasNumberField(const std::string& in_strPattern)
{
    size_t uStart = 0, uLength = 0;
    return FindNumberField(in_strPattern, &uStart, &uLength);
}

std::string NumberedName(const std::string& in_strPattern, uint32_t in_uiNumber)
{
    size_t uStart = 0, uLength = 0;
    if (!FindNumberField(in_strPattern, &uStart, &uLength)) return in_strPattern;
    const std::string strField = in_strPattern.substr(uStart, uLength);
    char szNumber[32];
    std::snprintf(szNumber, sizeof(szNumber), strField.c_str(), in_uiNumber);
    return in_strPattern.substr(0, uStart) + szNumber + in_strPattern.substr(uStart + uLength);
}

}  // namespace NQxTool
