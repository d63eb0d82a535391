// The INI file behind the class registry and the SDK's configuration files.
// Files are read whole as bytes and decoded with the fixed UTF-8 conversion
// of qxtext.h, so neither the process locale nor invalid bytes can stop a
// load half-way or change a file that is only read and written back.
#include <qxbase/qxinifile.h>

#include "util/qxtext.h"

#include <algorithm>
#include <cwchar>
#include <fstream>
#include <cstdio>
#include <iterator>

namespace {

const wchar_t* const kWhitespace = L" \t\n\r";

bool RecordSectionIs(const CQxIniFile::Record& in_record, const std::wstring& in_strSection)
{
    return in_record.Section == in_strSection;
}

bool RecordSectionKeyIs(const CQxIniFile::Record& in_record, const std::wstring& in_strSection,
                        const std::wstring& in_strKey)
{
    return in_record.Section == in_strSection && in_record.Key == in_strKey;
}

CQxIniFile::Record NewRecord()
{
    CQxIniFile::Record record;
    record.CommentChar = L' ';
    return record;
}

// One line of a written file or of Content(); in_bAlwaysCommentChar puts the
// comment character (a space for active records) in front of every line.
void AppendRecordText(std::wstring& io_strOut, const CQxIniFile::Record& in_record,
                      bool in_bAlwaysCommentChar)
{
    io_strOut += in_record.Comments;
    if (in_bAlwaysCommentChar || in_record.CommentChar != L' ') io_strOut += in_record.CommentChar;
    if (!in_record.Key.empty()) {
        io_strOut += in_record.Key;
        io_strOut += L'=';
        io_strOut += in_record.Value;
    } else {
        io_strOut += L'[';
        io_strOut += in_record.Section;
        io_strOut += L']';
    }
    io_strOut += L'\n';
}

// False when the file cannot be opened or read (a folder, an I/O error):
// the caller then keeps what it had rather than a partial file.
bool ReadWholeFile(const std::string& in_strPath, std::string& out_strBytes)
{
    FILE* pFile = fopen(in_strPath.c_str(), "rb");
    if (!pFile) return false;
    char buffer[65536];
    size_t uiRead;
    while ((uiRead = fread(buffer, 1, sizeof(buffer), pFile)) > 0) out_strBytes.append(buffer, uiRead);
    const bool bOk = !ferror(pFile);
    fclose(pFile);
    return bOk;
}

}  // namespace

CQxIniFile::CQxIniFile(std::string in_strFileName, bool in_bAutoSave)
    : m_strFileName(std::move(in_strFileName)), m_bAutoSave(in_bAutoSave), m_bModified(false)
{
    Load();
}

CQxIniFile::~CQxIniFile()
{
    Sort(true);
    if (m_bModified) {
        try {
            Save();
        } catch (...) {
            // Out of memory while writing: nothing sensible is left to do in
            // a destructor.
        }
    }
}

void CQxIniFile::Trim(std::wstring& io_strText, const std::wstring& in_strCharacters, int in_iMode)
{
    const size_t uiFirst = io_strText.find_first_not_of(in_strCharacters);
    if (uiFirst == std::wstring::npos) {
        io_strText.clear();
        return;
    }
    if (in_iMode != 1) io_strText.erase(io_strText.find_last_not_of(in_strCharacters) + 1);
    if (in_iMode < 2) io_strText.erase(0, uiFirst);
}

bool CQxIniFile::Load()
{
    std::string strBytes;
    if (!ReadWholeFile(m_strFileName, strBytes)) return false;
    const std::wstring strText = NQxText::DecodeUtf8(strBytes);

    m_vecRecords.clear();
    std::wstring strComments;
    std::wstring strCurrentSection;
    size_t uiStart = 0;
    while (uiStart < strText.size()) {
        size_t uiEnd = strText.find(L'\n', uiStart);
        if (uiEnd == std::wstring::npos) uiEnd = strText.size();
        std::wstring strLine = strText.substr(uiStart, uiEnd - uiStart);
        uiStart = uiEnd + 1;

        Trim(strLine, kWhitespace, 0);
        if (strLine.empty()) continue;

        Record record = NewRecord();
        if (strLine[0] == L'#' || strLine[0] == L';') {
            if (strLine.find_first_of(L"[=") == std::wstring::npos) {
                strComments += strLine;
                strComments += L'\n';
            } else {
                record.CommentChar = strLine[0];
                strLine.erase(0, 1);
                Trim(strLine, kWhitespace, 0);
            }
        }

        if (strLine.find(L'[') != std::wstring::npos) {
            // The first character goes whatever it is, and the name ends at
            // the first ']'.
            strLine.erase(0, 1);
            const size_t uiClose = strLine.find(L']');
            if (uiClose != std::wstring::npos) strLine.erase(uiClose);
            record.Comments = strComments;
            strComments.clear();
            record.Section = strLine;
            record.Key.clear();
            record.Value.clear();
            strCurrentSection = strLine;
        }

        const size_t uiEquals = strLine.find(L'=');
        if (uiEquals != std::wstring::npos) {
            record.Comments = strComments;
            strComments.clear();
            record.Section = strCurrentSection;
            record.Key = strLine.substr(0, uiEquals);
            record.Value = strLine.substr(uiEquals + 1);
        }

        if (strComments.empty()) m_vecRecords.push_back(std::move(record));
    }
    return true;
}

bool CQxIniFile::Save() { return Save(true); }

bool CQxIniFile::Save(bool in_bDoSave)
{
    if (!in_bDoSave) return true;
    std::ofstream file(m_strFileName, std::ios::out | std::ios::trunc | std::ios::binary);
    if (!file.is_open()) {
        NQxText::ConsoleWrite(L"Unable to open " + NQxText::DecodeUtf8(m_strFileName) +
                              L" for writing\n");
        return false;
    }
    std::wstring strLine;
    for (const Record& record : m_vecRecords) {
        strLine.clear();
        AppendRecordText(strLine, record, true);
        const std::string strBytes = NQxText::EncodeUtf8(strLine);
        file.write(strBytes.data(), static_cast<std::streamsize>(strBytes.size()));
        file.flush();
    }
    // A failing close is not reported: the lines were flushed one by one.
    file.close();
    m_bModified = false;
    return true;
}

bool CQxIniFile::Sort(bool) { return true; }

std::wstring CQxIniFile::Content() const
{
    std::wstring strText;
    for (const Record& record : m_vecRecords) AppendRecordText(strText, record, false);
    return strText;
}

std::vector<CQxIniFile::Record>::iterator CQxIniFile::FindRecord(const std::wstring& in_strKey,
                                                                 const std::wstring& in_strSection)
{
    return std::find_if(m_vecRecords.begin(), m_vecRecords.end(), [&](const Record& r) {
        return RecordSectionKeyIs(r, in_strSection, in_strKey);
    });
}

std::vector<CQxIniFile::Record>::const_iterator CQxIniFile::FindRecord(
    const std::wstring& in_strKey, const std::wstring& in_strSection) const
{
    return std::find_if(m_vecRecords.begin(), m_vecRecords.end(), [&](const Record& r) {
        return RecordSectionKeyIs(r, in_strSection, in_strKey);
    });
}

std::vector<CQxIniFile::Record>::iterator CQxIniFile::FindSection(const std::wstring& in_strSection)
{
    return std::find_if(m_vecRecords.begin(), m_vecRecords.end(),
                        [&](const Record& r) { return RecordSectionIs(r, in_strSection); });
}

std::vector<CQxIniFile::Record>::iterator CQxIniFile::FindSectionHeader(
    const std::wstring& in_strSection)
{
    return std::find_if(m_vecRecords.begin(), m_vecRecords.end(), [&](const Record& r) {
        return RecordSectionIs(r, in_strSection) && r.Key.empty();
    });
}

bool CQxIniFile::SetString(const std::wstring& in_strKey, const std::wstring& in_strSection,
                           const std::wstring& in_strValue)
{
    m_bModified = true;
    auto itSection = FindSection(in_strSection);
    if (itSection != m_vecRecords.end()) {
        auto itRecord = FindRecord(in_strKey, in_strSection);
        if (itRecord != m_vecRecords.end()) {
            itRecord->Value = in_strValue;
        } else {
            Record record = NewRecord();
            record.Section = in_strSection;
            record.Key = in_strKey;
            record.Value = in_strValue;
            m_vecRecords.insert(itSection + 1, std::move(record));
        }
    } else {
        Record header = NewRecord();
        header.Section = in_strSection;
        Record record = header;
        record.Key = in_strKey;
        record.Value = in_strValue;
        m_vecRecords.push_back(std::move(header));
        m_vecRecords.push_back(std::move(record));
    }
    return Save(m_bAutoSave);
}

std::wstring CQxIniFile::GetString(const std::wstring& in_strKey, const std::wstring& in_strSection,
                                   const std::wstring& in_strDefault) const
{
    auto it = FindRecord(in_strKey, in_strSection);
    return it != m_vecRecords.end() ? it->Value : in_strDefault;
}

bool CQxIniFile::SetLongLong(const std::wstring& in_strKey, const std::wstring& in_strSection,
                             unsigned long long in_ullValue)
{
    m_bModified = true;
    wchar_t wszValue[128];
    swprintf(wszValue, 128, L"%llu", in_ullValue);
    return SetString(in_strKey, in_strSection, wszValue);
}

unsigned long long CQxIniFile::GetLongLong(const std::wstring& in_strKey,
                                           const std::wstring& in_strSection,
                                           unsigned long long in_ullDefault) const
{
    const std::wstring strText = GetString(in_strKey, in_strSection, L"");
    if (strText.empty()) return in_ullDefault;
    // Stored files depend on this reading: every step adds the first digit,
    // and nothing is checked to be a digit. Unsigned arithmetic keeps any
    // text well defined (it wraps).
    const unsigned long long ullDigit =
        static_cast<unsigned long long>(static_cast<long long>(strText[0]) - L'0');
    unsigned long long ullResult = 0;
    for (size_t i = 0; i < strText.size(); ++i) ullResult = ullResult * 10u + ullDigit;
    return ullResult;
}

bool CQxIniFile::SetRecordCommentChar(wchar_t in_wcChar, const std::wstring& in_strKey,
                                      const std::wstring& in_strSection)
{
    auto it = FindRecord(in_strKey, in_strSection);
    if (it == m_vecRecords.end()) return false;
    it->CommentChar = in_wcChar;
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::SetSectionCommentChar(wchar_t in_wcChar, const std::wstring& in_strSection)
{
    bool bFound = false;
    for (Record& record : m_vecRecords) {
        if (RecordSectionIs(record, in_strSection)) {
            record.CommentChar = in_wcChar;
            bFound = true;
        }
    }
    if (!bFound) return false;
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::CommentRecord(CommentChar in_eChar, const std::wstring& in_strKey,
                               const std::wstring& in_strSection)
{
    return SetRecordCommentChar(static_cast<wchar_t>(in_eChar), in_strKey, in_strSection);
}

bool CQxIniFile::UnCommentRecord(const std::wstring& in_strKey, const std::wstring& in_strSection)
{
    return SetRecordCommentChar(L' ', in_strKey, in_strSection);
}

bool CQxIniFile::CommentSection(wchar_t in_wcChar, const std::wstring& in_strSection)
{
    return SetSectionCommentChar(in_wcChar, in_strSection);
}

bool CQxIniFile::UnCommentSection(const std::wstring& in_strSection)
{
    return SetSectionCommentChar(L' ', in_strSection);
}

bool CQxIniFile::ReplaceComments(Record& io_record, std::wstring in_strComments)
{
    // Two characters are compared with the one-character "\n", which never
    // matches: any text of two or more characters gains a newline, a single
    // character never does. Files written so far depend on it.
    if (in_strComments.size() > 1 &&
        in_strComments.substr(in_strComments.size() - 2) != L"\n")
        in_strComments += L'\n';
    io_record.Comments = std::move(in_strComments);
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::SetRecordComments(const std::wstring& in_strComments,
                                   const std::wstring& in_strKey,
                                   const std::wstring& in_strSection)
{
    auto it = FindRecord(in_strKey, in_strSection);
    if (it == m_vecRecords.end()) return false;
    return ReplaceComments(*it, in_strComments);
}

bool CQxIniFile::SetSectionComments(const std::wstring& in_strComments,
                                    const std::wstring& in_strSection)
{
    auto it = FindSectionHeader(in_strSection);
    if (it == m_vecRecords.end()) return false;
    return ReplaceComments(*it, in_strComments);
}

bool CQxIniFile::RenameSection(const std::wstring& in_strOldName, const std::wstring& in_strNewName)
{
    if (SectionExists(in_strNewName)) return false;
    for (Record& record : m_vecRecords) {
        if (RecordSectionIs(record, in_strOldName)) record.Section = in_strNewName;
    }
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::DeleteRecord(const std::wstring& in_strKey, const std::wstring& in_strSection)
{
    auto it = FindRecord(in_strKey, in_strSection);
    if (it != m_vecRecords.end()) m_vecRecords.erase(it);
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::DeleteSection(const std::wstring& in_strSection)
{
    m_vecRecords.erase(std::remove_if(m_vecRecords.begin(), m_vecRecords.end(),
                                      [&](const Record& r) {
                                          return RecordSectionIs(r, in_strSection);
                                      }),
                       m_vecRecords.end());
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::AddSection(const std::wstring& in_strSection)
{
    if (SectionExists(in_strSection)) return false;
    Record header = NewRecord();
    header.Section = in_strSection;
    m_vecRecords.push_back(std::move(header));
    m_bModified = true;
    return Save(m_bAutoSave);
}

bool CQxIniFile::SectionExists(const std::wstring& in_strSection) const
{
    return std::any_of(m_vecRecords.begin(), m_vecRecords.end(),
                       [&](const Record& r) { return RecordSectionIs(r, in_strSection); });
}

bool CQxIniFile::RecordExists(const std::wstring& in_strKey, const std::wstring& in_strSection) const
{
    return FindRecord(in_strKey, in_strSection) != m_vecRecords.end();
}

std::vector<CQxIniFile::Record> CQxIniFile::GetRecord(const std::wstring& in_strKey,
                                                      const std::wstring& in_strSection) const
{
    std::vector<Record> vecResult;
    std::copy_if(m_vecRecords.begin(), m_vecRecords.end(), std::back_inserter(vecResult),
                 [&](const Record& r) { return RecordSectionKeyIs(r, in_strSection, in_strKey); });
    return vecResult;
}

std::vector<CQxIniFile::Record> CQxIniFile::GetSection(const std::wstring& in_strSection) const
{
    std::vector<Record> vecResult;
    std::copy_if(m_vecRecords.begin(), m_vecRecords.end(), std::back_inserter(vecResult),
                 [&](const Record& r) { return RecordSectionIs(r, in_strSection); });
    return vecResult;
}

std::vector<CQxIniFile::Record> CQxIniFile::GetSections() const
{
    std::vector<Record> vecResult;
    std::copy_if(m_vecRecords.begin(), m_vecRecords.end(), std::back_inserter(vecResult),
                 [](const Record& r) { return r.Key.empty(); });
    return vecResult;
}

std::vector<std::wstring> CQxIniFile::GetSectionNames() const
{
    std::vector<std::wstring> vecResult;
    for (const Record& record : m_vecRecords) {
        if (record.Key.empty()) vecResult.push_back(record.Section);
    }
    return vecResult;
}
