#include "tests/library/SimulatedSignal.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

nlohmann::json findingsOf(emeg_correction* correction) {
  const char* text = nullptr;
  EXPECT_EQ(emeg_correction_findings(correction, &text), EMEG_OK) << emeg_correction_error(correction);
  return nlohmann::json::parse(text);
}

bool warns(const nlohmann::json& findings, const std::string& code) {
  const nlohmann::json& warnings = findings.at("Warnings");
  return std::any_of(warnings.begin(), warnings.end(),
                     [&code](const nlohmann::json& warning) { return warning.at("Code") == code; });
}

} // namespace

TEST(LibraryFindings, TellTheScan) {
  const SimulatedSignal signal;
  const CorrectionHandle correction = correctionOf(signal);
  ASSERT_EQ(emeg_correction_find(correction.get()), EMEG_OK) << emeg_correction_error(correction.get());
  size_t count = 0;
  ASSERT_EQ(emeg_correction_scans(correction.get(), &count), EMEG_OK);
  ASSERT_EQ(count, 1u);
  emeg_scan scan;
  ASSERT_EQ(emeg_correction_scan(correction.get(), 0, &scan), EMEG_OK);
  EXPECT_EQ(scan.volumes, SimulatedSignal::volumes);
  EXPECT_EQ(scan.slices, SimulatedSignal::slices);
  EXPECT_NEAR(scan.volume_duration, SimulatedSignal::volumeDuration, 1e-4);
  EXPECT_NEAR(scan.first_onset, SimulatedSignal::firstOnset, 0.02);
  EXPECT_EQ(emeg_correction_scan(correction.get(), 1, &scan), EMEG_BAD_ARGUMENT);
}

TEST(LibraryFindings, StandInTheJsonText) {
  const SimulatedSignal signal;
  const CorrectionHandle correction = correctionOf(signal);
  resultOf(correction.get(), signal.channels);
  const nlohmann::json findings = findingsOf(correction.get());
  const nlohmann::json& scan = findings.at("Scans").at(0);
  EXPECT_EQ(scan.at("NumberOfVolumes"), SimulatedSignal::volumes);
  EXPECT_EQ(scan.at("VolumeOnsets").size(), static_cast<size_t>(SimulatedSignal::volumes));
  EXPECT_NEAR(scan.at("VolumeOnsets").at(3).get<double>(),
              SimulatedSignal::firstOnset + 3 * SimulatedSignal::volumeDuration, 0.02);
  ASSERT_EQ(scan.at("Quality").at("Channels").size(), 2u);
  EXPECT_EQ(scan.at("Quality").at("Channels").at(1).at("Channel"), "EEG1");
  EXPECT_LT(scan.at("Quality").at("Channels").at(1).at("RemainingArtifact"), 1);
  EXPECT_FALSE(findings.at("Timing").at("Source").get<std::string>().empty());
  EXPECT_TRUE(findings.at("HeartBeats").is_null());
  EXPECT_FALSE(warns(findings, "NoScan"));
}

TEST(LibraryFindings, SayWhereNoScanWasFoundAndNothingWasRemoved) {
  SimulatedSignal signal;
  signal.recorded = signal.brain;
  const CorrectionHandle correction = correctionOf(signal);
  const std::vector<double> result = resultOf(correction.get(), signal.channels);
  EXPECT_TRUE(warns(findingsOf(correction.get()), "NoScan"));
  EXPECT_LT(rms(difference(result, signal.brain)), 1e-3);
}

TEST(LibraryFindings, CountSamplesThatAreNotFinite) {
  SimulatedSignal signal;
  signal.recorded[5] = std::numeric_limits<double>::quiet_NaN();
  signal.recorded[SimulatedSignal::samples + 9] = std::numeric_limits<double>::infinity();
  const CorrectionHandle correction = correctionOf(signal);
  resultOf(correction.get(), signal.channels);
  const nlohmann::json findings = findingsOf(correction.get());
  EXPECT_EQ(findings.at("SamplesNotFinite"), 2);
  EXPECT_TRUE(warns(findings, "NotFinite"));
}

TEST(LibraryFindings, HoldTheBeatsThatWereGiven) {
  const SimulatedSignal signal;
  const SettingsHandle settings = newSettings();
  std::vector<double> beats;
  for (double second = 0.5; second < 17.5; second += 0.9) beats.push_back(second);
  ASSERT_EQ(emeg_settings_set(settings.get(), "bcg", "1"), EMEG_OK);
  ASSERT_EQ(emeg_settings_set_beats(settings.get(), beats.data(), beats.size()), EMEG_OK);
  const CorrectionHandle correction = correctionOf(signal, settings.get());
  ASSERT_EQ(emeg_correction_find(correction.get()), EMEG_OK) << emeg_correction_error(correction.get());
  const double* found = nullptr;
  size_t count = 0;
  ASSERT_EQ(emeg_correction_beats(correction.get(), &found, &count), EMEG_OK);
  ASSERT_EQ(count, beats.size());
  for (size_t i = 0; i < count; ++i) EXPECT_NEAR(found[i], beats[i], 0.01);
  EXPECT_EQ(findingsOf(correction.get()).at("HeartBeats").at("Times").size(), beats.size());
}
