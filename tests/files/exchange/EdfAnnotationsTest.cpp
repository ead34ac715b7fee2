#include "files/exchange/EdfAnnotations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {
namespace {

using testing::IsEmpty;

std::vector<EdfAnnotation> parse(const std::string& bytes, int64_t expectedOdd = 0) {
  int64_t nrOfOdd = 0;
  std::vector<EdfAnnotation> annotations = parseEdfAnnotations(bytes, nrOfOdd);
  EXPECT_EQ(nrOfOdd, expectedOdd);
  return annotations;
}

/// A text with zeros in it.
template <size_t length>
std::string bytes(const char (&text)[length]) {
  return std::string(text, length - 1);
}

TEST(EdfAnnotations, HaveAnOnsetAndMaybeADuration) {
  const auto found = parse(bytes("+0\x14\x14\0+1.25\x15"
                                 "0.5\x14Lights off\x14\0-0.5\x14"
                                 "early\x14\0\0\0"));
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].text, "") << "tells when the data record begins";
  EXPECT_EQ(found[1].onset, 1.25);
  EXPECT_EQ(found[1].duration, 0.5);
  EXPECT_EQ(found[1].text, "Lights off");
  EXPECT_EQ(found[2].onset, -0.5);
  EXPECT_EQ(found[2].duration, 0);
}

TEST(EdfAnnotations, OfOneTimeStandTogether) {
  const auto found = parse(bytes("+3\x14one\x14two\x14\0"));
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].text, "one");
  EXPECT_EQ(found[1].text, "two");
  EXPECT_EQ(found[1].onset, 3);
}

TEST(EdfAnnotations, ThatCannotBeUnderstoodAreCounted) {
  EXPECT_THAT(parse(bytes("3\x14no sign\x14\0"), 1), IsEmpty());
  EXPECT_THAT(parse(bytes("+x\x14no number\x14\0"), 1), IsEmpty());
  EXPECT_THAT(parse(bytes("+nan\x14no time\x14\0"), 1), IsEmpty());
  EXPECT_THAT(parse(bytes("+1"), 1), IsEmpty());
  EXPECT_THAT(parse(std::string(1000, '\0')), IsEmpty());
  EXPECT_THAT(parse(""), IsEmpty());
  EXPECT_EQ(parse(bytes("+1\x15long\x14odd duration\x14\0")).at(0).duration, 0);
  EXPECT_EQ(parse(bytes("+1\x14without an end")).at(0).text, "without an end");
  EXPECT_EQ(parse(bytes("+1\x14\xE4\x14\0")).at(0).text, "\xC3\xA4") << "Latin-1";
}

} // namespace
} // namespace emeg
