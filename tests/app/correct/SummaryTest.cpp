#include "app/correct/Summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace emeg {

namespace {

using testing::HasSubstr;

/// One channel, scans of the given numbers of volumes.
CorrectionResult resultWith(const std::vector<int32_t>& nrsOfVolumes) {
  CorrectionResult result;
  RecordingChannel channel;
  channel.name = "Cz";
  result.header.channels = {channel};
  result.plan.channels = planChannels(result.header, {});
  result.found.timing.source = TimingSource::SimilarVolumes;
  for (const int32_t nrOfVolumes : nrsOfVolumes) {
    FoundScan scan;
    scan.sequence.nrOfVolumes = nrOfVolumes;
    scan.sequence.sliceDuration = 0.1;
    result.found.timing.scans.push_back(scan);
    result.found.quality.push_back(QualityFigures{{1, 100}, {ChannelQuality()}, 0, 0});
  }
  result.files = {"run_GRA.vhdr"};
  return result;
}

std::string summaryOf(const CorrectionResult& result) {
  std::ostringstream out;
  printSummary(out, result, {});
  return out.str();
}

} // namespace

TEST(Summary, SaysWhichOfSeveralScansTheFigureIsOf) {
  EXPECT_THAT(summaryOf(resultWith({9, 12, 7})),
              HasSubstr("Gradient:  scan 2, the longest: 0 uV RMS before"));
  EXPECT_THAT(summaryOf(resultWith({9})), HasSubstr("Gradient:  0 uV RMS before"));
}

} // namespace emeg
