// An INI file of sections and key=value records, kept in memory as one
// ordered list of records and written back in the same order. Names and
// values are wide strings; files are read and written as UTF-8 whatever the
// process locale, and bytes that are not UTF-8 survive a load and save
// unchanged.
//
// Deliberate behaviours that callers rely on (the class registry among
// them):
// - every line written for an active record starts with one space (the
//   record's comment character), which the reader trims away again;
// - blank lines, and comments after the last record, are dropped on load;
// - keys and values are not trimmed around '=';
// - a key added to an existing section goes directly below its header, so
//   later keys stand above earlier ones;
// - GetLongLong builds its number from the first digit only, once per
//   character ("123" reads as 111);
// - SetRecordComments appends a newline to any comment text of two or more
//   characters and never to a one-character text.
// Not synchronised: an object belongs to one thread.
#ifndef QXBASE_QXINIFILE_H
#define QXBASE_QXINIFILE_H

#include <qxbase/qxdefs.h>

#include <cstdint>
#include <string>
#include <vector>

class QXBASE_API CQxIniFile {
public:
    // The comment characters a record can be commented out with.
    enum CommentChar { Pound = L'#', SemiColon = L';' };

    // One section header (Key empty) or key line.
    struct Record {
        std::wstring Comments;   // comment lines above this line, each ending in "\n"
        wchar_t CommentChar;     // ' ' for an active line, '#' or ';' when commented out
        std::wstring Section;    // for a header, the section's own name
        std::wstring Key;        // empty for a header
        std::wstring Value;      // empty for a header
    };

    CQxIniFile(std::string in_strFileName, bool in_bAutoSave);
    // Writes pending changes, whatever the auto-save flag says.
    virtual ~CQxIniFile();

    // Replaces the list with the file's records; false (list untouched) when
    // the file cannot be opened.
    bool Load();
    bool Save();
    // Writes the list when in_bDoSave is true; false only when the file
    // cannot be opened for writing.
    bool Save(bool in_bDoSave);
    // Records keep file and insertion order; nothing is sorted.
    bool Sort(bool in_bAscending);
    // The list as text, each line ending in "\n"; active lines carry no
    // leading space here.
    std::wstring Content() const;

    bool SetString(const std::wstring& in_strKey, const std::wstring& in_strSection,
                   const std::wstring& in_strValue);
    std::wstring GetString(const std::wstring& in_strKey, const std::wstring& in_strSection,
                           const std::wstring& in_strDefault = L"") const;
    bool SetLongLong(const std::wstring& in_strKey, const std::wstring& in_strSection,
                     unsigned long long in_ullValue);
    unsigned long long GetLongLong(const std::wstring& in_strKey, const std::wstring& in_strSection,
                                   unsigned long long in_ullDefault = 0) const;

    bool CommentRecord(CommentChar in_eChar, const std::wstring& in_strKey,
                       const std::wstring& in_strSection);
    bool UnCommentRecord(const std::wstring& in_strKey, const std::wstring& in_strSection);
    bool CommentSection(wchar_t in_wcChar, const std::wstring& in_strSection);
    bool UnCommentSection(const std::wstring& in_strSection);
    bool SetRecordComments(const std::wstring& in_strComments, const std::wstring& in_strKey,
                           const std::wstring& in_strSection);
    bool SetSectionComments(const std::wstring& in_strComments, const std::wstring& in_strSection);
    bool RenameSection(const std::wstring& in_strOldName, const std::wstring& in_strNewName);
    bool DeleteRecord(const std::wstring& in_strKey, const std::wstring& in_strSection);
    bool DeleteSection(const std::wstring& in_strSection);
    bool AddSection(const std::wstring& in_strSection);

    bool SectionExists(const std::wstring& in_strSection) const;
    bool RecordExists(const std::wstring& in_strKey, const std::wstring& in_strSection) const;
    std::vector<Record> GetRecord(const std::wstring& in_strKey,
                                  const std::wstring& in_strSection) const;
    std::vector<Record> GetSection(const std::wstring& in_strSection) const;
    std::vector<Record> GetSections() const;
    std::vector<std::wstring> GetSectionNames() const;

    // Removes the characters of in_strCharacters from the front (mode 1),
    // the back (mode 2 or above) or both ends (mode 0 or below); a text made
    // only of those characters becomes empty.
    static void Trim(std::wstring& io_strText, const std::wstring& in_strCharacters, int in_iMode);

private:
    std::vector<Record>::iterator FindRecord(const std::wstring& in_strKey,
                                             const std::wstring& in_strSection);
    std::vector<Record>::const_iterator FindRecord(const std::wstring& in_strKey,
                                                   const std::wstring& in_strSection) const;
    std::vector<Record>::iterator FindSection(const std::wstring& in_strSection);
    std::vector<Record>::iterator FindSectionHeader(const std::wstring& in_strSection);
    bool SetSectionCommentChar(wchar_t in_wcChar, const std::wstring& in_strSection);
    bool SetRecordCommentChar(wchar_t in_wcChar, const std::wstring& in_strKey,
                              const std::wstring& in_strSection);
    bool ReplaceComments(Record& io_record, std::wstring in_strComments);

    std::string m_strFileName;
    std::vector<Record> m_vecRecords;
    bool m_bAutoSave;
    bool m_bModified;

    CQxIniFile(const CQxIniFile&) = delete;
    CQxIniFile& operator=(const CQxIniFile&) = delete;
};

#endif  // QXBASE_QXINIFILE_H
