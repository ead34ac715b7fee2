#include "tests/app/SimulatedFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(CommandLine, HelpAndVersionSucceed) {
  const ProgramRun help = runEmeg({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("simulate"));
  const ProgramRun version = runEmeg({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.out, testing::StartsWith("emeg "));
  EXPECT_THAT(version.out, HasSubstr("."));
}

TEST(CommandLine, HelpOfACommandShowsExamples) {
  const ProgramRun help = runEmeg({"simulate", "--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("Examples:"));
  EXPECT_THAT(help.out, HasSubstr("emeg simulate gap run1.ctc"));
  for (const char* option :
       {"--heart-rate", "--ectopic", "--weak", "--movement", "--movement-count", "--dead-channel",
        "--second-burst-ms", "--scans", "--cut-start", "--markers", "--spikes", "--clip-uv", "multiband"})
    EXPECT_THAT(help.out, HasSubstr(option));
}

TEST(CommandLine, NoCommandAndUnknownCommandsAreWrongUsage) {
  EXPECT_EQ(runEmeg({}).status, 2);
  EXPECT_EQ(runEmeg({"dance"}).status, 2);
  EXPECT_FALSE(runEmeg({"dance"}).err.empty());
}

TEST(CommandLine, SummaryNamesWhatWasSimulated) {
  const TestFolder folder;
  const ProgramRun run = runEmeg({"simulate", "gap", folder / "r.ctc", "--fs", "2000", "--volumes", "3",
                                  "--channels", "2", "--no-truth"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("2 channels, 14 s at 2000 Hz, 3 volumes of 20 slices"));
}

struct BadCase {
  std::vector<std::string> arguments; ///< "OUT" stands for a path that could be written
  std::string complaint;              ///< part of the message
};

void PrintTo(const BadCase& badCase, std::ostream* out) {
  for (const std::string& argument : badCase.arguments) *out << argument << " ";
}

class BadOptions : public testing::TestWithParam<BadCase> {};

TEST_P(BadOptions, AreRefusedWithAReasonAndWithoutFiles) {
  const TestFolder folder;
  std::vector<std::string> arguments = {"simulate"};
  for (const std::string& argument : GetParam().arguments)
    arguments.push_back(argument == "OUT" ? folder / "r.ctc" : argument);
  const ProgramRun run = runEmeg(arguments);
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr(GetParam().complaint));
  EXPECT_THAT(folder.names(), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, BadOptions,
    testing::Values(
        BadCase{{"gap"}, "OUT"}, BadCase{{"spiral", "OUT"}, "spiral"}, BadCase{{"gap", "r.dat"}, "r.dat"},
        BadCase{{"gap", ".ctc"}, ".ctc"}, BadCase{{"gap", "folder/.ctc"}, ".ctc"},
        BadCase{{"gap", "r.set"}, "no name of a .ctc, .vhdr, .edf or .bdf file"},
        BadCase{{"gap", "r.vhdr", "--type", "3"}, "for .ctc files only"},
        BadCase{{"gap", "OUT", "--frequency", "3"}, "--frequency"},
        BadCase{{"gap", "OUT", "--channels", "0"}, "number of channels is 0"},
        BadCase{{"gap", "OUT", "--channels", "257"}, "between 1 and 256"},
        BadCase{{"gap", "OUT", "--channels", "-3"}, "number of channels is -3"},
        BadCase{{"gap", "OUT", "--channels", "many"}, "--channels"},
        BadCase{{"gap", "OUT", "--channels", "2.5"}, "--channels"},
        BadCase{{"gap", "OUT", "--seed", "-1"}, "--seed"}, BadCase{{"gap", "OUT", "--seed", "2.5"}, "--seed"},
        BadCase{{"gap", "OUT", "--seed", "99999999999999999999999"}, "--seed"},
        BadCase{{"gap", "OUT", "--fs", "0"}, "sampling frequency is 0"},
        BadCase{{"gap", "OUT", "--fs", "-2000"}, "sampling frequency is -2000"},
        BadCase{{"gap", "OUT", "--fs", "nan"}, "sampling frequency is nan"},
        BadCase{{"gap", "OUT", "--fs", "inf"}, "sampling frequency is inf"},
        BadCase{{"gap", "OUT", "--fs", "400"}, "without aliasing"},
        BadCase{{"gap", "OUT", "--fs", "2000", "--readout", "900"}, "without aliasing"},
        BadCase{{"gap", "OUT", "--seconds", "5"}, "room for 0 volumes"},
        BadCase{{"gap", "OUT", "--seconds", "-5"}, "length of the recording is -5"},
        BadCase{{"gap", "OUT", "--seconds", "nan"}, "length of the recording is nan"},
        BadCase{{"gap", "OUT", "--seconds", "1e300"}, "length of the recording"},
        BadCase{{"gap", "OUT", "--seconds", "20", "--volumes", "60"}, "room for 6 volumes"},
        BadCase{{"gap", "OUT", "--volumes", "0"}, "number of volumes is 0"},
        BadCase{{"gap", "OUT", "--volumes", "-4"}, "number of volumes is -4"},
        BadCase{{"gap", "OUT", "--volumes", "9000000000000000000"}, "length of the recording"},
        BadCase{{"gap", "OUT", "--slices", "0"}, "number of slices per volume is 0"},
        BadCase{{"gap", "OUT", "--slice-ms", "0"}, "slice duration is 0"},
        BadCase{{"gap", "OUT", "--slice-ms", "nan", "--volumes", "3"}, "length of the recording is nan"},
        BadCase{{"gap", "OUT", "--slice-ms", "60"}, "20 ms of quiet"},
        BadCase{{"gap", "OUT", "--burst-ms", "60"}, "20 ms of quiet"},
        BadCase{{"gap", "OUT", "--burst-ms", "nan"}, "burst duration is nan"},
        BadCase{{"gap", "OUT", "--gap-ms", "-1"}, "gap after a volume is -1"},
        BadCase{{"gap", "OUT", "--quiet-before", "0"}, "quiet stretch before the scan is 0"},
        BadCase{{"gap", "OUT", "--quiet-after", "0"}, "quiet stretch after the scan is 0"},
        BadCase{{"gap", "OUT", "--first-slice", "-5"}, "difference of each first slice is -5"},
        BadCase{{"gap", "OUT", "--drift", "90"}, "drift is 90"},
        BadCase{{"gap", "OUT", "--eeg-uv", "-1"}, "EEG's RMS is -1"},
        BadCase{{"gap", "OUT", "--noise-uv", "0"}, "sensor noise is 0"},
        BadCase{{"gap", "OUT", "--line-noise", "4000"}, "line noise's frequency is 4000"},
        BadCase{{"gap", "OUT", "--line-amplitude", "5"}, "--line-noise"},
        BadCase{{"gap", "OUT", "--type", "4"}, "--type"},
        BadCase{{"gap", "OUT", "--organisation", "0"}, "--organisation"},
        BadCase{{"gap", "OUT", "--uv-per-unit", "2"}, "--type 3"},
        BadCase{{"gap", "OUT", "--type", "3", "--uv-per-unit", "0"}, "--uv-per-unit"},
        BadCase{{"gap", "OUT", "--heart-rate", "60"}, "--heart-rate has no meaning"},
        BadCase{{"bcg", "OUT", "--slices", "10"}, "--slices has no meaning"},
        BadCase{{"bcg", "OUT", "--heart-rate", "20"}, "heart rate is 20"},
        BadCase{{"bcg", "OUT", "--rmssd-ms", "-1"}, "RMSSD is -1"}));

INSTANTIATE_TEST_SUITE_P(
    HardCases, BadOptions,
    testing::Values(BadCase{{"gap", "OUT", "--ectopic", "5"}, "--ectopic has no meaning"},
                    BadCase{{"gap", "OUT", "--weak", "5,5"}, "--weak has no meaning"},
                    BadCase{{"bcg", "OUT", "--ectopic", "-1"}, "share of ectopic beats is -1"},
                    BadCase{{"bcg", "OUT", "--ectopic", "31"}, "between 0 and 30 %"},
                    BadCase{{"bcg", "OUT", "--ectopic", "nan"}, "share of ectopic beats is nan"},
                    BadCase{{"bcg", "OUT", "--weak", "5"}, "START,SECONDS"},
                    BadCase{{"bcg", "OUT", "--weak", "5,5,0.2,1"}, "START,SECONDS"},
                    BadCase{{"bcg", "OUT", "--weak", "5,5,"}, "START,SECONDS"},
                    BadCase{{"bcg", "OUT", "--weak", "5;5"}, "START,SECONDS"},
                    BadCase{{"bcg", "OUT", "--weak", "-5,5"}, "start of the weak stretch is -5"},
                    BadCase{{"bcg", "OUT", "--weak", "5,0"}, "length of the weak stretch is 0"},
                    BadCase{{"bcg", "OUT", "--weak", "5,nan"}, "length of the weak stretch is nan"},
                    BadCase{{"bcg", "OUT", "--weak", "110,20"}, "end of the weak stretch is 130"},
                    BadCase{{"bcg", "OUT", "--weak", "5,5,1.5"}, "factor of the weak stretch is 1.5"},
                    BadCase{{"bcg", "OUT", "--movement", "0"}, "movements' peak is 0"},
                    BadCase{{"bcg", "OUT", "--movement", "inf"}, "movements' peak is inf"},
                    BadCase{{"bcg", "OUT", "--movement-count", "3"}, "--movement"},
                    BadCase{{"bcg", "OUT", "--movement", "300", "--movement-count", "0"}, "bursts is 0"},
                    BadCase{{"bcg", "OUT", "--movement", "300", "--movement-count", "41"},
                            "room for 40 movement bursts, not for 41"},
                    BadCase{{"bcg", "OUT", "--channels", "8", "--dead-channel", "8"},
                            "dead channel is 8; channels are counted from 0 to 7"},
                    BadCase{{"bcg", "OUT", "--dead-channel", "0", "--dead-channel", "-1"},
                            "dead channel is -1"},
                    BadCase{{"bcg", "OUT", "--dead-channel", "first"}, "--dead-channel"}));

INSTANTIATE_TEST_SUITE_P(
    HardScans, BadOptions,
    testing::Values(
        BadCase{{"gap", "OUT", "--second-burst-ms", "40"},
                "second burst that ends after 88 ms leaves less than 20 ms"},
        BadCase{{"gap", "OUT", "--second-burst-ms", "nan"}, "delay of the second burst is nan"},
        BadCase{{"gap", "OUT", "--second-burst-ms", "-5"}, "delay of the second burst is -5"},
        BadCase{{"twobursts", "OUT", "--second-burst-factor", "inf"},
                "second burst relative to the first is inf"},
        BadCase{{"gap", "OUT", "--least-quiet-ms", "nan"}, "least quiet in a slice is nan"},
        BadCase{{"gap", "OUT", "--least-quiet-ms", "40"}, "less than 40 ms of quiet"},
        BadCase{{"gap", "OUT", "--jitter-us", "-1"}, "jitter of the volumes is -0.001 ms"},
        BadCase{{"gap", "OUT", "--jitter-us", "9000"}, "between 0 and 5 ms"},
        BadCase{{"gap", "OUT", "--scans", "0"}, "number of scans is 0"},
        BadCase{{"gap", "OUT", "--scans", "101"}, "between 1 and 100"},
        BadCase{{"gap", "OUT", "--scans", "20"}, "room for 0 volumes of 1.80034 s in each of its scans"},
        BadCase{{"gap", "OUT", "--pause", "5"}, "with several --scans only"},
        BadCase{{"gap", "OUT", "--scans", "2", "--pause", "0"}, "pause between scans is 0"},
        BadCase{{"gap", "OUT", "--cut-start", "-1"}, "over of the scan at the start is -1"},
        BadCase{{"gap", "OUT", "--cut-start", "nan"}, "over of the scan at the start is nan"},
        BadCase{{"gap", "OUT", "--cut-start", "8", "--volumes", "4"}, "is over when the recording begins"},
        BadCase{{"gap", "OUT", "--cut-start", "1", "--quiet-before", "2"}, "--quiet-before has no meaning"},
        BadCase{{"gap", "OUT", "--ends-in-scan", "--quiet-after", "2"}, "--quiet-after has no meaning"},
        BadCase{{"gap", "OUT", "--ends-in-scan", "--volumes", "5", "--seconds", "30"},
                "goes on longer than the scan, which ends after 12.0"},
        BadCase{{"gap", "OUT", "--markers", "both"}, "--markers"},
        BadCase{{"gap", "OUT", "--marker-name", "R64"}, "--markers volume or slice only"},
        BadCase{{"gap", "OUT", "--markers", "volume", "--marker-name", ""}, "1 to 100 characters"},
        BadCase{{"gap", "OUT", "--markers", "volume", "--marker-name", "a\nb"}, "without line breaks"},
        BadCase{{"gap", "OUT", "--markers", "volume", "--marker-name", std::string(101, 'x')},
                "1 to 100 characters"},
        BadCase{{"gap", "OUT", "--markers", "volume", "--no-prt"}, "--markers has no meaning with --no-prt"},
        BadCase{{"bcg", "OUT", "--markers", "volume"}, "--markers has no meaning with preset bcg"},
        BadCase{{"bcg", "OUT", "--scans", "2"}, "--scans has no meaning with preset bcg"},
        BadCase{{"bcg", "OUT", "--spikes", "-1"}, "number of spikes is -1"},
        BadCase{{"bcg", "OUT", "--spikes", "1", "--spike-uv", "nan"}, "spikes' peak is nan"},
        BadCase{{"bcg", "OUT", "--spike-uv", "5"}, "--spikes"},
        BadCase{{"bcg", "OUT", "--dropouts", "20000"}, "number of dropouts is 20000"},
        BadCase{{"bcg", "OUT", "--dropouts", "1", "--dropout-ms", "0"}, "length of a dropout is 0"},
        BadCase{{"bcg", "OUT", "--dropout-ms", "5"}, "--dropouts"},
        BadCase{{"bcg", "OUT", "--clip-uv", "-5"}, "largest value that is recorded is -5"},
        BadCase{{"bcg", "OUT", "--clip-uv", "nan"}, "largest value that is recorded is nan"},
        BadCase{{"fill", "OUT", "--fs", "5000", "--burst-ms", "200"}, "of quiet in a slice"}));

TEST(CommandLine, EveryPresetIsSimulatedAtEveryUsualRate) {
  for (const char* preset :
       {"gap", "continuous", "bcg", "both", "fill", "twobursts", "equidistant", "multiband", "manyslices"}) {
    for (const char* fs : {"1000", "2000", "5000"}) {
      const TestFolder folder;
      const ProgramRun run = runEmeg({"simulate", preset, folder / "r.ctc", "--fs", fs, "--channels", "1",
                                      "--seconds", "15", "--no-truth"});
      EXPECT_EQ(run.status, 0) << preset << " " << fs << ": " << run.err;
    }
  }
}

TEST(CommandLine, TheLengthFollowsFromScansAndPauses) {
  const TestFolder folder;
  // 3 s, two scans of 3 x 1.8003 s, 6 s between them, 5 s.
  const ProgramRun scans = runEmeg({"simulate", "gap", folder / "a.ctc", "--fs", "1000", "--channels", "1",
                                    "--volumes", "3", "--scans", "2", "--pause", "6", "--no-truth"});
  EXPECT_THAT(scans.out, HasSubstr("1 channel, 25 s at 1000 Hz, 2 scans of 3 volumes of 20 slices"));
  // The tenth volume would end after 21 s.
  const ProgramRun cut = runEmeg({"simulate", "gap", folder / "b.ctc", "--fs", "1000", "--channels", "1",
                                  "--volumes", "10", "--ends-in-scan", "--no-truth"});
  EXPECT_THAT(cut.out, HasSubstr("1 channel, 20 s at 1000 Hz, 10 volumes"));
}

} // namespace

} // namespace emeg
