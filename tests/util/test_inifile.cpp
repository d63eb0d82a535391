// The INI file: the reader's rules, the written form, byte-exact round trips,
// the deliberate behaviours, and text that is not ASCII or not even UTF-8.
#include <qxbase/qxinifile.h>

#include "support/qxtest_support.h"
#include "util/qxtext.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <clocale>
#include <random>

namespace {

using NQxTest::CStdoutCapture;
using NQxTest::CTempDir;
using NQxTest::ReadFile;
using NQxTest::WriteFile;

// Loads in_strBytes from a file and writes it back; returns the written bytes.
std::string RoundTrip(const CTempDir& in_dir, const std::string& in_strBytes)
{
    const std::string strPath = in_dir.File("roundtrip.ini");
    WriteFile(strPath, in_strBytes);
    {
        CQxIniFile ini(strPath, false);
        EXPECT_TRUE(ini.Save());
    }
    return ReadFile(strPath);
}

// Every member of the records, one line each: comments, comment character,
// section, key and value.
std::wstring Dump(const std::vector<CQxIniFile::Record>& in_vecRecords)
{
    std::wstring str;
    for (const CQxIniFile::Record& r : in_vecRecords)
        str += L"{" + r.Comments + L"}" + r.CommentChar + L"[" + r.Section + L"]" + r.Key + L"=" + r.Value + L"\n";
    return str;
}

TEST(IniFileReader, ParsesHeadersRecordsAndCommentsByTheRules)
{
    CTempDir dir;
    const std::string strPath = dir.File("a.ini");
    // '[' anywhere makes a header and drops the first character whatever it
    // is; '=' in the header's name then turns the line into a record. "# [T"
    // is a commented-out header whose name lacks the closing bracket. A line
    // that is neither header nor record is kept as a record with empty
    // section, key and value when no comment is pending; it then reads (and
    // is written) as a header of the empty section. Key and value keep the
    // spaces around '='. The trailing comment is lost.
    WriteFile(strPath,
              "#comment\n\n  [S]  trailing\r\nk=v\na = b\n;c=d\n# [T\nloose line\n; plain comment\nx=1\n"
              "x[y]z\n[a=b]\nk=[v]\n; dangling\n");
    CQxIniFile ini(strPath, false);
    EXPECT_EQ(Dump(ini.GetSection(L"S")),
              L"{#comment\n} [S]=\n{} [S]k=v\n{} [S]a = b\n{};[S]c=d\n");
    EXPECT_EQ(Dump(ini.GetSection(L"T")), L"{}#[T]=\n{; plain comment\n} [T]x=1\n");
    EXPECT_EQ(Dump(ini.GetSection(L"")), L"{} []=\n");
    EXPECT_EQ(Dump(ini.GetSection(L"[y")), L"{} [[y]=\n");
    EXPECT_EQ(Dump(ini.GetSection(L"a=b")), L"{} [a=b]a=b\n");
    // "k=[v]" holds a '[': it becomes the header "=[v" and then, holding an
    // '=', the record with an empty key and the value "[v".
    EXPECT_EQ(Dump(ini.GetSection(L"=[v")), L"{} [=[v]=[v\n");
    EXPECT_EQ(ini.GetString(L"c", L"S", L"none"), L"d");  // commented records are found too
    EXPECT_EQ(ini.Content(), L"#comment\n[S]\nk=v\na = b\n;c=d\n#[T]\n[]\n; plain comment\nx=1\n[[y]\na=b\n[=[v]\n");
}

TEST(IniFileRoundTrip, WrittenFilesComeBackByteForByte)
{
    CTempDir dir;
    // The written form: every active line starts with one space; blank lines
    // and trailing comments vanish. Bytes that are not UTF-8 (a lone
    // continuation byte, a truncated sequence, a lead byte where a
    // continuation belongs, an overlong form, a NUL) survive, whatever the
    // locale.
    ASSERT_NE(setlocale(LC_ALL, "C"), nullptr);
    const std::string strBroken = std::string("\x80z\xE3\x83 \xC3\xC3 \xC0\xAF") + '\0' + "end";
    const std::pair<std::string, std::string> cases[] = {
        {" [CLSID]\n {A}=/x.so\n", " [CLSID]\n {A}=/x.so\n"},
        {"#comment\n[S]\nk=v\n", "#comment\n [S]\n k=v\n"},
        {"[S]\n;k=v\n", " [S]\n;k=v\n"},
        {"\n\n[S]\n\n\nk=v\n# gone\n", " [S]\n k=v\n"},
        {"[S]\r\nk=v\r\n", " [S]\n k=v\n"},
        {"# head\n; two\n [S]\n k=v\n#c=d\n [T]\n;[U]\n u=\xC3\xA9t\xC3\xA9\n b=" + strBroken + "\n", ""},
    };
    for (const auto& [strIn, strOut] : cases) {
        const std::string strExpected = strOut.empty() ? strIn : strOut;
        EXPECT_EQ(RoundTrip(dir, strIn), strExpected);
        EXPECT_EQ(RoundTrip(dir, strExpected), strExpected);  // a second pass changes nothing
    }
}

TEST(IniFileRoundTrip, WideTextIsUtf8OnDiskWhateverTheLocale)
{
    CTempDir dir;
    ASSERT_NE(setlocale(LC_ALL, "C"), nullptr);
    const std::string strPath = dir.File("u.ini");
    // "módulo-テスト" and a 4-byte character.
    WriteFile(strPath, " [CLSID]\n {A}=/m\xC3\xB3" "dulo-\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88/\xF0\x9F\x8E\xA5.so\n");
    {
        CQxIniFile ini(strPath, true);
        EXPECT_EQ(ini.GetString(L"{A}", L"CLSID"), L"/m\u00F3dulo-\u30C6\u30B9\u30C8/\U0001F3A5.so");
        ini.SetString(L"\u00E9t\u00E9", L"S\u00DF", L"\u4E2D\u6587");
    }
    CQxIniFile again(strPath, false);
    EXPECT_EQ(again.GetString(L"\u00E9t\u00E9", L"S\u00DF"), L"\u4E2D\u6587");
    EXPECT_NE(ReadFile(strPath).find(" \xC3\xA9t\xC3\xA9=\xE4\xB8\xAD\xE6\x96\x87\n"), std::string::npos);
}

TEST(IniFileRoundTrip, RandomFilesAndGarbageReachAFixedPointAfterOneSave)
{
    // Random sections, records, comments and blank lines, with names and
    // values drawn from bytes that include invalid UTF-8 and control
    // characters but none of the structural ones: what was written once is
    // written again unchanged and reads back the same values. Plain random
    // bytes load, save and load again.
    CTempDir dir;
    const std::string strPath = dir.File("r.ini");
    const unsigned uiSeed = 20240601;
    std::mt19937 rng(uiSeed);
    auto randomText = [&](size_t uiMax) {
        std::string str;
        const size_t uiLength = 1 + rng() % uiMax;
        while (str.size() < uiLength) {
            const char c = static_cast<char>(rng());
            if (c != '[' && c != ']' && c != '=' && c != '\n' && c != '\r' && c != ' ' && c != '\t')
                str += c;
        }
        return str;
    };
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(::testing::Message() << "seed " << uiSeed << " round " << round);
        std::string strGarbage(4096, '\0');
        for (char& c : strGarbage) c = static_cast<char>(rng());
        WriteFile(strPath, strGarbage);
        EXPECT_TRUE(CQxIniFile(strPath, false).Save());
        EXPECT_TRUE(CQxIniFile(strPath, false).Save());  // what came of it loads again

        std::string strFile = "[first]\n";
        std::string strSection = "first";
        std::vector<std::pair<std::string, std::string>> vecExpected;  // "section\1key" -> value
        for (int line = 0; line < 40; ++line) {
            switch (rng() % 5) {
            case 0:
                strSection = randomText(12);
                if (strSection[0] == '#' || strSection[0] == ';') strSection[0] = 'S';
                strFile += "  [" + strSection + "]\r\n";
                break;
            case 1:
                strFile += "#" + randomText(30) + "\n";
                break;
            case 2:
                strFile += "\n \t\n";
                break;
            default: {
                std::string strKey = randomText(10);
                if (strKey[0] == '#' || strKey[0] == ';') strKey[0] = 'k';
                const std::string strValue = randomText(40);
                strFile += strKey + "=" + strValue + "\n";
                vecExpected.emplace_back(strSection + '\1' + strKey, strValue);
            }
            }
        }
        const std::string strFirst = RoundTrip(dir, strFile);
        EXPECT_EQ(RoundTrip(dir, strFirst), strFirst);
        WriteFile(strPath, strFirst);
        CQxIniFile ini(strPath, false);
        for (const auto& [strWhere, strValue] : vecExpected) {
            const size_t uiCut = strWhere.find('\1');
            const std::wstring strKey = NQxText::DecodeUtf8(strWhere.substr(uiCut + 1));
            const std::wstring strSectionName = NQxText::DecodeUtf8(strWhere.substr(0, uiCut));
            // The first record of a key wins; only check keys seen once.
            if (ini.GetRecord(strKey, strSectionName).size() != 1) continue;
            EXPECT_EQ(ini.GetString(strKey, strSectionName, L"<none>"), NQxText::DecodeUtf8(strValue));
        }
    }

    const std::string strLongValue(1 << 20, 'v');
    WriteFile(strPath, "[S]\nk=" + strLongValue + "\n" + std::string(1 << 20, 'x') + "\n");
    CQxIniFile ini(strPath, false);
    EXPECT_EQ(ini.GetString(L"k", L"S").size(), strLongValue.size());
}

TEST(IniFileWriter, AutoSaveWritesAtOnceAndTheDestructorWritesTheRest)
{
    CTempDir dir;
    const std::string strPath = dir.File("w.ini");
    {
        CQxIniFile ini(strPath, true);
        EXPECT_FALSE(NQxTest::FileExists(strPath));
        EXPECT_TRUE(ini.SetString(L"k", L"S", L"v"));
        EXPECT_EQ(ReadFile(strPath), " [S]\n k=v\n");
    }
    {
        CQxIniFile ini(strPath, false);
        EXPECT_TRUE(ini.SetString(L"k", L"S", L"w"));
        // Neither the change nor Save(false), which reports success, writes.
        EXPECT_TRUE(ini.Save(false));
        EXPECT_EQ(ReadFile(strPath), " [S]\n k=v\n");
    }
    EXPECT_EQ(ReadFile(strPath), " [S]\n k=w\n");

    // Only a change marks the object: loading and reading writes nothing.
    WriteFile(strPath, "[S]\n\nk=v\n");
    { CQxIniFile ini(strPath, false); EXPECT_EQ(ini.GetString(L"k", L"S"), L"v"); }
    EXPECT_EQ(ReadFile(strPath), "[S]\n\nk=v\n");

    // A folder in place of the file cannot be opened for writing (even by
    // root): the save reports it and the records stay in memory.
    const std::string strFolder = dir.File("folder.ini");
    ASSERT_EQ(mkdir(strFolder.c_str(), 0755), 0);
    CQxIniFile folder(strFolder, false);
    folder.SetString(L"k", L"S", L"v");
    CStdoutCapture capture;
    EXPECT_FALSE(folder.Save());
    EXPECT_EQ(capture.Text(), "Unable to open " + strFolder + " for writing\n");
    EXPECT_EQ(folder.GetString(L"k", L"S"), L"v");
    // A file that cannot be opened for reading leaves an empty object, and a
    // failed Load keeps the records there were.
    EXPECT_FALSE(folder.Load());
    EXPECT_EQ(folder.GetString(L"k", L"S"), L"v");
    CQxIniFile missing(dir.File("missing/none.ini"), false);
    EXPECT_TRUE(missing.GetSectionNames().empty());
}

TEST(IniFileEditing, NewKeysGoBelowTheHeaderAndNewSectionsAtTheEnd)
{
    CTempDir dir;
    const std::string strPath = dir.File("e.ini");
    WriteFile(strPath, "[S]\n[T]\nt=1\n");
    CQxIniFile ini(strPath, false);
    ini.SetString(L"a", L"S", L"1");
    ini.SetString(L"b", L"S", L"2");
    ini.SetString(L"a", L"S", L"3");  // replaces in place
    ini.SetString(L"u", L"U", L"4");
    EXPECT_EQ(ini.Content(), L"[S]\nb=2\na=3\n[T]\nt=1\n[U]\nu=4\n");

    // A section without a header still counts as existing: the key goes
    // right after the section's first record.
    WriteFile(strPath, "k=v\n");
    CQxIniFile headless(strPath, false);
    headless.SetString(L"n", L"", L"w");
    EXPECT_EQ(headless.Content(), L"k=v\nn=w\n");
    EXPECT_FALSE(headless.SetSectionComments(L"# x", L""));  // it has no header to comment

    EXPECT_FALSE(ini.AddSection(L"T"));
    EXPECT_TRUE(ini.AddSection(L"V"));
    EXPECT_FALSE(ini.RenameSection(L"S", L"T"));
    EXPECT_TRUE(ini.RenameSection(L"S", L"R"));
    EXPECT_TRUE(ini.DeleteRecord(L"t", L"T"));
    EXPECT_TRUE(ini.DeleteSection(L"U"));
    EXPECT_TRUE(ini.DeleteRecord(L"absent", L"T"));
    EXPECT_EQ(ini.Content(), L"[R]\nb=2\na=3\n[T]\n[V]\n");
    EXPECT_EQ(ini.GetSectionNames(), (std::vector<std::wstring>{L"R", L"T", L"V"}));
    EXPECT_EQ(Dump(ini.GetSections()), L"{} [R]=\n{} [T]=\n{} [V]=\n");
    EXPECT_TRUE(ini.RecordExists(L"a", L"R"));
    EXPECT_FALSE(ini.RecordExists(L"a", L"r"));  // case-sensitive
    EXPECT_EQ(Dump(ini.GetRecord(L"b", L"R")), L"{} [R]b=2\n");
    EXPECT_TRUE(ini.GetRecord(L"b", L"T").empty());
}

TEST(IniFileEditing, CommentingAndComments)
{
    CTempDir dir;
    const std::string strPath = dir.File("c.ini");
    WriteFile(strPath, "[S]\nk=v\nl=w\n");
    CQxIniFile ini(strPath, false);

    EXPECT_FALSE(ini.CommentRecord(CQxIniFile::Pound, L"x", L"S"));
    EXPECT_TRUE(ini.CommentRecord(CQxIniFile::SemiColon, L"k", L"S"));
    EXPECT_EQ(ini.Content(), L"[S]\n;k=v\nl=w\n");
    EXPECT_TRUE(ini.UnCommentRecord(L"k", L"S"));
    EXPECT_TRUE(ini.CommentSection(L'#', L"S"));
    EXPECT_EQ(ini.Content(), L"#[S]\n#k=v\n#l=w\n");
    EXPECT_TRUE(ini.UnCommentSection(L"S"));
    EXPECT_FALSE(ini.CommentSection(L'#', L"nope"));

    // Two or more characters always gain a newline, even when they already
    // end in one; a single character never does.
    EXPECT_TRUE(ini.SetRecordComments(L"# about k\n", L"k", L"S"));
    EXPECT_TRUE(ini.SetRecordComments(L"#", L"l", L"S"));
    EXPECT_TRUE(ini.SetSectionComments(L"# section", L"S"));
    EXPECT_FALSE(ini.SetRecordComments(L"# x", L"missing", L"S"));
    EXPECT_FALSE(ini.SetSectionComments(L"# x", L"missing"));
    EXPECT_EQ(ini.Content(), L"# section\n[S]\n# about k\n\nk=v\n#l=w\n");
    ASSERT_TRUE(ini.Save());
    EXPECT_EQ(ReadFile(strPath), "# section\n [S]\n# about k\n\n k=v\n# l=w\n");
}

TEST(IniFileValues, LongLongKeepsItsDeliberateReadingAndTrimItsModes)
{
    CTempDir dir;
    CQxIniFile ini(dir.File("n.ini"), false);
    EXPECT_EQ(ini.GetLongLong(L"n", L"S", 77), 77u);
    // The first digit, once per character; non-digits are not checked, and
    // the arithmetic wraps instead of failing.
    const std::pair<const wchar_t*, unsigned long long> cases[] = {
        {L"123", 111u}, {L"90", 99u}, {L"", 5u}, {L"/x", static_cast<unsigned long long>(-11)}};
    for (const auto& [pwszText, ullExpected] : cases) {
        ini.SetString(L"n", L"S", pwszText);
        EXPECT_EQ(ini.GetLongLong(L"n", L"S", 5), ullExpected) << pwszText;
    }
    EXPECT_TRUE(ini.SetLongLong(L"m", L"S", 18446744073709551615ull));
    EXPECT_EQ(ini.GetString(L"m", L"S"), L"18446744073709551615");
    EXPECT_TRUE(ini.SetLongLong(L"m", L"S", 4444));
    EXPECT_EQ(ini.GetLongLong(L"m", L"S"), 4444u);

    const struct {
        const wchar_t* pszText;
        int iMode;
        const wchar_t* pszExpected;
    } trims[] = {
        {L" \t a b \r\n", 0, L"a b"}, {L"  a  ", 1, L"a  "}, {L"  a  ", 2, L"  a"},
        {L"  a  ", 7, L"  a"},        {L"  a  ", -3, L"a"},  {L" \t\r\n", 1, L""},
        {L" \t\r\n", 2, L""},         {L"a", 0, L"a"},       {L"", 0, L""},
    };
    for (const auto& c : trims) {
        std::wstring s = c.pszText;
        CQxIniFile::Trim(s, L" \t\n\r", c.iMode);
        EXPECT_EQ(s, c.pszExpected) << "mode " << c.iMode;
    }
}

}  // namespace
