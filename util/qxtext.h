// Private text helpers: a fixed UTF-8 conversion between the library's wide
// strings and the bytes of files, paths and the console, independent of the
// process locale (a host that never calls setlocale still gets its non-ASCII
// paths through).
//
// Bytes that are not valid UTF-8 are carried as the wide characters
// U+DC80..U+DCFF (one per byte) and written back as the same byte, so any
// file, even a corrupt one, makes a byte-exact round trip.
//
// Header-only because the module kit, which every component module compiles
// on its own, needs them as well as the library.
#ifndef QXBASE_UTIL_QXTEXT_H
#define QXBASE_UTIL_QXTEXT_H

#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <string>

namespace NQxText {

inline bool IsEscapedByte(uint32_t in_ui32Char)
{
    return in_ui32Char >= 0xDC80u && in_ui32Char <= 0xDCFFu;
}

inline std::wstring DecodeUtf8(const char* in_pData, size_t in_uiSize)
{
    std::wstring strResult;
    strResult.reserve(in_uiSize);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(in_pData);
    size_t i = 0;
    while (i < in_uiSize) {
        const uint32_t ui32Lead = p[i];
        if (ui32Lead < 0x80u) {
            strResult.push_back(static_cast<wchar_t>(ui32Lead));
            ++i;
            continue;
        }
        size_t uiLength = 0;
        uint32_t ui32Char = 0;
        uint32_t ui32Min = 0;
        if (ui32Lead >= 0xC2u && ui32Lead <= 0xDFu) {
            uiLength = 2, ui32Char = ui32Lead & 0x1Fu, ui32Min = 0x80u;
        } else if (ui32Lead >= 0xE0u && ui32Lead <= 0xEFu) {
            uiLength = 3, ui32Char = ui32Lead & 0x0Fu, ui32Min = 0x800u;
        } else if (ui32Lead >= 0xF0u && ui32Lead <= 0xF4u) {
            uiLength = 4, ui32Char = ui32Lead & 0x07u, ui32Min = 0x10000u;
        }
        bool bValid = uiLength != 0 && i + uiLength <= in_uiSize;
        for (size_t k = 1; bValid && k < uiLength; ++k) {
            if ((p[i + k] & 0xC0u) != 0x80u)
                bValid = false;
            else
                ui32Char = (ui32Char << 6) | (p[i + k] & 0x3Fu);
        }
        // Overlong forms, surrogates and values past U+10FFFF would not come
        // back as the same bytes, so they are escaped byte by byte instead.
        if (bValid && ui32Char >= ui32Min && ui32Char <= 0x10FFFFu &&
            !(ui32Char >= 0xD800u && ui32Char <= 0xDFFFu)) {
            strResult.push_back(static_cast<wchar_t>(ui32Char));
            i += uiLength;
        } else {
            strResult.push_back(static_cast<wchar_t>(0xDC00u + ui32Lead));
            ++i;
        }
    }
    return strResult;
}

inline std::wstring DecodeUtf8(const std::string& in_str)
{
    return DecodeUtf8(in_str.data(), in_str.size());
}

inline void AppendUtf8(std::string& io_strOut, wchar_t in_wc)
{
    const uint32_t c = static_cast<uint32_t>(in_wc);
    if (c < 0x80u) {
        io_strOut.push_back(static_cast<char>(c));
    } else if (IsEscapedByte(c)) {
        io_strOut.push_back(static_cast<char>(c - 0xDC00u));
    } else if (c < 0x800u) {
        io_strOut.push_back(static_cast<char>(0xC0u | (c >> 6)));
        io_strOut.push_back(static_cast<char>(0x80u | (c & 0x3Fu)));
    } else if (c < 0x10000u) {
        io_strOut.push_back(static_cast<char>(0xE0u | (c >> 12)));
        io_strOut.push_back(static_cast<char>(0x80u | ((c >> 6) & 0x3Fu)));
        io_strOut.push_back(static_cast<char>(0x80u | (c & 0x3Fu)));
    } else if (c <= 0x10FFFFu) {
        io_strOut.push_back(static_cast<char>(0xF0u | (c >> 18)));
        io_strOut.push_back(static_cast<char>(0x80u | ((c >> 12) & 0x3Fu)));
        io_strOut.push_back(static_cast<char>(0x80u | ((c >> 6) & 0x3Fu)));
        io_strOut.push_back(static_cast<char>(0x80u | (c & 0x3Fu)));
    } else {
        // Not a character at all: keep the place visible.
        io_strOut.append("\xEF\xBF\xBD");
    }
}

inline std::string EncodeUtf8(const wchar_t* in_pText, size_t in_uiLength)
{
    std::string strResult;
    strResult.reserve(in_uiLength);
    for (size_t i = 0; i < in_uiLength; ++i) AppendUtf8(strResult, in_pText[i]);
    return strResult;
}

inline std::string EncodeUtf8(const std::wstring& in_str)
{
    return EncodeUtf8(in_str.data(), in_str.size());
}

// Writes a message to standard output. A host that already made stdout a
// wide stream gets fputws; otherwise the text goes out as UTF-8 bytes, which
// neither depends on the locale nor turns the host's stdout into a wide
// stream behind its back (its later printf calls would then print nothing).
inline void ConsoleWrite(const std::wstring& in_strText)
{
    if (fwide(stdout, 0) > 0) {
        fputws(in_strText.c_str(), stdout);
    } else {
        const std::string strBytes = EncodeUtf8(in_strText);
        fwrite(strBytes.data(), 1, strBytes.size(), stdout);
    }
    fflush(stdout);
}

}  // namespace NQxText

#endif  // QXBASE_UTIL_QXTEXT_H
