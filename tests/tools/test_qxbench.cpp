// qxbench on tiny pictures: it runs every case, its table's ratios are the
// quotients of its own columns, the chart is a picture, and mistakes are
// refused before any timing. (The figures themselves are not judged here.)
#include "tools/pngread.h"
#include "tools/toolrun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

using NQxTest::CTempDir;
using NQxTest::RunTool;
using NQxTest::SToolRun;

namespace {

SToolRun Bench(std::vector<std::string> in_vecArgs)
{
    in_vecArgs.insert(in_vecArgs.begin(), QXBASE_QXBENCH_PATH);
    return RunTool(in_vecArgs);
}

// The cells of the table rows, without the header and separator.
std::vector<std::vector<std::string>> TableRows(const std::string& in_strOut)
{
    std::vector<std::vector<std::string>> vecRows;
    std::istringstream iss(in_strOut);
    std::string strLine;
    while (std::getline(iss, strLine)) {
        if (strLine.compare(0, 2, "| ") != 0 || strLine.compare(0, 13, "| conversion ") == 0) continue;
        std::vector<std::string> vecCells;
        size_t uStart = 2;
        for (size_t uBar; (uBar = strLine.find(" |", uStart)) != std::string::npos; uStart = uBar + 3)
            vecCells.push_back(strLine.substr(uStart, uBar - uStart));
        vecRows.push_back(vecCells);
    }
    return vecRows;
}

TEST(Qxbench, TinyRunGivesAConsistentTableAndAChart)
{
    CTempDir oDir;
    const std::string strPlot = oDir.File("ratios.png");
    const SToolRun s = Bench({"--sizes", "64x16,32x8", "--seconds", "0.02", "--rounds", "2", "--plot", strPlot});
    ASSERT_EQ(s.iStatus, 0) << s.strErr;
    EXPECT_NE(s.strOut.find("| conversion | size | memcpy | qxbase engine | libyuv | libswscale | FFmpeg v210 |"),
              std::string::npos)
        << s.strOut;
    const std::vector<std::vector<std::string>> vecRows = TableRows(s.strOut);
    ASSERT_EQ(vecRows.size() % 2, 0u);
    ASSERT_GE(vecRows.size(), 12u) << s.strOut;
    for (const std::vector<std::string>& r : vecRows) {
        ASSERT_EQ(r.size(), 9u) << s.strOut;
        EXPECT_TRUE(r[1] == "64x16" || r[1] == "32x8") << r[1];
        const double dMemcpy = std::atof(r[2].c_str()), dEngine = std::atof(r[3].c_str());
        EXPECT_GT(dMemcpy, 0.0) << r[0];
        if (r[3] == "—") {
            EXPECT_EQ(r[7], "—") << r[0];
            continue;
        }
        // The ratio column is the quotient of the columns, to its rounding.
        EXPECT_NEAR(std::atof(r[7].c_str()), dEngine / dMemcpy, 0.006 + 0.0005 * dEngine / dMemcpy) << r[0];
        double dBest = 0.0;
        for (int c = 4; c <= 6; ++c)
            if (r[c] != "—") dBest = std::max(dBest, std::atof(r[c].c_str()));
        if (dBest > 0.0)
            EXPECT_NEAR(std::atof(r[8].c_str()), dEngine / dBest, 0.006 + 0.0005 * dEngine / dBest) << r[0];
        else
            EXPECT_EQ(r[8], "—") << r[0];
    }
    EXPECT_EQ(vecRows[0][0], "copy yuyv8");
    EXPECT_NE(vecRows[0][3], "—") << "the engine copies yuyv8";

    NQxTool::SQxToolImage sPlot;
    ASSERT_TRUE(NQxTest::ReadPng(strPlot, &sPlot));
    EXPECT_GT(sPlot.uiWidth, 600u);
    EXPECT_GT(sPlot.uiHeight, 40u * vecRows.size());
}

TEST(Qxbench, MistakesAreRefusedBeforeAnyTiming)
{
    CTempDir oDir;
    struct SCase {
        std::vector<std::string> vecArgs;
        int iStatus;
        const char* pszSaid;
    } const asCases[] = {
        {{"--sizes", "1000x16"}, 2, "not a multiple of 16"},
        {{"--sizes", "big"}, 2, "bad picture size"},
        {{"--case", "h264"}, 2, "no conversion matches"},
        {{"--seconds", "0"}, 2, "bad time"},
        {{"--rounds", "0"}, 2, "bad round count"},
        {{"--bogus"}, 2, "unknown option --bogus"},
        {{"--sizes", "32x8", "--plot", oDir.File("no/dir/plot.png")}, 1, "plot.png: No such file or directory"},
    };
    for (const SCase& r : asCases) {
        const SToolRun s = Bench(r.vecArgs);
        EXPECT_EQ(s.iStatus, r.iStatus) << r.vecArgs[0] << "\n" << s.strErr;
        EXPECT_NE(s.strErr.find(r.pszSaid), std::string::npos) << r.vecArgs[0] << "\n" << s.strErr;
        EXPECT_EQ(s.strErr.find("qxbench: copy yuyv8 at"), std::string::npos) << "no case ran";
    }
}

}  // namespace
