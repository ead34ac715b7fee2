#include "host/ScreenText.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

TEST(ScreenText, ShowsBreakTagsInEverySpellingAsLineBreaks) {
  EXPECT_EQ(screenText("one<br>two<BR>three<br/>four<br />five"), "one\ntwo\nthree\nfour\nfive");
}

TEST(ScreenText, KeepsNewlinesBesideBreakTags) {
  EXPECT_EQ(screenText("a\nb<br>\nc"), "a\nb\n\nc");
}

TEST(ScreenText, LeavesOtherTagsOut) {
  EXPECT_EQ(screenText("<i>The developers</i>, <b class=\"x\">bold</b>"), "The developers, bold");
}

TEST(ScreenText, KeepsComparisonsAndUnfinishedTags) {
  EXPECT_EQ(screenText("a < b > c, 1<2, <, </, <i"), "a < b > c, 1<2, <, </, <i");
  EXPECT_EQ(screenText("x <y<br>z"), "x <y\nz");
}

TEST(ScreenText, ReplacesControlCharactersThatWouldSteerTheTerminal) {
  EXPECT_EQ(screenText("a\x1b[2Jb\rc\x7f\td"), "a?[2Jb?c?\td");
}

TEST(ScreenText, QuotesOnlyTheBeginningOfALongText) {
  EXPECT_EQ(excerpt("short"), "\"short\"");
  EXPECT_EQ(excerpt("first<br>second"), "\"first...\"");
  EXPECT_EQ(excerpt(std::string(100, 'x')), '"' + std::string(60, 'x') + "...\"");
}

TEST(ScreenText, WritesNumbersAsShortAsTheyReadBack) {
  EXPECT_EQ(numberText(-150), "-150");
  EXPECT_EQ(numberText(0.1f), "0.1");
  EXPECT_EQ(numberText(250.0f), "250");
}

} // namespace
} // namespace emeg
