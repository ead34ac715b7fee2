#include "engine/Correction.h"

#include "dsp/PowerOfTen.h"
#include "engine/CorrectionFilters.h"
#include "engine/FindingsObserver.h"
#include "engine/Intake.h"
#include "engine/SaturatedChannels.h"
#include "engine/StretchCorrection.h"
#include "engine/WholeChannelCorrection.h"
#include "engine/beats/BlindBeats.h"
#include "engine/store/CorrectedInStore.h"
#include "engine/timing/ScanTiming.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace emeg {

namespace {

int64_t outputsOf(const CorrectionSettings& settings, const RecordingShape& shape) {
  if (settings.method.wholeChannels) return (shape.nrOfSamples - 1) / settings.decimation + 1;
  try {
    const std::optional<Resampler> resampler = outputResampler(settings, shape.samplingFrequency);
    return resampler ? resampler->outputLength(shape.nrOfSamples) : shape.nrOfSamples;
  } catch (const std::invalid_argument& error) {
    throw UnusableSettings(error.what());
  }
}

} // namespace

class Correction::Run {
public:
  Run(CorrectionSettings settings, RecordingShape shape, ChannelStore& store, Observer& observer)
      : settings_(std::move(settings)), shape_(std::move(shape)), store_(store), observer_(observer),
        nrOfOutputs_(outputsOf(settings_, shape_)),
        offset_(std::max<int64_t>(nrOfOutputs_ - shape_.nrOfSamples, 0)),
        intake_(shape_, store, offset_, settings_.heartBeats && !settings_.method.wholeChannels,
                settings_.repairSaturation && !settings_.method.wholeChannels) {
    prepareFilters();
  }

  void takeIn(int64_t count, std::span<const double> values) {
    if (count < 0 || count > shape_.nrOfSamples - intake_.nrOfSamples() ||
        values.size() != static_cast<size_t>(count) * shape_.roles.size())
      throw std::invalid_argument("a block that the recording has no room for");
    if (intake_.nrOfSamples() == 0) observer_.stepBegins(Step::TakingIn, -1);
    intake_.add(count, values);
    observer_.progress(static_cast<double>(intake_.nrOfSamples()) / static_cast<double>(shape_.nrOfSamples));
  }

  const Findings& find() {
    if (intake_.nrOfSamples() != shape_.nrOfSamples)
      throw std::logic_error("samples of the recording are missing");
    if (hasLooked_) return findings_;
    hasLooked_ = true;
    findings_.nrOfNotFinite = intake_.nrOfNotFinite();
    if (settings_.method.wholeChannels) {
      correctWholeChannels();
      return findings_;
    }
    if (settings_.repairSaturation) {
      observer_.memoryNeeded(memoryForRepair(shape_.nrOfSamples));
      findings_.repaired = intake_.repair();
    }
    if (settings_.gradient) findScansInStore();
    if (settings_.heartBeats) findHeart();
    return findings_;
  }

  void correct(CorrectedSink& sink) {
    checkHasLooked();
    if (settings_.method.wholeChannels) return readCorrected(sink);
    correctStretches([&sink](StretchCorrection& correction) { correction.run(sink); });
  }

  std::vector<ValueBounds> correctIntoStore() {
    checkHasLooked();
    if (!settings_.method.wholeChannels) {
      correctStretches([this](StretchCorrection& correction) { kept_ = correction.runIntoStore(); });
      return kept_.bounds;
    }
    BoundsSink bounds(shape_.roles.size());
    readCorrected(bounds);
    return bounds.bounds();
  }

  void readCorrected(CorrectedSink& sink) {
    // Stretch by stretch the samples have been scaled before they came into the store.
    std::vector<double> factors(shape_.roles.size(), 1);
    for (size_t c = 0; settings_.method.wholeChannels && c < factors.size(); ++c)
      if (!shape_.roles[c].passesUnchanged) factors[c] = powerOfTen(settings_.scalingOrder);
    sendStored(store_, nrOfOutputs_ - kept_.lastCount, factors, sink);
    if (kept_.lastCount > 0) sendBlock(kept_.lastStretch, shape_.roles.size(), sink);
  }

  int64_t nrOfOutputs() const { return nrOfOutputs_; }
  double outputRate() const {
    if (settings_.method.wholeChannels) return shape_.samplingFrequency / settings_.decimation;
    return settings_.rate > 0 ? settings_.rate : shape_.samplingFrequency;
  }
  const Findings& findings() const { return findings_; }

private:
  void checkHasLooked() const {
    if (!hasLooked_) throw std::logic_error("scans and heart beats were not looked for");
  }

  template <typename Way>
  void correctStretches(const Way& way) {
    const RunPlan plan = planOfStages();
    const std::unique_ptr<GradientMeter> meter = meterOfScans();
    StretchCorrection correction(plan, stretches_, store_, offset_, meter.get(), observer_);
    way(correction);
    if (meter) findings_.quality = meter->figures();
  }

  void prepareFilters() {
    const double rate = shape_.samplingFrequency;
    stretches_.recordingLength = shape_.nrOfSamples;
    stretches_.samplingFrequency = rate;
    if (settings_.method.wholeChannels) return;
    try {
      stretches_.filters = outputFilters(settings_, rate);
      stretches_.lines = lineTrackers(settings_, rate);
      stretches_.resampler = outputResampler(settings_, rate);
    } catch (const std::invalid_argument& error) {
      throw UnusableSettings(error.what());
    }
    stretches_.scale = powerOfTen(settings_.scalingOrder);
  }

  void findScansInStore() {
    std::vector<int> candidates;
    for (int c = 0; c < shape_.nrOfChannels(); ++c)
      if (shape_.roles[static_cast<size_t>(c)].showsSequence &&
          !shape_.roles[static_cast<size_t>(c)].passesUnchanged)
        candidates.push_back(c);
    observer_.memoryNeeded(memoryForScanSearch(shape_.nrOfSamples) +
                           CachedChannels::memoryFor(shape_.nrOfSamples));
    CachedChannels recording(store_, offset_, shape_.nrOfSamples);
    TimedScans scans = findScans(recording, candidates, shape_.nrOfSamples, shape_.samplingFrequency,
                                 settings_.timing, observer_);
    findings_.timing = std::move(scans.found);
    stretches_.scans = std::move(scans.segments);
    stretches_.volumeWise = scans.volumeWise;
    stretches_.windowSlices = settings_.timing.windowSlices;
    if (stretches_.scans.empty()) return;
    stretches_.split = templateSplit(shape_.samplingFrequency);
    const int64_t context = SegmentRemoval(stretches_.scans, shape_.samplingFrequency, stretches_.volumeWise,
                                           stretches_.windowSlices)
                                .context();
    // The filter works in blocks: whole ones are done once.
    const int64_t block = stretches_.split.blockLength();
    stretches_.templateContext = (context + block - 1) / block * block;
  }

  void findHeart() {
    HeartSeries series = intake_.heartSeries();
    const double step = shape_.samplingFrequency / series.rate;
    stretches_.beatStep = static_cast<int64_t>(std::llround(step));
    if (series.channels.empty()) return;
    removeGradientFromSeries(series, stretches_.scans, step, stretches_.volumeWise, stretches_.windowSlices,
                             observer_);
    findHeartArtifact(series, settings_.beats, findings_, observer_);
    stretches_.beatArtifacts = std::move(series.channels);
  }

  RunPlan planOfStages() const {
    RunPlan plan;
    plan.method = settings_.method;
    plan.samplingFrequency = shape_.samplingFrequency;
    plan.samplingInterval = 1 / shape_.samplingFrequency;
    plan.roles = shape_.roles;
    plan.correctGradient = !stretches_.scans.empty() || settings_.method.wholeChannels;
    plan.correctBCG = settings_.heartBeats;
    plan.splitsLowFrequencies = plan.correctGradient || plan.correctBCG;
    plan.removeLineSinusoids = !settings_.lineNoise.empty();
    plan.useAverageReference = settings_.averageReference;
    plan.filteringNeeded = !stretches_.filters.empty();
    plan.volumeWise = stretches_.volumeWise;
    plan.proposedWindow = settings_.timing.windowSlices;
    plan.lineFrequencies = settings_.lineNoise;
    const auto takesPart = [](const ChannelRole& role) {
      return role.takesPartInReference && !role.passesUnchanged;
    };
    const auto nrOfReferences =
        static_cast<double>(std::count_if(plan.roles.begin(), plan.roles.end(), takesPart));
    for (const ChannelRole& role : plan.roles)
      plan.referenceWeights.push_back(takesPart(role) ? 1.0 / nrOfReferences : 0.0);
    plan.decimationFactor = settings_.decimation;
    plan.nrOfSamples = shape_.nrOfSamples;
    plan.nrOfProcessed = shape_.nrOfSamples;
    plan.nrOfOutputs = nrOfOutputs_;
    plan.outputRate = outputRate();
    return plan;
  }

  /// Null without a scan.
  std::unique_ptr<GradientMeter> meterOfScans() const {
    if (findings_.timing.scans.empty()) return nullptr;
    MeteredCorrection metered;
    metered.scans = findings_.timing.scans;
    for (const ChannelRole& role : shape_.roles)
      if (!role.passesUnchanged) metered.showsScan.push_back(role.showsSequence);
    metered.nrOfChannels = static_cast<int>(metered.showsScan.size());
    metered.samplingFrequency = shape_.samplingFrequency;
    metered.samplingFrequencyAfter = outputRate();
    metered.nrOfTimePoints = shape_.nrOfSamples;
    metered.nrOfTimePointsAfter = nrOfOutputs_;
    metered.highPass = settings_.highPass;
    metered.lowPass = settings_.lowPass;
    metered.unscale = 1 / powerOfTen(settings_.scalingOrder);
    return std::make_unique<GradientMeter>(metered);
  }

  /// As the plug-in does.
  void correctWholeChannels() {
    RunPlan plan = planOfStages();
    const PairedEdges edges = pairedEdges(settings_, shape_.samplingFrequency);
    plan.filterStages = edges.stages;
    plan.filteringNeeded = edges.stages.count() > 0;
    plan.volumeWise = settings_.timing.volumeWise;
    plan.correctGradient = settings_.gradient;
    plan.splitsLowFrequencies = plan.correctGradient || plan.correctBCG;
    // The transform's length is that of the recording with margins, before they are cut off.
    const double length = static_cast<double>(shape_.nrOfSamples + int64_t{10} * settings_.decimation);
    plan.log2FftLength = static_cast<int32_t>(std::ceil(std::log(length) / std::log(2.0)));
    plan.fftLength = int64_t{1} << plan.log2FftLength;
    QuietRunsTiming timing;
    int nrOfPulseChannels = 0;
    for (const ChannelRole& role : shape_.roles) nrOfPulseChannels += role.takesPartInPulses ? 1 : 0;
    BlindBeats beats(settings_.method, nrOfPulseChannels);
    FindingsObserver observer(observer_, findings_,
                              static_cast<double>(shape_.nrOfSamples) / shape_.samplingFrequency);
    WholeChannelCorrection(std::move(plan), store_, timing, &beats, observer).run();
  }

  const CorrectionSettings settings_;
  const RecordingShape shape_;
  ChannelStore& store_;
  Observer& observer_;
  const int64_t nrOfOutputs_;
  const int64_t offset_; ///< of the recording in the store: behind what a higher rate needs
  Intake intake_;
  StretchPlan stretches_;
  Findings findings_;
  KeptCorrection kept_; ///< with correctIntoStore
  bool hasLooked_ = false;
};

Correction::Correction(CorrectionSettings settings, RecordingShape shape, ChannelStore& store,
                       Observer& observer) {
  checkSettings(settings, shape);
  run_ = std::make_unique<Run>(std::move(settings), std::move(shape), store, observer);
}

Correction::~Correction() = default;

void Correction::takeIn(int64_t count, std::span<const double> values) {
  run_->takeIn(count, values);
}

const Findings& Correction::find() {
  return run_->find();
}

void Correction::correct(CorrectedSink& sink) {
  run_->correct(sink);
}

std::vector<ValueBounds> Correction::correctIntoStore() {
  return run_->correctIntoStore();
}

void Correction::readCorrected(CorrectedSink& sink) {
  run_->readCorrected(sink);
}

int64_t Correction::nrOfOutputs() const {
  return run_->nrOfOutputs();
}

double Correction::outputRate() const {
  return run_->outputRate();
}

const Findings& Correction::findings() const {
  return run_->findings();
}

int64_t Correction::storeLength(const CorrectionSettings& settings, const RecordingShape& shape) {
  return std::max(outputsOf(settings, shape), shape.nrOfSamples);
}

} // namespace emeg
