// The exported identifiers: every name the public header declares is
// exported by libqxbase under that exact name as read-only data; the fixed
// values are the ones registry files and other modules compare; the rest are
// distinct name-based values.
#include <qxbase/qxguids.h>

#include "support/qxtest_support.h"

#include <dlfcn.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

std::vector<std::string> DeclaredNames()
{
    const std::string strHeader = NQxTest::ReadFile(QXBASE_SOURCE_DIR "/include/qxbase/qxguids.h");
    std::vector<std::string> vec;
    const std::regex declaration(R"(QXBASE_API extern const GUID (\w+);)");
    for (std::sregex_iterator it(strHeader.begin(), strHeader.end(), declaration), end; it != end; ++it)
        vec.push_back((*it)[1]);
    return vec;
}

std::string Text(const GUID& in_guid)
{
    char sz[40];
    snprintf(sz, sizeof(sz), "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
             static_cast<unsigned>(in_guid.Data1), in_guid.Data2, in_guid.Data3, in_guid.Data4[0],
             in_guid.Data4[1], in_guid.Data4[2], in_guid.Data4[3], in_guid.Data4[4], in_guid.Data4[5],
             in_guid.Data4[6], in_guid.Data4[7]);
    return sz;
}

// Whether the address lies in a mapping of this process without write access.
bool IsReadOnly(const void* in_p)
{
    FILE* pMaps = fopen("/proc/self/maps", "r");
    if (!pMaps) return false;
    const auto ui = reinterpret_cast<uintptr_t>(in_p);
    unsigned long ulFrom = 0, ulTo = 0;
    char szPerms[8];
    bool bReadOnly = false;
    char szLine[1024];
    while (fgets(szLine, sizeof(szLine), pMaps)) {
        if (sscanf(szLine, "%lx-%lx %7s", &ulFrom, &ulTo, szPerms) == 3 && ui >= ulFrom && ui < ulTo) {
            bReadOnly = szPerms[0] == 'r' && szPerms[1] == '-';
            break;
        }
    }
    fclose(pMaps);
    return bReadOnly;
}

// Values fixed by the first users of these identifiers: the telling rows,
// the two values that several names share, and two name-based values that
// must never be derived anew. Every other value is name-based.
const std::map<std::string, std::string> kFixed = {
    {"IID_IUnknown", "00000000-0000-0000-C000-000000000046"},
    {"IID_IClassFactory", "00000001-0000-0000-C000-000000000046"},
    {"GUID_NULL", "00000000-0000-0000-0000-000000000000"},
    {"CLSID_QxcBufferEngine", "B3FA2A4E-2087-47E1-8273-09F4A04F7987"},
    {"CLSID_QxcSyncBufferEngine", "C7B7D0C6-A6F2-44F7-80A9-1EBF638514E2"},
    {"IID_IQxcBufferEngine", "22302BD0-211C-4533-8719-4A0C07E4A120"},
    {"IID_IQxSyncBufferEngine", "0AA64360-881A-4AA5-BB68-3B383F45324E"},
    {"IID_IQxcBufferEngineFactory", "E0F93EA2-7AC6-4393-A409-FAFAF3524E37"},
    {"IID_IQxcSyncBufferEngineFactory", "831B64A3-8C37-418D-A742-E2FB7D16FA7E"},
    {"CLSID_QxAACMOVCompressedWriterStream", "DD3E6E23-D8E1-4410-9EE6-24ED16F16C34"},
    {"CLSID_Qx264AACMP4CompressedWriterStream", "DD3E6E23-D8E1-4410-9EE6-24ED16F16C34"},
    {"CLSID_QxH264AACMOVCompressedWriterStream", "DD3E6E23-D8E1-4410-9EE6-24ED16F16C34"},
    {"IID_IQxAudioOutputConnector", "117C9005-7F64-4707-BBCF-3F1AFAD1DB69"},
    {"IID_IQxAudioInputConnector", "117C9005-7F64-4707-BBCF-3F1AFAD1DB69"},
    {"IID_IQxSurface", "3B6B59C5-6F16-56B9-9C87-A9FD7F6AAA33"},
    {"CLSID_QxThreadPoolManager", "6BD48605-A7A3-5E99-B43D-87807EE0AD8F"},
};

TEST(Identifiers, EveryDeclaredNameIsExportedReadOnlyWithItsOwnValue)
{
    const std::vector<std::string> vecNames = DeclaredNames();
    std::map<std::string, int> mapFamilies;
    for (const std::string& strName : vecNames) mapFamilies[strName.substr(0, strName.find('_'))]++;
    EXPECT_EQ(vecNames.size(), 811u);
    EXPECT_EQ(mapFamilies, (std::map<std::string, int>{{"CLSID", 238}, {"GUID", 47}, {"IID", 525}, {"SMTYPE", 1}}));
    EXPECT_EQ(std::set<std::string>(vecNames.begin(), vecNames.end()).size(), vecNames.size());

    Dl_info libraryInfo;
    ASSERT_NE(dladdr(&IID_IUnknown, &libraryInfo), 0);
    std::map<std::string, std::vector<std::string>> mapByValue;
    size_t uiFixed = 0;
    for (const std::string& strName : vecNames) {
        const GUID* p = static_cast<const GUID*>(dlsym(RTLD_DEFAULT, strName.c_str()));
        ASSERT_NE(p, nullptr) << strName << " is not exported";
        Dl_info info;
        ASSERT_NE(dladdr(p, &info), 0);
        EXPECT_EQ(info.dli_fbase, libraryInfo.dli_fbase) << strName << " is not libqxbase's";
        EXPECT_TRUE(IsReadOnly(p)) << strName << " is writable";
        mapByValue[Text(*p)].push_back(strName);
        const auto it = kFixed.find(strName);
        if (it != kFixed.end()) {
            ++uiFixed;
            EXPECT_EQ(Text(*p), it->second);
        } else {
            // Version 5 (name-based, SHA-1) with the standard variant.
            EXPECT_EQ(p->Data3 >> 12, 5) << strName;
            EXPECT_EQ(p->Data4[0] & 0xC0, 0x80) << strName;
        }
    }
    EXPECT_EQ(uiFixed, kFixed.size());
    // Only the fixed shared values are shared: five names, two values.
    for (const auto& [strValue, vecSharing] : mapByValue)
        for (const std::string& strName : vecSharing)
            EXPECT_TRUE(vecSharing.size() == 1 || kFixed.count(strName)) << strName << " shares " << strValue;
    EXPECT_EQ(mapByValue.size(), 811u - 3u);

    // The integer fields are little-endian in memory: the bytes are those of
    // the standard binary form that other modules compare.
    const unsigned char abFactory[16] = {1, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    EXPECT_EQ(memcmp(&IID_IClassFactory, abFactory, 16), 0);
}

}  // namespace
