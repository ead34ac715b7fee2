#include "engine/store/FileStore.h"
#include "engine/store/MemoryStore.h"
#include "tests/TestFolder.h"
#include "tests/engine/EngineRecordings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace emeg {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

RecordingShape usableShape() {
  RecordingShape shape;
  shape.samplingFrequency = 250;
  shape.nrOfSamples = 1000;
  shape.roles.resize(2);
  return shape;
}

/// The message of the refusal; empty where the settings are taken.
std::string refusalOf(const CorrectionSettings& settings, const RecordingShape& shape = usableShape()) {
  MemoryStore store(2, 10000);
  Observer silent;
  try {
    const Correction correction(settings, shape, store, silent);
  } catch (const UnusableSettings& error) {
    return error.what();
  }
  return "";
}

std::string refusalOf(const std::function<void(CorrectionSettings&)>& change) {
  CorrectionSettings settings;
  change(settings);
  return refusalOf(settings);
}

std::string refusalOfShape(const std::function<void(RecordingShape&)>& change) {
  RecordingShape shape = usableShape();
  change(shape);
  return refusalOf(CorrectionSettings(), shape);
}

TEST(UnusableSettings, AreNotTheDefaults) {
  EXPECT_EQ(refusalOf(CorrectionSettings()), "");
}

TEST(UnusableSettings, AreFrequenciesThatTheRecordingCannotHold) {
  for (const double frequency : {-1.0, 125.0, 1e9, nan, infinity}) {
    SCOPED_TRACE(frequency);
    EXPECT_NE(refusalOf([&](auto& s) { s.highPass = frequency; }), "");
    EXPECT_NE(refusalOf([&](auto& s) { s.lowPass = frequency; }), "");
    EXPECT_NE(refusalOf([&](auto& s) { s.lineNoise = {frequency}; }), "");
    EXPECT_NE(refusalOf([&](auto& s) { s.notches = {{frequency, 2}}; }), "");
  }
  EXPECT_NE(refusalOf([](auto& s) { s.lineNoise = {0}; }), "");
}

TEST(UnusableSettings, AreNotchesWithoutAWidthOrBeyondZero) {
  for (const double width : {0.0, -2.0, nan, infinity, 100.0, 400.0})
    EXPECT_NE(refusalOf([&](auto& s) { s.notches = {{50, width}}; }), "") << width;
}

TEST(UnusableSettings, AreEdgesThatLeaveNothingBetweenThem) {
  EXPECT_THAT(refusalOf([](auto& s) {
                s.highPass = 40;
                s.lowPass = 30;
              }),
              testing::AllOf(testing::HasSubstr("40"), testing::HasSubstr("30")));
}

TEST(UnusableSettings, AreRatesThatCannotBe) {
  for (const double rate : {-100.0, nan, infinity, 1e-300, 1e300})
    EXPECT_NE(refusalOf([&](auto& s) { s.rate = rate; }), "") << rate;
  CorrectionSettings settings;
  settings.rate = nan;
  EXPECT_THROW(Correction::storeLength(settings, usableShape()), UnusableSettings);
}

TEST(UnusableSettings, AreWaysToAnotherRateThatTheMethodDoesNotKnow) {
  EXPECT_NE(refusalOf([](auto& s) { s.decimation = 0; }), "");
  EXPECT_NE(refusalOf([](auto& s) { s.decimation = 2; }), "") << "stretch by stretch";
  EXPECT_NE(refusalOf([](auto& s) {
              s.method = asThePluginDoes;
              s.rate = 125;
            }),
            "");
  EXPECT_EQ(refusalOf([](auto& s) {
              s.method = asThePluginDoes;
              s.decimation = 2;
            }),
            "");
}

TEST(UnusableSettings, AreWindowsWithoutASlice) {
  EXPECT_NE(refusalOf([](auto& s) { s.timing.windowSlices = 0; }), "");
}

TEST(UnusableSettings, AreBeatsOfAnElectrocardiogramThatIsNotThere) {
  const auto fromEcg = [](auto& s) {
    s.heartBeats = true;
    s.beats.source = BeatSource::Ecg;
  };
  EXPECT_NE(refusalOf(fromEcg), "");
  RecordingShape shape = usableShape();
  shape.roles[1].takesPartInPulses = false;
  shape.roles[1].showsHeartBeats = true;
  CorrectionSettings settings;
  fromEcg(settings);
  EXPECT_EQ(refusalOf(settings, shape), "");
}

TEST(UnusableSettings, AreMoreEdgesThanThePluginPairs) {
  EXPECT_NE(refusalOf([](auto& s) {
              s.method = asThePluginDoes;
              for (int i = 1; i < 60; ++i) s.notches.push_back({i * 2.0, 1});
            }),
            "");
}

TEST(UnusableSettings, AreRecordingsWithoutAnything) {
  for (const double rate : {0.0, -250.0, 9.9, 1e7, 1e300, nan, infinity})
    EXPECT_NE(refusalOfShape([&](auto& shape) { shape.samplingFrequency = rate; }), "") << rate;
  for (const int64_t length : {int64_t{0}, int64_t{-5}})
    EXPECT_NE(refusalOfShape([&](auto& shape) { shape.nrOfSamples = length; }), "") << length;
  EXPECT_NE(refusalOfShape([](auto& shape) { shape.roles.clear(); }), "");
}

struct CorrectionOutOfStep : ::testing::Test {
  MemoryStore store{2, 1000};
  Observer silent;
  Correction correction{CorrectionSettings(), usableShape(), store, silent};
  std::vector<double> values = std::vector<double>(2 * 1001);
};

TEST_F(CorrectionOutOfStep, RefusesBlocksOfAnotherSizeThanTheySay) {
  EXPECT_THROW(correction.takeIn(10, std::span(values).first(19)), std::invalid_argument);
  EXPECT_THROW(correction.takeIn(10, std::span(values).first(21)), std::invalid_argument);
  EXPECT_THROW(correction.takeIn(-1, {}), std::invalid_argument);
  EXPECT_THROW(correction.takeIn(1001, values), std::invalid_argument);
  correction.takeIn(999, std::span(values).first(1998));
  EXPECT_THROW(correction.takeIn(2, std::span(values).first(4)), std::invalid_argument);
  correction.takeIn(1, std::span(values).first(2));
  EXPECT_NO_THROW(correction.find());
}

TEST_F(CorrectionOutOfStep, FindsNothingBeforeAllSamplesAreThere) {
  correction.takeIn(999, std::span(values).first(1998));
  EXPECT_THROW(correction.find(), std::logic_error);
}

TEST_F(CorrectionOutOfStep, CorrectsNothingBeforeItHasLooked) {
  correction.takeIn(1000, std::span(values).first(2000));
  KeepingSink sink(2);
  EXPECT_THROW(correction.correct(sink), std::logic_error);
  EXPECT_THROW(correction.correctIntoStore(), std::logic_error);
}

TEST(CorrectionInWholeChannels, IsNotDoneAgainByASecondLook) {
  const EngineRecording& recording = heartAlone();
  CorrectionSettings settings;
  settings.method = asThePluginDoes;
  settings.highPass = 5;
  const Corrected once = corrected(recording, settings);
  MemoryStore store(recording.shape.nrOfChannels(), Correction::storeLength(settings, recording.shape));
  Observer silent;
  Correction correction(settings, recording.shape, store, silent);
  takeInAll(correction, recording);
  correction.find();
  correction.find();
  KeepingSink sink(recording.shape.nrOfChannels());
  correction.correct(sink);
  EXPECT_EQ(sink.channels, once.channels);
}

/// Gives up at the n-th event.
class ImpatientObserver : public Observer {
public:
  explicit ImpatientObserver(int64_t patience) : patience_(patience) {}
  void stepBegins(Step, int) override { count(); }
  void progress(double) override { count(); }
  void detail(const std::string&) override { count(); }
  void notFiniteFound(int, int64_t) override { count(); }
  void saturationFound(int) override { count(); }
  void sequenceFound(const MRSequence&) override { count(); }
  int windowFor(double, int proposed) override {
    count();
    return proposed;
  }
  void heartPeriodFound(double) override { count(); }
  void beatsFound(const FoundBeats&, float) override { count(); }
  void beatModelsMade(int, int64_t, int, int) override { count(); }
  void memoryNeeded(uint64_t) override { count(); }
  int64_t nrOfEvents = 0;

private:
  void count() {
    if (++nrOfEvents > patience_) throw Cancelled();
  }
  int64_t patience_;
};

TEST(CancelledCorrection, EndsAtEveryEventAndLeavesNothing) {
  const EngineRecording recording = simulateRecording(
      Preset::Both, 250, 30, 2, [](SimulationParameters& p) { p.gradient->quietAfter = 1; });
  for (const Method& method : {stretchByStretch, asThePluginDoes}) {
    CorrectionSettings settings;
    settings.method = method;
    settings.heartBeats = true;
    settings.lineNoise = {50};
    settings.lowPass = 40;
    const TestFolder folder;
    int runs = 0;
    const auto eventsWith = [&](int64_t patience) {
      ImpatientObserver observer(patience);
      FileStore store(folder.path("store" + std::to_string(++runs)),
                      Correction::storeLength(settings, recording.shape));
      corrected(recording, settings, store, observer, 5000);
      return observer.nrOfEvents;
    };
    const int64_t all = eventsWith(std::numeric_limits<int64_t>::max());
    ASSERT_GE(all, 20);
    // All of the first and a sample of the others, which are progress inside the same loops.
    for (int64_t patience = 0; patience < all; patience += patience < 10 ? 1 : 1 + all / 12)
      EXPECT_THROW(eventsWith(patience), Cancelled) << patience << " of " << all;
  }
}

/// Cannot take what it is given.
class FullSink : public CorrectedSink {
  void take(int64_t, std::span<const double>) override { throw std::runtime_error("no room"); }
};

TEST(CancelledCorrection, MayBeTheSinksWish) {
  const EngineRecording& recording = heartAlone();
  MemoryStore store(recording.shape.nrOfChannels(), recording.length());
  Observer silent;
  CorrectionSettings settings;
  settings.gradient = false;
  Correction correction(settings, recording.shape, store, silent);
  takeInAll(correction, recording);
  correction.find();
  FullSink sink;
  EXPECT_THROW(correction.correct(sink), std::runtime_error);
}

TEST(StoresOfACorrection, SayWhichFileCannotBeWrittenAndWhy) {
  try {
    const FileStore store("/no/such/folder/channels", 10);
    FAIL();
  } catch (const StoreError& error) {
    EXPECT_TRUE(error.whileWriting());
    EXPECT_THAT(error.what(), testing::HasSubstr("/no/such/folder/channels"));
    EXPECT_EQ(error.errorNumber(), ENOENT);
  }
}

TEST(StoresOfACorrection, RefuseWhatTheyDoNotHold) {
  MemoryStore memory(2, 10);
  std::vector<float> samples(5);
  EXPECT_THROW(memory.read(2, 0, samples), std::out_of_range);
  EXPECT_THROW(memory.read(-1, 0, samples), std::out_of_range);
  EXPECT_THROW(memory.write(0, 6, samples), std::out_of_range);
  EXPECT_THROW(memory.write(0, -1, samples), std::out_of_range);
  const TestFolder folder;
  FileStore file(folder.path("channels"), 10);
  file.write(1, 0, samples);
  EXPECT_THROW(file.read(1, 8, samples), StoreError) << "nothing is there yet";
}

} // namespace
} // namespace emeg
