// The check every conversion test makes of a destination: its guards intact
// and every byte outside the region a call may write as it was.
#ifndef QXBASE_TESTS_SURFACES_UNTOUCHED_H
#define QXBASE_TESTS_SURFACES_UNTOUCHED_H

#include <gtest/gtest.h>

#include "tests/surfaces/surfacetesthelpers.h"

#include <string>

namespace NQxTest {

// Bytes a destination line keeps outside [begin, end) of what a call wrote.
inline void ExpectUntouchedOutside(const CPicture& in_rBefore, const CPicture& in_rAfter, unsigned in_uiFirstLine,
                                   unsigned in_uiLines, long in_lWrittenBegin, long in_lWrittenEnd, const std::string& in_s)
{
    ASSERT_TRUE(in_rAfter.GuardsIntact()) << in_s;
    for (unsigned uiLine = 0; uiLine < in_rAfter.Lines(); ++uiLine) {
        const bool bWritten = uiLine >= in_uiFirstLine && uiLine < in_uiFirstLine + in_uiLines;
        for (long l = 0; l < in_rAfter.Pitch(); ++l) {
            if (bWritten && l >= in_lWrittenBegin && l < in_lWrittenEnd)
                continue;
            ASSERT_EQ(in_rBefore.Line(uiLine)[l], in_rAfter.Line(uiLine)[l])
                << in_s << ": byte " << l << " of line " << uiLine << " outside the written region";
        }
    }
}

}  // namespace NQxTest

#endif  // QXBASE_TESTS_SURFACES_UNTOUCHED_H
