#include "artifacts/gradient/timing/choice/TimingChoice.h"

#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "artifacts/gradient/timing/choice/Plausibility.h"
#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int nrOfWitnesses = 3; // channels that are asked for evidence

// What makes one look twice at the first detection.
constexpr double unlikeVolumes = 0.02;
constexpr double unlikeSlices = 0.05;
constexpr double unlikeFar = 0.0003;

constexpr double equalSlices = 0.1;     // samples over a volume: the same
constexpr double nothingInCommon = 0.8; // what is so unlike is no scan
constexpr double littleInCommon =
    0.6;                            // the same, where the timing is given: it may be that of something else
constexpr double clearlyLess = 0.8; // of what the first detection leaves unexplained
constexpr double asGood = 1.25;     // of the same ...
constexpr double hardlyAnything = 0.005; // ... and of the power, which the edges of a scan may make
constexpr double sameDuration = 0.5;     // samples over the whole scan
constexpr double equalDuration = 0.03;   // of the same: what no average notices
constexpr double repeatingSlices = 0.02; // unlike share below which slice-wise templates are not in doubt
constexpr double clearlyMoreDb = 1;

/// Samples by which the one gains on the other from the first to the last volume.
double lengthsDiffer(const ScanSegment& a, const ScanSegment& b) {
  return std::abs(a.volumeDuration - b.volumeDuration) * a.nrOfVolumes;
}

/// The same from a volume's first to its last slice.
double slicesDiffer(const ScanSegment& a, const ScanSegment& b) {
  return std::abs(a.sliceDuration - b.sliceDuration) * a.nrOfSlicesPerVolume;
}

/// Also in being whole.
bool isSameScan(const ScanSegment& a, const ScanSegment& b) {
  return a.nrOfVolumes == b.nrOfVolumes && a.nrOfSlicesPerVolume == b.nrOfSlicesPerVolume &&
         lengthsDiffer(a, b) < sameDuration &&
         std::abs(a.firstVolumeOnset - b.firstVolumeOnset) < a.sliceDuration / 2 && !b.beginsInVolume &&
         !b.endsInVolume;
}

/// The choice for one recording; its members are called in the order of the decision.
class Choice {
public:
  Choice(const MRSequence& found, const TimingRequest& request, const ChannelReader& read, int nrOfChannels,
         double samplingFrequency, const std::function<void(const std::string&)>& log)
      : found_(found), request_(request), read_(read), nrOfChannels_(nrOfChannels), fs_(samplingFrequency),
        log_(log) {}

  TimingChoice make() {
    if (nrOfChannels_ < 1) return {};
    if (request_.markerKind) {
      useMarkers();
    } else if (request_.given.volumeDuration > 0) {
      log_("Looking for volumes of the given duration");
      use(TimingSource::GivenTiming, findScans(request_.given));
    } else {
      chooseDetection();
    }
    if (choice_.source != TimingSource::None && !request_.volumeWise) checkSlices();
    return choice_;
  }

private:
  void useMarkers() {
    log_("Fitting the scanner's markers");
    const bool areVolumes = *request_.markerKind == MarkerKind::Volume;
    use(areVolumes ? TimingSource::VolumeMarkers : TimingSource::SliceMarkers,
        scansFromMarkersInChannels(read_, nrOfChannels_, fs_, request_.markers, *request_.markerKind,
                                   request_.given.nrOfSlicesPerVolume));
  }

  void chooseDetection() {
    const double seconds = static_cast<double>(witness(0).size()) / fs_;
    choice_.doubt = doubtAbout(found_, seconds, fs_);
    const int32_t slices = request_.given.nrOfSlicesPerVolume;
    if (choice_.doubt.empty() && slices > 0 && slices != found_.nrOfSlicesPerVolume)
      choice_.doubt = "another number of slices than was given";
    const bool isPossible = choice_.doubt.empty();
    const ScanSegment first = segmentOf(found_, fs_);
    TimingEvidence evidence;
    if (isPossible) {
      evidence = evidenceOf({first});
      choice_.doubt = doubtFrom(evidence);
      if (choice_.doubt.empty()) return useFirst(first, evidence);
    }

    log_("Looking for scans by the similarity of their volumes");
    const std::vector<ScanSegment> scans = findScans(request_.given);
    if (isPossible && firstStands(first, evidence, scans)) return useFirst(first, evidence);
    use(TimingSource::SimilarVolumes, scans);
  }

  bool firstStands(const ScanSegment& first, const TimingEvidence& evidence,
                   const std::vector<ScanSegment>& scans) {
    if (scans.empty()) return evidence.unlikeVolumes < nothingInCommon;
    if (scans.size() > 1 || !isSameScan(first, scans.front())) return !isBetter(evidenceOf(scans), evidence);
    if (lengthsDiffer(first, scans.front()) < equalDuration &&
        slicesDiffer(first, scans.front()) < equalSlices)
      return true;
    const TimingEvidence other = evidenceOf(scans);
    return other.unlikeFar > clearlyLess * evidence.unlikeFar &&
           other.unlikeStrides > clearlyLess * evidence.unlikeStrides;
  }

  static std::string doubtFrom(const TimingEvidence& evidence) {
    if (evidence.unlikeVolumes > unlikeVolumes) return "volumes that differ from each other";
    if (evidence.unlikeSlices > unlikeSlices) return "slices that differ from each other";
    if (evidence.unlikeFar > unlikeFar) return "volumes that come to differ from each other";
    if (evidence.goesOnOutside) return "a scan that goes on outside its volumes";
    return {};
  }

  static bool isBetter(const TimingEvidence& other, const TimingEvidence& first) {
    if (other.unexplained > asGood * first.unexplained + hardlyAnything) return false;
    return other.unexplained < clearlyLess * first.unexplained ||
           other.unlikeSlices < clearlyLess * first.unlikeSlices ||
           (first.goesOnOutside && !other.goesOnOutside);
  }

  void useFirst(const ScanSegment& first, const TimingEvidence& evidence) {
    choice_.doubt.clear();
    choice_.source = TimingSource::QuietBetweenSlices;
    choice_.scans = {first};
    choice_.evidence = evidence;
  }

  void use(TimingSource source, std::vector<ScanSegment> scans) {
    if (scans.empty()) return;
    choice_.evidence = evidenceOf(scans);
    const double limit = request_.isBlind() ? nothingInCommon : littleInCommon;
    if (choice_.evidence.unlikeVolumes > limit) return;
    choice_.source = source;
    choice_.scans = std::move(scans);
  }

  std::vector<ScanSegment> findScans(const GivenTiming& given) {
    int count = 0;
    const ChannelReader reader = [&](int channel, std::vector<double>& samples) {
      log_("Comparing volumes in channel " + std::to_string(++count));
      read_(channel, samples);
    };
    return detectScansInChannels(reader, nrOfChannels_, fs_, given);
  }

  /// Evidence of a few channels: of each figure the median.
  TimingEvidence evidenceOf(const std::vector<ScanSegment>& scans) {
    std::vector<double> unexplained, volumes, far, slices, strides;
    int goOn = 0;
    for (int i = 0; i < witnesses(); ++i) {
      const std::vector<double>& sharpened = sharpenedWitness(i);
      const TimingEvidence evidence = evidenceFor(sharpened, fs_, scans);
      unexplained.push_back(evidence.unexplained);
      volumes.push_back(evidence.unlikeVolumes);
      far.push_back(evidence.unlikeFar);
      slices.push_back(evidence.unlikeSlices);
      strides.push_back(evidence.unlikeStrides);
      goOn += evidence.goesOnOutside ? 1 : 0;
    }
    return {upperMedian(unexplained), upperMedian(volumes), upperMedian(far),
            upperMedian(slices),      upperMedian(strides), 2 * goOn > witnesses()};
  }

  /// Both ways of averaging, tried on a few channels.
  void checkSlices() {
    if (choice_.evidence.unlikeStrides < repeatingSlices) return;
    log_("Comparing slice-wise with volume-wise averaging");
    std::vector<double> differences;
    differences.reserve(static_cast<size_t>(witnesses()));
    for (int i = 0; i < witnesses(); ++i)
      differences.push_back(leftBy(false, witness(i)) - leftBy(true, witness(i)));
    choice_.slicesLeaveDb = upperMedian(differences);
    choice_.slicesDoNotRepeat = choice_.slicesLeaveDb > clearlyMoreDb;
  }

  /// Power (dB) that is left within the scans, sharpened.
  double leftBy(bool volumeWise, const std::vector<double>& channel) const {
    std::vector<double> estimate(channel.size(), 0.0);
    SegmentRemoval(choice_.scans, fs_, volumeWise, request_.windowSlices).estimate(channel, estimate);
    for (size_t t = 0; t < estimate.size(); ++t) estimate[t] = channel[t] - estimate[t];
    const std::vector<double> left = sharpenedSignal(estimate, fs_);
    double power = 0;
    for (const ScanSegment& scan : choice_.scans) {
      const auto n = static_cast<double>(left.size());
      const auto begin = static_cast<size_t>(std::clamp(scan.begin, 0.0, n));
      const auto end = static_cast<size_t>(std::clamp(scan.end, 0.0, n));
      for (size_t t = begin; t < end; ++t) power += left[t] * left[t];
    }
    constexpr double smallest = 1e-30;
    return 10 * std::log10(std::max(power, smallest));
  }

  int witnesses() const { return std::min(nrOfWitnesses, nrOfChannels_); }

  const std::vector<double>& witness(int index) {
    if (index != witnessIndex_) {
      read_(static_cast<int>((2 * int64_t{index} + 1) * nrOfChannels_ / (2 * int64_t{witnesses()})),
            witness_);
      witnessIndex_ = index;
    }
    return witness_;
  }

  const std::vector<double>& sharpenedWitness(int index) {
    sharpened_ = sharpenedSignal(witness(index), fs_);
    blankSpikes(sharpened_, levelOfBursts(sharpened_, fs_), fs_);
    return sharpened_;
  }

  const MRSequence& found_;
  const TimingRequest& request_;
  const ChannelReader& read_;
  int nrOfChannels_;
  double fs_;
  const std::function<void(const std::string&)>& log_;
  TimingChoice choice_;
  int witnessIndex_ = -1;
  std::vector<double> witness_, sharpened_; ///< one at a time: channels are long
};

} // namespace

std::string nameOf(TimingSource source) {
  switch (source) {
  case TimingSource::QuietBetweenSlices:
    return "quiet between slices";
  case TimingSource::SimilarVolumes:
    return "similar volumes";
  case TimingSource::VolumeMarkers:
    return "volume markers";
  case TimingSource::SliceMarkers:
    return "slice markers";
  case TimingSource::GivenTiming:
    return "given timing";
  case TimingSource::None:
    break;
  }
  return "none";
}

TimingChoice chooseTiming(const MRSequence& found, const TimingRequest& request, const ChannelReader& read,
                          int nrOfChannels, double samplingFrequency,
                          const std::function<void(const std::string&)>& log) {
  return Choice(found, request, read, nrOfChannels, samplingFrequency, log).make();
}

} // namespace emeg
