#include "app/evaluation/EvaluatedRecording.h"
#include "app/evaluation/ExplainedArtifact.h"
#include "app/evaluation/HeartPulses.h"
#include "app/evaluation/Residual.h"
#include "files/formats/ProtocolFile.h"
#include "files/formats/TriggerMarkers.h"
#include "tests/app/SimulatedFiles.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr double delay = 0.231;

/// A recording and what a correction might have made of it.
class EvaluateHeart : public testing::Test {
protected:
  void simulate(const std::string& preset, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"simulate",  preset, folder_ / "r.ctc", "--fs", "2000",
                                          "--seconds", "40",   "--channels",      "3"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ASSERT_EQ(runEmeg(arguments).status, 0);
    truth_ = readTruth(folder_ / "r_truth.json");
  }

  /// The pulses that a perfect detection would find.
  std::vector<double> perfectPulses() const {
    std::vector<double> pulses;
    for (const double beat : truth_.at("heart").at("beatTimes"))
      if (beat + delay < 40) pulses.push_back(beat + delay);
    return pulses;
  }

  /// Writes r_GRA_BCG.ctc: clean EEG plus `factor` times the heart beat artifact, plus `gradientFactor` times
  /// the gradient artifact.
  void writeCorrected(double factor, double gradientFactor = 0, double microvoltsPerUnit = 1) const {
    const ReadRecording recorded = readRecording(folder_ / "r.ctc");
    const ReadRecording clean = readRecording(folder_ / "r_clean.ctc");
    const ReadRecording pulse = readRecording(folder_ / "r_pulse.ctc");
    CtcHeader header = recorded.header;
    header.dataType = 1;
    header.dataOrganisation = 1;
    const auto bytes = encodeCtcHeader(header);
    std::vector<float> samples;
    for (size_t i = 0; i < clean.samples.size(); i++) {
      const double gradient = recorded.samples[i] * microvoltsPerUnit - clean.samples[i] - pulse.samples[i];
      samples.push_back(static_cast<float>(
          (clean.samples[i] + factor * pulse.samples[i] + gradientFactor * gradient) / microvoltsPerUnit));
    }
    std::string text(samples.size() * sizeof(float), '\0');
    std::memcpy(text.data(), samples.data(), text.size());
    std::ofstream(folder_ / "r_GRA_BCG.ctc", std::ios::binary)
        << std::string(bytes.begin(), bytes.end()) << text;
  }

  void writePulses(const std::vector<double>& pulses,
                   const std::string& conditionName = "HeartPulseTriggers") const {
    Protocol triggers = makeTriggerProtocol();
    triggers.findOrAddCondition(conditionName, -1, 255, 64, 64);
    for (const double pulse : pulses)
      triggers.addInterval(std::floor(pulse * 1e6 + 0.5), std::floor(pulse * 1e6 + 0.5));
    triggers.findOrAddCondition("MRGradientTriggers", -1, 64, 64, 255);
    triggers.addInterval(3000000, 3000000);
    std::ofstream(folder_ / "r_GRA_BCG_ArtifactsTriggers.prt", std::ios::binary)
        << formatProtocol(triggers, "r.ctc", 1, {}, {});
  }

  ProgramRun evaluate(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"evaluate", folder_ / "r_GRA_BCG.ctc", "--truth",
                                          folder_ / "r_truth.json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ProgramRun run = runEmeg(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    return run;
  }

  nlohmann::json figures() const { return nlohmann::json::parse(evaluate({"--json", "-"}).out).at("heart"); }

  TestFolder folder_;
  nlohmann::json truth_;
};

} // namespace

TEST_F(EvaluateHeart, APerfectCorrectionIsPerfect) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg"));
  writeCorrected(0);
  writePulses(perfectPulses());
  const ProgramRun run = evaluate();
  EXPECT_THAT(run.out, HasSubstr("Scan: none."));
  EXPECT_THAT(run.out, Not(HasSubstr("dB")));
  EXPECT_THAT(run.out, HasSubstr("Beats: sensitivity 1.000, positive predictivity 1.000 (tolerance 100 ms, "
                                 "delay 231 ms); artifact explained 1.000 to 1.000, in all 1.000\n"));
  const nlohmann::json heart = figures();
  EXPECT_EQ(heart.at("pulses"), perfectPulses().size());
  EXPECT_NEAR(heart.at("beats").at("delay").get<double>(), delay, 1e-6);
  EXPECT_LE(heart.at("beats").at("largestError").get<double>(), 1.01e-6); // markers are whole microseconds
}

TEST_F(EvaluateHeart, KnownErrorsOfTheDetectionAreCountedAsTheyAre) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg"));
  writeCorrected(0.2);
  std::vector<double> pulses = perfectPulses();
  const size_t n = pulses.size();
  pulses[10] += 0.150;
  pulses[12] += 0.040;
  pulses.push_back(pulses[30] + 0.4);
  pulses.push_back(pulses[33] + 0.4);
  pulses.erase(pulses.begin() + 20);
  std::sort(pulses.begin(), pulses.end());
  writePulses(pulses);
  const nlohmann::json heart = figures();
  const nlohmann::json& beats = heart.at("beats");
  EXPECT_EQ(heart.at("pulses"), n + 1);
  EXPECT_EQ(beats.at("trueInSpan"), n);
  EXPECT_EQ(beats.at("matched"), n - 2);
  EXPECT_NEAR(beats.at("delay").get<double>(), delay, 1e-6);
  EXPECT_NEAR(beats.at("largestError").get<double>(), 0.040, 2e-6);
  EXPECT_NEAR(beats.at("rmsError").get<double>(), 0.040 / std::sqrt(static_cast<double>(n - 2)), 2e-6);
  for (const nlohmann::json& channel : heart.at("channels"))
    EXPECT_NEAR(channel.at("explained").get<double>(), 1 - 0.2 * 0.2, 1e-6);
  EXPECT_THAT(evaluate().out, HasSubstr("artifact explained 0.960 to 0.960"));
}

// Beats before the recording's start leave an artifact behind it.
TEST_F(EvaluateHeart, APulseOfABeatBeforeTheStartIsNoFalseOne) {
  bool tried = false;
  for (const char* seed : {"1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
    ASSERT_NO_FATAL_FAILURE(simulate("bcg", {"--seed", seed, "--force"}));
    const double onset = truth_.at("heart").at("pulseOnsets").at(0).get<double>();
    const double beat = truth_.at("heart").at("beatTimes").at(0).get<double>();
    if (onset > beat) continue;
    tried = true;
    std::vector<double> pulses = perfectPulses();
    pulses.insert(pulses.begin(), onset - 0.2 + delay);
    writeCorrected(0);
    writePulses(pulses);
    EXPECT_EQ(figures().at("beats").at("positivePredictivity"), 1) << seed;
    EXPECT_EQ(figures().at("beats").at("sensitivity"), 1) << seed;
  }
  EXPECT_TRUE(tried);
}

TEST_F(EvaluateHeart, WhatLiesOutsideTheChainDoesNotCount) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg"));
  const std::vector<double> all = perfectPulses();
  writePulses({all.begin() + 8, all.end() - 8});
  writeCorrected(0.3);
  const auto from = static_cast<int64_t>(std::llround(all[8] * 2000));
  const auto to = static_cast<int64_t>(std::llround(all[all.size() - 9] * 2000));
  // Uncorrected outside of it.
  ReadRecording corrected = readRecording(folder_ / "r_GRA_BCG.ctc");
  const ReadRecording recorded = readRecording(folder_ / "r.ctc");
  std::string bytes = bytesOf(folder_ / "r_GRA_BCG.ctc");
  const int64_t total = corrected.header.nrOfTimePoints;
  for (int c = 0; c < 3; c++) {
    for (int64_t t = 0; t < total; t++) {
      if (t >= from && t <= to) continue;
      const auto value = static_cast<float>(recorded.at(c, t));
      std::memcpy(bytes.data() + ctcHeaderSize + static_cast<size_t>(c * total + t) * sizeof(float), &value,
                  sizeof(float));
    }
  }
  std::ofstream(folder_ / "r_GRA_BCG.ctc", std::ios::binary) << bytes;
  const nlohmann::json heart = figures();
  EXPECT_EQ(heart.at("beats").at("sensitivity"), 1);
  EXPECT_EQ(heart.at("beats").at("trueInSpan"), all.size() - 16);
  for (const nlohmann::json& channel : heart.at("channels"))
    EXPECT_NEAR(channel.at("explained").get<double>(), 1 - 0.3 * 0.3, 1e-6);
}

TEST_F(EvaluateHeart, EegThatIsTakenAwayWithTheArtifactCountsAgainstIt) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg"));
  const SimulatedTruth truth = readSimulatedTruth(folder_ / "r_truth.json");
  // Nothing left at all: the EEG is gone too.
  const ReadRecording clean = readRecording(folder_ / "r_clean.ctc");
  const ReadRecording pulse = readRecording(folder_ / "r_pulse.ctc");
  std::string bytes = bytesOf(folder_ / "r.ctc");
  std::fill(bytes.begin() + static_cast<int64_t>(ctcHeaderSize), bytes.end(), '\0');
  std::ofstream(folder_ / "zero.ctc", std::ios::binary) << bytes;
  const auto explained = measureExplained(folder_ / "zero.ctc", truth, 0, 40);
  for (int c = 0; c < 3; c++) {
    double lost = 0;
    double artifact = 0;
    for (int64_t t = 0; t < clean.header.nrOfTimePoints; t++) {
      lost += clean.at(c, t) * clean.at(c, t);
      artifact += pulse.at(c, t) * pulse.at(c, t);
    }
    EXPECT_NEAR(explained[static_cast<size_t>(c)].explained(), 1 - lost / artifact, 1e-9);
  }
}

TEST_F(EvaluateHeart, WithAScanBothArtifactsAreJudged) {
  ASSERT_NO_FATAL_FAILURE(simulate("both"));
  writeCorrected(0, 0.01);
  writePulses(perfectPulses());
  const ProgramRun run = evaluate();
  EXPECT_THAT(run.out, HasSubstr("slices per volume"));
  EXPECT_THAT(run.out, HasSubstr("The residual lies 40.0 to 40.0 dB below the gradient artifact."));
  EXPECT_THAT(run.out, HasSubstr("Beats: sensitivity 1.000, positive predictivity 1.000"));
  const nlohmann::json found = figures();
  for (const nlohmann::json& channel : found.at("channels"))
    EXPECT_LT(channel.at("explained").get<double>(), 0.999); // the gradient's residual counts
}

TEST_F(EvaluateHeart, AllChannelsTogetherAreWeighedByTheirArtifacts) {
  const std::vector<ChannelExplained> channels = {{"a", 30, 6}, {"b", 10, 5}, {"dead", 0, 0}};
  EXPECT_NEAR(explainedInAll(channels), 1 - (36.0 + 25) / (900 + 100), 1e-12);
  EXPECT_NEAR(channels[1].explained(), 0.75, 1e-12);
  EXPECT_TRUE(std::isnan(explainedInAll({{"dead", 0, 0}})));
}

TEST_F(EvaluateHeart, WithTheGradientCorrectedRecordingTheHeartCorrectionIsJudgedAlone) {
  ASSERT_NO_FATAL_FAILURE(simulate("both"));
  writeCorrected(1, 0.2);
  std::filesystem::rename(folder_ / "r_GRA_BCG.ctc", folder_ / "r_GRA.ctc");
  writeCorrected(0.3, 0.2);
  writePulses(perfectPulses());
  EXPECT_LT(figures().at("explained").get<double>(), 0);
  const ProgramRun run = evaluate({"--before", folder_ / "r_GRA.ctc"});
  EXPECT_THAT(run.out, HasSubstr("artifact explained 0.910 to 0.910, in all 0.910\n"));
  EXPECT_EQ(runEmeg({"evaluate", folder_ / "r_GRA_BCG.ctc", "--truth", folder_ / "r_truth.json", "--before",
                     folder_ / "missing.ctc"})
                .status,
            1);
}

TEST_F(EvaluateHeart, WithoutHeartPulsesTheHeartCountsAsCleanForTheGradientArtifact) {
  ASSERT_NO_FATAL_FAILURE(simulate("both"));
  writeCorrected(1, 0.01);
  const auto expectUnjudged = [&] {
    const ProgramRun run = evaluate();
    EXPECT_THAT(run.out, HasSubstr("The residual lies 40.0 to 40.0 dB below the gradient artifact."));
    EXPECT_THAT(run.out, HasSubstr("Beats are not judged: " + folder_.path()));
    EXPECT_THAT(run.out, HasSubstr("Beats: not judged; artifact explained "));
    EXPECT_THAT(run.out, HasSubstr(" (whole recording)\n"));
    EXPECT_TRUE(figures().at("pulses").is_null());
    EXPECT_TRUE(figures().at("beats").is_null());
  };
  expectUnjudged();
  writePulses({}, "SomethingElse");
  expectUnjudged();
}

TEST_F(EvaluateHeart, FewerThanTwoPulsesAreNoChain) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg"));
  writeCorrected(1);
  for (const std::vector<double>& pulses : {std::vector<double>(), std::vector<double>{7.5}}) {
    writePulses(pulses);
    const ProgramRun run = evaluate();
    EXPECT_THAT(run.out, HasSubstr("that takes two pulses"));
    EXPECT_THAT(
        run.out,
        HasSubstr("Beats: not judged; artifact explained 0.000 to 0.000, in all 0.000 (whole recording)"));
    EXPECT_EQ(figures().at("pulses"), pulses.size());
  }
}

TEST_F(EvaluateHeart, ADeadChannelIsLeftOutOfTheRange) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg", {"--dead-channel", "1"}));
  writeCorrected(0.2);
  writePulses(perfectPulses());
  EXPECT_THAT(evaluate().out, HasSubstr("artifact explained 0.960 to 0.960"));
  EXPECT_TRUE(figures().at("channels").at(1).at("explained").is_null());
}

TEST_F(EvaluateHeart, IntegersOfAnyUnitAreUnderstood) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg", {"--type", "3", "--uv-per-unit", "0.5"}));
  writeCorrected(0.2, 0, 0.5);
  writePulses(perfectPulses());
  EXPECT_THAT(evaluate().out, HasSubstr("artifact explained 0.960 to 0.960"));
}

TEST_F(EvaluateHeart, SaysWhatATranscriptTellsOfAScanThatIsNotThere) {
  ASSERT_NO_FATAL_FAILURE(simulate("bcg"));
  writeCorrected(0);
  std::ofstream(folder_ / "calls.jsonl") << "{\"call\":\"lmLogText\",\"text\":\"nothing\"}\n";
  EXPECT_THAT(evaluate({"--transcript", folder_ / "calls.jsonl"}).out,
              HasSubstr("Scan: none. None was found."));
  std::ofstream(folder_ / "calls.jsonl")
      << "{\"call\":\"lmLogText\",\"text\":\"Slice duration (s): 0.07501420000000\"}\n";
  EXPECT_THAT(evaluate({"--transcript", folder_ / "calls.jsonl"}).out, HasSubstr("found all the same"));
}

TEST_F(EvaluateHeart, FiguresGoToAFileBesideTheTable) {
  ASSERT_NO_FATAL_FAILURE(simulate("both"));
  writeCorrected(0, 0.01);
  writePulses(perfectPulses());
  EXPECT_THAT(evaluate({"--json", folder_ / "figures.json"}).out, HasSubstr("Beats: sensitivity"));
  const nlohmann::json json = readTruth(folder_ / "figures.json");
  EXPECT_NEAR(json.at("gradient").at("channels").at(2).at("decibels").get<double>(), 40, 0.01);
  EXPECT_EQ(json.at("heart").at("channels").size(), 3u);
  const ProgramRun refused = runEmeg({"evaluate", folder_ / "r_GRA_BCG.ctc", "--truth",
                                      folder_ / "r_truth.json", "--json", folder_ / "none/figures.json"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("figures.json"));
}

TEST(HeartPulses, AreReadInSecondsWhateverTheFilesUnit) {
  const TestFolder folder;
  const auto write = [&](TimeResolution resolution) {
    Protocol triggers(false, "", resolution);
    triggers.startConditions();
    triggers.findOrAddCondition("HeartPulseTriggers", -1, 255, 64, 64);
    for (const double time : {3000000.0, 1500000.0}) triggers.addInterval(time, time);
    std::ofstream(folder / "a.b_ArtifactsTriggers.prt", std::ios::binary)
        << formatProtocol(triggers, "", timeFactorOf(resolution, 2000), {}, {});
  };
  for (const auto resolution : {TimeResolution::Usec, TimeResolution::Msec, TimeResolution::Volumes}) {
    write(resolution);
    const auto pulses = readHeartPulses(folder / "a.b.ctc", 2000);
    ASSERT_TRUE(pulses);
    EXPECT_THAT(*pulses, testing::ElementsAre(testing::DoubleNear(1.5, 1e-9), testing::DoubleNear(3, 1e-9)));
  }
  EXPECT_FALSE(readHeartPulses(folder / "other.ctc", 2000));
  std::ofstream(folder / "a.b_ArtifactsTriggers.prt") << "no protocol";
  EXPECT_FALSE(readHeartPulses(folder / "a.b.ctc", 2000));
}

} // namespace emeg
