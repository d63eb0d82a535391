// libFuzzer target for the INI reader: any bytes must load without a crash,
// leak or undefined behaviour, give records that respect the reader's rules,
// and survive a save and a second load. The UTF-8 conversion underneath must
// give every byte sequence back unchanged.
#include <qxbase/qxinifile.h>

#include "util/qxtext.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string TempPath(const char* in_pszWhat)
{
    return "/tmp/qxbase-fuzz-" + std::to_string(getpid()) + "-" + in_pszWhat + ".ini";
}

void Check(bool in_bCondition, const char* in_pszWhat)
{
    if (!in_bCondition) {
        fprintf(stderr, "invariant broken: %s\n", in_pszWhat);
        abort();
    }
}

void CheckRecords(const CQxIniFile& in_ini)
{
    for (const CQxIniFile::Record& r : in_ini.GetSections()) Check(r.Key.empty(), "header with a key");
    for (const std::wstring& strName : in_ini.GetSectionNames()) {
        for (const CQxIniFile::Record& r : in_ini.GetSection(strName)) {
            Check(r.CommentChar == L' ' || r.CommentChar == L'#' || r.CommentChar == L';',
                  "comment character");
            Check(r.Key.find(L'=') == std::wstring::npos, "'=' in a key");
            Check(r.Section.find(L']') == std::wstring::npos, "']' in a section name");
            Check((r.Section + r.Key + r.Value).find(L'\n') == std::wstring::npos, "newline in a field");
            Check(r.Comments.empty() || r.Comments.back() == L'\n', "comment without its newline");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in_pData, size_t in_uiSize)
{
    const char* pBytes = reinterpret_cast<const char*>(in_pData);
    const std::string strInput(pBytes, in_uiSize);
    Check(NQxText::EncodeUtf8(NQxText::DecodeUtf8(strInput)) == strInput, "UTF-8 round trip");

    static const std::string strPath = TempPath("in");
    FILE* pFile = fopen(strPath.c_str(), "wb");
    if (!pFile) return 0;
    fwrite(in_pData, 1, in_uiSize, pFile);
    fclose(pFile);

    CQxIniFile ini(strPath, false);
    CheckRecords(ini);
    const std::wstring strContent = ini.Content();
    const std::vector<std::wstring> vecNames = ini.GetSectionNames();
    if (!vecNames.empty()) {
        const std::wstring& strFirst = vecNames.front();
        ini.SetString(L"fuzz", strFirst, ini.GetString(L"fuzz", strFirst, L"value"));
        ini.GetLongLong(L"fuzz", strFirst, 1);
        ini.SetRecordComments(L"# fuzz", L"fuzz", strFirst);
        ini.CommentRecord(CQxIniFile::Pound, L"fuzz", strFirst);
        ini.RenameSection(strFirst, L"renamed");
    }
    Check(ini.Save(), "save");

    CQxIniFile again(strPath, false);
    CheckRecords(again);
    remove(strPath.c_str());
    return 0;
}
