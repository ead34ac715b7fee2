#include "engine/WholeChannelCorrection.h"

#include "engine/stages/StageList.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

namespace emeg {

namespace {

constexpr double artifactHighPassHz = 1.0;
constexpr double bcgLowPassHz = 35.0;
constexpr double splitOrder = 3.0;
constexpr double restSeconds = 0.1; // between two values of the low-frequency rest
constexpr double bcgTargetRate = 250.0;

FilterResponse singleEdge(EdgeKind kind, double hz, double samplingInterval, int32_t log2FftLength) {
  FilterStageList stages;
  stages.addFilterStage(kind, hz * 2.0 * samplingInterval, splitOrder);
  return makeFilterResponse(stages, log2FftLength);
}

/// Rounded down; beyond any recording's length the exact value does not matter.
int64_t wholeSamples(double count) {
  return static_cast<int64_t>(std::min(std::floor(count), 4e18));
}

} // namespace

WholeChannelCorrection::WholeChannelCorrection(RunPlan plan, ChannelStore& store, TimingStrategy& timing,
                                               BeatStrategy* beats, Observer& observer)
    : plan_(std::move(plan)), store_(store), timing_(timing), beats_(beats), observer_(observer) {
  orderChannels();
  buildFilters();
  allocateBuffers();
}

void WholeChannelCorrection::run() {
  if (plan_.removeLineSinusoids)
    shared_.sinusoidTables =
        prepareSinusoidTables(plan_.lineFrequencies, plan_.samplingInterval, plan_.nrOfSamples);
  if (plan_.correctBCG) {
    correctInTwoPasses();
  } else {
    for (const int channel : order_) correctInOnePass(channel);
  }
  if (plan_.useAverageReference) subtractReference();
  for (int channel = 0; channel < static_cast<int>(plan_.roles.size()); ++channel)
    if (plan_.roleOf(channel).passesUnchanged) passUnchanged(channel);
}

/// Of what goes out, only the rate changes.
void WholeChannelCorrection::passUnchanged(int channel) {
  std::vector<float>& samples = work_.chunkBuffer;
  store_.read(channel, 0, std::span(samples).first(static_cast<size_t>(plan_.nrOfProcessed)));
  for (int64_t k = 0, j = plan_.margin; k < plan_.nrOfOutputs; ++k, j += plan_.decimationFactor)
    samples[static_cast<size_t>(k)] = samples[static_cast<size_t>(j)];
  writeChannel(channel, plan_.nrOfOutputs);
}

/// The scanner's timing is found before it is needed: channels that cannot show it come last.
void WholeChannelCorrection::orderChannels() {
  order_.resize(plan_.roles.size());
  std::iota(order_.begin(), order_.end(), 0);
  order_.erase(std::remove_if(order_.begin(), order_.end(),
                              [this](int channel) { return plan_.roleOf(channel).passesUnchanged; }),
               order_.end());
  std::stable_partition(order_.begin(), order_.end(),
                        [this](int channel) { return plan_.roleOf(channel).showsSequence; });
  if (!plan_.correctBCG) return;
  std::copy_if(order_.begin(), order_.end(), std::back_inserter(pulseChannels_),
               [this](int channel) { return plan_.roleOf(channel).takesPartInPulses; });
}

void WholeChannelCorrection::buildFilters() {
  const int32_t log2FftLength = plan_.log2FftLength;
  const double dt = plan_.samplingInterval;
  if (plan_.filteringNeeded) shared_.outputFilter = makeFilterResponse(plan_.filterStages, log2FftLength);
  if (plan_.splitsLowFrequencies)
    shared_.artifactHighPassFilter = singleEdge(EdgeKind::HighPass, artifactHighPassHz, dt, log2FftLength);
  if (plan_.correctBCG)
    shared_.bcgLowPassFilter = singleEdge(EdgeKind::LowPass, bcgLowPassHz, dt, log2FftLength);
}

void WholeChannelCorrection::allocateBuffers() {
  const double fs = plan_.samplingFrequency;
  const int64_t samples = plan_.nrOfSamples;
  work_.chunkBuffer.assign(static_cast<size_t>(plan_.nrOfProcessed), 0.0f);
  work_.allocateChannelSignal(std::max(plan_.fftLength, samples));

  int64_t longestKnotRow = samples;
  if (plan_.splitsLowFrequencies) {
    shared_.restStep = wholeSamples(fs * restSeconds);
    shared_.restLength = (samples - 1) / shared_.restStep + 1;
  }
  if (plan_.correctBCG) {
    shared_.lowFrequencyRest.assign(plan_.roles.size(),
                                    std::vector<double>(static_cast<size_t>(shared_.restLength)));
    shared_.bcgStep = std::max<int64_t>(wholeSamples(fs / bcgTargetRate), 1);
    shared_.bcgLength = (samples - 1) / shared_.bcgStep + 1;
    shared_.bcgRate = static_cast<float>(fs / static_cast<double>(shared_.bcgStep));
    shared_.bcgInterval = 1 / shared_.bcgRate;
    shared_.bcgSeries.assign(pulseChannels_.size(),
                             std::vector<double>(static_cast<size_t>(shared_.bcgLength) + 1));
    longestKnotRow = std::max(longestKnotRow, shared_.bcgLength + 1);
  }
  for (std::vector<double>* array : {&work_.splineScratch, &work_.splineB, &work_.splineC, &work_.splineD})
    array->assign(static_cast<size_t>(longestKnotRow) + 1, 0.0);
  if (plan_.correctGradient) work_.artifactEstimate.assign(static_cast<size_t>(samples), 0.0);
  if (plan_.useAverageReference || plan_.correctBCG)
    shared_.referenceSum.assign(static_cast<size_t>(plan_.nrOfOutputs), 0.0f);
}

void WholeChannelCorrection::correctInOnePass(int channel) {
  StageRun run = begin(Step::CorrectingChannel, channel);
  applyStages(Pass::BeforeBeats, run);
  applyStages(Pass::BehindBeats, run);
  writeChannel(channel, plan_.nrOfOutputs);
}

void WholeChannelCorrection::correctInTwoPasses() {
  int pulseChannel = 0;
  for (const int channel : order_) {
    if (!plan_.roleOf(channel).takesPartInPulses) {
      correctInOnePass(channel);
      continue;
    }
    StageRun run = begin(Step::CorrectingForBeats, channel);
    run.pulseChannel = pulseChannel++;
    applyStages(Pass::BeforeBeats, run);
    writeChannel(channel, plan_.nrOfProcessed);
  }
  if (pulseChannels_.empty()) return;
  observer_.stepBegins(Step::FindingBeats, -1);
  beats_->find({shared_.bcgSeries, shared_.bcgLength, shared_.bcgRate}, shared_.ecgSeries, observer_);
  for (size_t k = 0; k < pulseChannels_.size(); ++k) {
    StageRun run = begin(Step::RemovingBeats, pulseChannels_[k]);
    run.pulseChannel = static_cast<int>(k);
    applyStages(Pass::BehindBeats, run);
    writeChannel(run.channel, plan_.nrOfOutputs);
  }
}

StageRun WholeChannelCorrection::begin(Step step, int channel) {
  observer_.stepBegins(step, channel);
  store_.read(channel, 0, std::span(work_.chunkBuffer).first(static_cast<size_t>(plan_.nrOfProcessed)));
  double* const signal = work_.channelSignal();
  for (int64_t i = 0; i < plan_.nrOfSamples; ++i)
    signal[i] = static_cast<double>(work_.chunkBuffer[static_cast<size_t>(plan_.margin + i)]);
  StageRun run{plan_, shared_, work_, observer_, timing_, beats_};
  run.channel = channel;
  return run;
}

void WholeChannelCorrection::subtractReference() {
  const auto outputs = static_cast<size_t>(plan_.nrOfOutputs);
  for (int channel = 0; channel < static_cast<int>(plan_.roles.size()); ++channel) {
    if (!plan_.roleOf(channel).takesPartInReference) continue;
    store_.read(channel, 0, std::span(work_.chunkBuffer).first(outputs));
    for (size_t i = 0; i < outputs; ++i) work_.chunkBuffer[i] -= shared_.referenceSum[i];
    writeChannel(channel, plan_.nrOfOutputs);
  }
}

void WholeChannelCorrection::writeChannel(int channel, int64_t nrOfSamples) {
  store_.write(channel, 0, std::span<const float>(work_.chunkBuffer).first(static_cast<size_t>(nrOfSamples)));
}

} // namespace emeg
