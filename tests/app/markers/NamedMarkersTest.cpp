#include "app/markers/NamedMarkers.h"

#include "app/correct/CorrectParameters.h"
#include "tests/app/markers/MarkerHeaders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

RecordingHeader mixedMarkers() {
  RecordingHeader header = headerOf(60, 1000);
  addMarker(header, "New Segment", "", 0);
  addMarker(header, "Response", "R128", 2000);
  addMarker(header, "Stimulus", "S  1", 2500);
  addMarker(header, "Stimulus", "S 1", 2600);
  addMarker(header, "Scanner", "T  1", 3000.5);
  addMarker(header, "Response", "R128", 4000);
  addMarker(header, "Response", "R  1", 5000);
  addMarker(header, "", "Volume", 6000);
  return header;
}

std::string complaintAbout(const RecordingHeader& header, const std::string& name) {
  try {
    onsetsOfMarkers(header, name);
  } catch (const UnusableInput& error) {
    return error.what();
  }
  return "";
}

} // namespace

TEST(NamedMarkers, AMarkerGoesByItsDescriptionItsTypeAndBoth) {
  const RecordingHeader header = mixedMarkers();
  EXPECT_THAT(onsetsOfMarkers(header, "R128"), ElementsAre(2000, 4000));
  EXPECT_THAT(onsetsOfMarkers(header, "Response"), ElementsAre(2000, 4000, 5000));
  EXPECT_THAT(onsetsOfMarkers(header, "Response/R128"), ElementsAre(2000, 4000));
  EXPECT_THAT(onsetsOfMarkers(header, "Scanner/T  1"), ElementsAre(3000.5));
  EXPECT_THAT(onsetsOfMarkers(header, "Volume"), ElementsAre(6000));
  EXPECT_THAT(onsetsOfMarkers(header, "New Segment"), ElementsAre(0));
}

TEST(NamedMarkers, BlanksCountWhereTheExactNameIsThere) {
  const RecordingHeader header = mixedMarkers();
  EXPECT_THAT(onsetsOfMarkers(header, "S  1"), ElementsAre(2500));
  EXPECT_THAT(onsetsOfMarkers(header, "S 1"), ElementsAre(2600));
}

TEST(NamedMarkers, RunsOfBlanksAreOneWhereItIsNot) {
  const RecordingHeader header = mixedMarkers();
  EXPECT_THAT(onsetsOfMarkers(header, "T 1"), ElementsAre(3000.5));
  EXPECT_THAT(onsetsOfMarkers(header, "Scanner/T    1 "), ElementsAre(3000.5));
  EXPECT_THAT(onsetsOfMarkers(header, "S   1"), ElementsAre(2500, 2600));
  EXPECT_THAT(complaintAbout(header, "T1"), HasSubstr("\"T1\" names no marker"));
}

TEST(NamedMarkers, OnsetsComeInAscendingOrder) {
  RecordingHeader header = headerOf(10, 1000);
  for (const double onset : {700.0, 100.0, 400.0}) addMarker(header, "Response", "R128", onset);
  EXPECT_THAT(onsetsOfMarkers(header, "R128"), ElementsAre(100, 400, 700));
}

TEST(NamedMarkers, AnUnknownNameIsRefusedWithTheNamesThatAreThere) {
  const std::string complaint = complaintAbout(mixedMarkers(), "R129");
  EXPECT_THAT(complaint, HasSubstr("\"R129\" names no marker of run1.vhdr"));
  EXPECT_THAT(complaint, HasSubstr("\"R128\" (2), \"New Segment\" (1)"));
  EXPECT_THAT(complaint, HasSubstr("\"S  1\" (1)"));
  EXPECT_THAT(complaint, HasSubstr("\"T  1\" (1)"));
  EXPECT_THAT(complaintAbout(headerOf(60, 1000), "R128"), HasSubstr("run1.vhdr has none at all"));
}

TEST(NamedMarkers, NoNameNamesNothing) {
  RecordingHeader header = mixedMarkers();
  addMarker(header, "", "", 7000);
  EXPECT_THAT(complaintAbout(header, ""), HasSubstr("names no marker"));
  EXPECT_THAT(complaintAbout(header, "  "), HasSubstr("names no marker"));
}

TEST(NamedMarkers, TheComplaintStaysReadableWhateverTheFileHolds) {
  RecordingHeader header = headerOf(60, 1000);
  for (int i = 0; i < 5000; i++) addMarker(header, "Comment", "note " + std::to_string(i), i);
  addMarker(header, "Comment", "\x1B[2J" + std::string(100000, 'x'), 5000);
  addMarker(header, "Comment", "\x1B[2J" + std::string(100000, 'x'), 5001);
  const std::string complaint = complaintAbout(header, "R128");
  EXPECT_LT(complaint.size(), 1000u);
  EXPECT_THAT(complaint, HasSubstr("and 4981 others"));
  EXPECT_THAT(complaint, Not(HasSubstr("\x1B")));
  std::string umlauts = "x";
  for (int i = 0; i < 50; i++) umlauts += "\xC3\xA4";
  EXPECT_THAT(complaintAbout(header, umlauts), HasSubstr("\xC3\xA4...\" names")); // no half character
}

} // namespace emeg
