#include "files/exchange/ChannelKind.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

ChannelKind kindOf(const std::string& name, const std::string& type = "", bool isVoltage = true) {
  return guessChannelKind(name, type, isVoltage).kind;
}

TEST(ChannelKind, TheFilesTypeCountsBeforeTheName) {
  EXPECT_EQ(kindOf("ECG", "EEG"), ChannelKind::Eeg);
  EXPECT_EQ(kindOf("Fp1", "ekg"), ChannelKind::Ecg);
  EXPECT_EQ(kindOf("X1", "VEOG"), ChannelKind::Eog);
  EXPECT_EQ(kindOf("X1", "stim"), ChannelKind::Trigger);
  EXPECT_EQ(kindOf("X1", "MISC"), ChannelKind::Other);
  EXPECT_EQ(kindOf("ECG", "unheard of"), ChannelKind::Ecg) << "an unknown type says nothing";
}

TEST(ChannelKind, FollowsFromTheFirstWordOfAName) {
  EXPECT_EQ(kindOf("EEG Fp1-Ref"), ChannelKind::Eeg);
  EXPECT_EQ(kindOf("ECG chest"), ChannelKind::Ecg);
  EXPECT_EQ(kindOf("Resp nasal"), ChannelKind::Other);
}

TEST(ChannelKind, FollowsFromUsualNames) {
  for (const char* name : {"ECG", "EKG1", "ecg2"}) EXPECT_EQ(kindOf(name), ChannelKind::Ecg) << name;
  for (const char* name : {"EOG", "HEOG", "VEOG1", "EOG_left"})
    EXPECT_EQ(kindOf(name), ChannelKind::Eog) << name;
  for (const char* name : {"EMG", "EMG2", "chinEMG"}) EXPECT_EQ(kindOf(name), ChannelKind::Emg) << name;
  for (const char* name : {"TRIG", "Trigger", "STI 014", "STI014", "Marker"})
    EXPECT_EQ(kindOf(name), ChannelKind::Trigger) << name;
  EXPECT_EQ(kindOf("Status"), ChannelKind::Status);
  for (const char* name : {"Fp1", "Cz", "A1", "Channel_000", "", "12", "T7"})
    EXPECT_EQ(kindOf(name), ChannelKind::Eeg) << name;
}

TEST(ChannelKind, ChannelsWithoutAVoltageAreOther) {
  EXPECT_EQ(kindOf("Belt", "", false), ChannelKind::Other);
  EXPECT_EQ(kindOf("Status", "", false), ChannelKind::Status);
}

TEST(ChannelKind, SaysByWhichRule) {
  EXPECT_EQ(guessChannelKind("Fp1", "EEG", true).rule, "its type is \"EEG\"");
  EXPECT_EQ(guessChannelKind("VEOG", "", true).rule, "its name contains \"EOG\"");
  EXPECT_EQ(guessChannelKind("Fp1", "", true).rule, "no other rule applies");
}

TEST(Units, VoltagesAreKnownInEverySpelling) {
  for (const char* unit : {"uV", "\xC2\xB5V", "\xCE\xBCV", "\xB5V", ""})
    EXPECT_EQ(microvoltsIn(unit), 1) << unit;
  EXPECT_EQ(microvoltsIn("mV"), 1000);
  EXPECT_EQ(microvoltsIn("V"), 1e6);
  EXPECT_EQ(microvoltsIn("nV"), 1e-3);
  for (const char* unit : {"C", "uS", "Boolean", "%"}) EXPECT_EQ(microvoltsIn(unit), 0) << unit;
}

} // namespace
} // namespace emeg
