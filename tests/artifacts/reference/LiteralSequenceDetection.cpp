#include "tests/artifacts/reference/LiteralSequenceDetection.h"

#include "artifacts/CubicSplines.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/FrequencyFilter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace emeg {

namespace {

std::string number(int64_t value) {
  return std::to_string(value);
}

std::string number(double value, int decimals) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
  return text.data();
}

int64_t floorOf(double x) {
  return static_cast<int64_t>(std::floor(x));
}

} // namespace

LiteralSpline literalSpline(const std::vector<double>& signal) {
  LiteralSpline spline;
  spline.y = signal;
  spline.b.assign(signal.size(), 0.0);
  spline.c.assign(signal.size(), 0.0);
  spline.d.assign(signal.size(), 0.0);
  computeSplineCoefficients(spline.y.data(), spline.b.data(), spline.c.data(), spline.d.data(),
                            static_cast<int64_t>(signal.size()));
  return spline;
}

double literalSplineValue(const LiteralSpline& spline, int64_t k, double f) {
  if (k < 0 || k >= static_cast<int64_t>(spline.y.size())) return 0.0;
  const std::size_t i = static_cast<std::size_t>(k);
  return ((spline.d[i] * f + spline.c[i]) * f + spline.b[i]) * f + spline.y[i];
}

double literalSplineDerivative(const LiteralSpline& spline, int64_t k, double f) {
  if (k < 0 || k >= static_cast<int64_t>(spline.y.size())) return 0.0;
  const std::size_t i = static_cast<std::size_t>(k);
  return (3.0 * f * spline.d[i] + 2.0 * spline.c[i]) * f + spline.b[i];
}

std::vector<double> literalEnvelope(const std::vector<double>& channelSignal, double samplingFrequency,
                                    int32_t log2FftLength) {
  const std::size_t n = channelSignal.size();
  std::vector<double> work(std::size_t{1} << log2FftLength, 0.0);
  for (std::size_t i = 0; i < n; ++i) work[i] = channelSignal[i];

  FFTWorkspace workspace;
  FilterStageList stages;
  stages.addFilterStage(EdgeKind::HighPass, 200.0 / samplingFrequency, 5.0);
  filterSignalFFT(work.data(), static_cast<int64_t>(n), makeFilterResponse(stages, log2FftLength), workspace);
  for (std::size_t i = 0; i < n; ++i) work[i] = std::fabs(work[i]);
  stages.clear();
  stages.addFilterStage(EdgeKind::LowPass, 200.0 / samplingFrequency, 5.0);
  filterSignalFFT(work.data(), static_cast<int64_t>(n), makeFilterResponse(stages, log2FftLength), workspace);

  work.resize(n);
  return work;
}

std::optional<double> literalThreshold(const std::vector<double>& envelope) {
  double m = 0.0;
  for (const double w : envelope) m = std::max(m, std::fabs(w));
  if (!(m > 0.0) || !std::isfinite(m)) return std::nullopt;

  std::vector<double> histogram(10001, 0.0);
  for (const double w : envelope) {
    const double bin = std::floor(std::fabs(w) * 10000.0 / m);
    histogram[bin < 10000.0 ? static_cast<std::size_t>(bin) : 10000] += 1.0;
  }

  const double q = std::floor(0.9 * static_cast<double>(envelope.size()));
  double c = 0.0;
  double h = 0.0;
  double k = -1.0;
  while (c < q) {
    k += 1.0;
    h = histogram[static_cast<std::size_t>(k)];
    c += h;
  }
  if (k < 0.0) return std::nullopt;
  const double p90 = ((q - c + h) / h + k - 1.0) / (10000.0 / m);

  double sum = 0.0;
  double count = 0.0;
  for (const double w : envelope) {
    if (w > p90) {
      sum += w;
      count += 1.0;
    }
  }
  if (count < 1.0) return std::nullopt;
  return 0.5 * (sum / count);
}

std::vector<LiteralRun> literalQuietRuns(const std::vector<double>& envelope, double threshold,
                                         int64_t minimalLength) {
  std::vector<LiteralRun> runs;
  const int64_t n = static_cast<int64_t>(envelope.size());
  const auto isQuiet = [&](int64_t i) {
    const double w = envelope[static_cast<std::size_t>(i)];
    return -threshold <= w && w <= threshold;
  };
  int64_t i = 0;
  while (true) {
    while (i < n && !isQuiet(i)) ++i;
    if (i >= n) break;
    const int64_t start = i;
    while (i < n && isQuiet(i)) ++i;
    if (i - start > minimalLength) runs.push_back({start, i - start});
  }
  return runs;
}

std::vector<LiteralLengthClass> literalLengthClasses(const std::vector<LiteralRun>& runs) {
  std::vector<LiteralLengthClass> classes;
  for (const LiteralRun& run : runs) {
    const double len = static_cast<double>(run.length);
    std::size_t k = 0;
    while (k < classes.size()) {
      const double l = static_cast<double>(classes[k].length);
      if (len <= 1.4 * l && l <= 1.4 * len) break;
      ++k;
    }
    if (k == classes.size()) classes.push_back({run.length, 0});
    classes[k].count += 1;
    while (k > 0 && classes[k - 1].count < classes[k].count) {
      std::swap(classes[k - 1], classes[k]);
      --k;
    }
  }
  return classes;
}

std::optional<std::size_t> literalGapClass(const std::vector<LiteralLengthClass>& classes) {
  for (std::size_t k = 1; k < classes.size(); ++k) {
    if (classes[k].length >= classes[0].length && classes[0].count <= 100 * (classes[k].count + 1) &&
        static_cast<double>(classes[1].count + 1) * 1.5 < static_cast<double>(classes[0].count)) {
      return k;
    }
  }
  return std::nullopt;
}

LiteralBand literalBand(int64_t length) {
  const double l = static_cast<double>(length);
  return {floorOf(l / 1.4), static_cast<int64_t>(std::ceil(l * 1.4))};
}

bool LiteralRunList::fits(int64_t index, const LiteralBand& band) const {
  if (index < 0 || index >= count()) return false;
  const int64_t length = runs[static_cast<std::size_t>(index)].length;
  return band.shortest <= length && length <= band.longest;
}

int64_t LiteralRunList::end(int64_t index) const {
  if (index < 0) return 0;
  if (index >= count()) return nrOfTimePoints;
  const LiteralRun& run = runs[static_cast<std::size_t>(index)];
  return run.start + run.length;
}

double literalSplineMismatch(const LiteralSpline& spline, int64_t start, double position, int64_t length) {
  const int64_t n = static_cast<int64_t>(spline.y.size());
  const int64_t k = floorOf(position);
  const double f = position - std::floor(position);
  double sum = 0.0;
  for (int64_t j = 0; j < length; ++j) {
    if (start + j < 0 || start + j >= n || k + j < 0 || k + j >= n) continue;
    const double difference =
        spline.y[static_cast<std::size_t>(start + j)] - literalSplineValue(spline, k + j, f);
    sum += difference * difference;
  }
  return sum / static_cast<double>(length);
}

double literalBurstDelay(const LiteralSpline& spline, const LiteralRunList& list, int64_t a, int64_t b,
                         int32_t alignHalfWidth) {
  const double width = static_cast<double>(alignHalfWidth);
  const int64_t ea = list.end(a);
  const int64_t ea1 = list.end(a + 1);
  const int64_t eb = list.end(b);
  int64_t eb1 = list.end(b + 1);
  if (eb1 + alignHalfWidth > list.nrOfTimePoints) eb1 = list.nrOfTimePoints - alignHalfWidth;
  const int64_t length = std::min(ea1 - ea, eb1 - eb);
  const double onset = static_cast<double>(eb);
  if (length < 1) return onset - static_cast<double>(ea);

  double s = 0.2 * width;
  double delta = -width;
  double best = literalSplineMismatch(spline, ea, onset + delta, length);
  for (double trial = -width + s; trial <= width; trial += s) {
    const double cost = literalSplineMismatch(spline, ea, onset + trial, length);
    if (cost < best) {
      best = cost;
      delta = trial;
    }
  }

  while (true) {
    s = s / 2.0;
    if (s <= width * 1e-6) break;
    const double before = literalSplineMismatch(spline, ea, onset + delta - s, length);
    const double behind = literalSplineMismatch(spline, ea, onset + delta + s, length);
    if (before < best && before < behind) {
      best = before;
      delta = delta - s;
    } else if (behind < best && behind < before) {
      best = behind;
      delta = delta + s;
    }
  }
  return onset + delta - static_cast<double>(ea);
}

namespace {

// One detection on its way: the recording, its quiet runs and what has been found so far.
struct Search {
  double fs = 0;
  int32_t alignHalfWidth = 0;
  LiteralSpline spline;
  LiteralRunList list;
  LiteralBand sliceBand;
  LiteralBand gapBand;
  int64_t first = 0;      // i0
  int64_t lastUsable = 0; // c
  int64_t volumes = 0;
  int64_t slices = 0; // per volume

  double delay(int64_t a, int64_t b) const { return literalBurstDelay(spline, list, a, b, alignHalfWidth); }
};

void findFirstAndLastRun(Search& search, bool volumeGaps) {
  const LiteralRunList& list = search.list;
  const LiteralBand& leading = volumeGaps ? search.gapBand : search.sliceBand;
  int64_t i = 0;
  while (i < list.count() - 2 && !(list.fits(i, leading) && list.fits(i + 1, search.sliceBand) &&
                                   list.fits(i + 2, search.sliceBand))) {
    ++i;
  }
  search.first = i < list.count() - 2 ? i : list.count() - 2;

  int64_t c = list.count();
  while (c >= 2 && !(list.fits(c, leading) && list.fits(c - 1, search.sliceBand) &&
                     list.fits(c - 2, search.sliceBand))) {
    --c;
  }
  search.lastUsable = c;
}

void countWithGaps(Search& search) {
  const LiteralRunList& list = search.list;
  int64_t volumes = 0;
  int64_t sliceRuns = 0;
  for (int64_t i = search.first; i <= search.lastUsable - 1; ++i) {
    if (list.fits(i, search.gapBand)) ++volumes;
    if (list.fits(i, search.sliceBand)) ++sliceRuns;
  }
  if (volumes == 0) return;
  const int64_t spv = floorOf(static_cast<double>(sliceRuns) / static_cast<double>(volumes) + 0.5) + 1;
  if (search.first - spv >= 0 && list.fits(search.first - spv + 1, search.sliceBand) &&
      list.fits(search.first - spv + 2, search.sliceBand)) {
    ++volumes;
    search.first -= spv;
  }
  if (spv + search.lastUsable < list.count() && list.fits(spv + search.lastUsable - 1, search.sliceBand) &&
      list.fits(spv + search.lastUsable - 2, search.sliceBand)) {
    ++volumes;
  }
  search.volumes = volumes;
  search.slices = spv;
}

void countContinuous(Search& search, std::vector<std::string>& log) {
  const LiteralRunList& list = search.list;
  struct Interval {
    int64_t run;
    double duration;
  };
  std::vector<Interval> intervals;
  for (int64_t j = 0; j < 200; ++j) {
    const int64_t run = search.first + j;
    // A delay exists where a burst follows both runs.
    if (run < 0 || run + 1 >= list.count() || list.end(run + 1) >= list.nrOfTimePoints) break;
    const Interval interval{run, search.delay(run, run + 1) / search.fs};
    std::size_t place = intervals.size();
    while (place > 0 && intervals[place - 1].duration > interval.duration) --place;
    intervals.insert(intervals.begin() + static_cast<std::ptrdiff_t>(place), interval);
  }
  const int64_t count = static_cast<int64_t>(intervals.size());
  if (count < 2) return;

  std::size_t jump = 0; // j*
  for (std::size_t j = 1; j + 1 < intervals.size(); ++j) {
    if (intervals[j + 1].duration - intervals[j].duration >
        intervals[jump + 1].duration - intervals[jump].duration) {
      jump = j;
    }
  }
  const double threshold = (intervals[jump].duration + intervals[jump + 1].duration) / 2.0;
  for (const Interval& interval : intervals) {
    if (interval.duration > threshold) {
      log.push_back(number(interval.run) + " / " + number(interval.duration, 10) + " / " +
                    number(threshold, 10));
    }
  }

  int64_t lo = intervals[jump + 1].run;
  int64_t hi = lo;
  for (std::size_t j = jump + 1; j < intervals.size(); ++j) {
    lo = std::min(lo, intervals[j].run);
    hi = std::max(hi, intervals[j].run);
  }
  const int64_t divisor = count - 2 - static_cast<int64_t>(jump); // 198 - j* of 200 delays
  if (divisor < 1) return;
  const int64_t spv = floorOf(static_cast<double>(hi - lo) / static_cast<double>(divisor) + 0.5);
  if (spv < 1) return;
  int64_t first = lo - spv + 2;
  if (first < 0) first += spv;
  search.slices = spv;
  search.first = first;
  search.volumes = std::max<int64_t>(
      floorOf(static_cast<double>(search.lastUsable - first + 2) / static_cast<double>(spv)), 0);
}

double volumeDurationOf(const Search& search, bool volumeGaps) {
  double sum = 0.0;
  for (int64_t s = 0; s < search.slices; ++s) {
    const int64_t i = search.first + s;
    if (volumeGaps) {
      sum += search.delay(i, i + (search.volumes - 1) * search.slices) / search.fs /
             static_cast<double>(search.volumes - 1);
    } else if (search.volumes == 3) {
      sum += search.delay(i, i + search.slices) / search.fs;
    } else {
      sum += search.delay(search.slices + i, (search.volumes - 2) * search.slices + i) / search.fs /
             static_cast<double>(search.volumes - 3);
    }
  }
  return sum / static_cast<double>(search.slices);
}

double sliceDurationOf(const Search& search) {
  double sum = 0.0;
  for (int64_t v = 0; v < search.volumes; ++v) {
    sum += search.delay(search.slices * v + search.first + 1, search.slices * (v + 1) + search.first - 2) /
           search.fs / static_cast<double>(search.slices - 3);
  }
  return sum / static_cast<double>(search.volumes);
}

double firstTriggerTimeWithGaps(const Search& search, const LiteralTiming& timing) {
  const double fs = search.fs;
  const double block = static_cast<double>(timing.nrOfSlicesPerVolume) * timing.sliceDuration;
  const double gap = timing.volumeDuration - block;
  const double start = static_cast<double>(search.list.end(search.first));
  const double gapLength = std::floor(gap * fs + 0.5); // G
  const double x0 = start + block * fs + 0.3 * gapLength;
  const double profileLength = std::ceil(0.7 * gapLength); // P
  if (!(profileLength >= 1.0)) return start / fs;

  const int64_t nrOfPositions = std::min(static_cast<int64_t>(profileLength), search.list.nrOfTimePoints);
  std::vector<double> gapProfile(static_cast<std::size_t>(nrOfPositions), 0.0);
  for (int32_t v = 0; v <= timing.nrOfVolumes - 2; ++v) {
    const double x = static_cast<double>(v) * timing.volumeDuration * fs + x0;
    const double f = x - std::floor(x);
    for (int64_t t = 0; t < nrOfPositions; ++t) {
      gapProfile[static_cast<std::size_t>(t)] += literalSplineDerivative(search.spline, floorOf(x) + t, f);
    }
  }
  double largest = 0.0; // M
  for (int64_t t = 0; t < nrOfPositions / 2; ++t) {
    largest = std::max(largest, std::fabs(gapProfile[static_cast<std::size_t>(t)]));
  }
  int64_t t0 = nrOfPositions / 2;
  if (t0 <= 1) t0 = 1;
  while (t0 < nrOfPositions && std::fabs(gapProfile[static_cast<std::size_t>(t0)]) < 3.0 * largest) ++t0;
  return (static_cast<double>(t0) + x0) / fs - timing.volumeDuration;
}

bool isDuration(double seconds) {
  return std::isfinite(seconds) && seconds > 0.0;
}

} // namespace

LiteralDetection literalDetectMRSequence(const std::vector<double>& channelSignal, double samplingFrequency,
                                         int32_t log2FftLength) {
  LiteralDetection result;
  result.log.push_back("Automatic detection of MR sequence parameters");

  Search search;
  search.fs = samplingFrequency;
  search.list.nrOfTimePoints = static_cast<int64_t>(channelSignal.size());
  search.spline = literalSpline(channelSignal);
  search.alignHalfWidth = static_cast<int32_t>(std::floor(0.01 * samplingFrequency));

  if (!channelSignal.empty()) {
    const std::vector<double> envelope = literalEnvelope(channelSignal, samplingFrequency, log2FftLength);
    const std::optional<double> threshold = literalThreshold(envelope);
    if (threshold) search.list.runs = literalQuietRuns(envelope, *threshold, search.alignHalfWidth);
  }

  const std::vector<LiteralLengthClass> classes = literalLengthClasses(search.list.runs);
  const std::optional<std::size_t> gapClass = literalGapClass(classes);
  result.volumeGaps = gapClass.has_value();
  if (gapClass) {
    search.gapBand = literalBand(classes[*gapClass].length);
  } else {
    result.log.push_back("No volumes gaps in this data set (continuous acquisition)");
  }
  if (!classes.empty()) search.sliceBand = literalBand(classes[0].length);

  findFirstAndLastRun(search, result.volumeGaps);
  search.alignHalfWidth = std::max(search.alignHalfWidth / 10, 1);
  if (result.volumeGaps) {
    countWithGaps(search);
  } else {
    countContinuous(search, result.log);
  }

  result.firstSlice = std::max<int64_t>(search.first, 0);
  result.log.push_back("Number of volumes: " + number(search.volumes));
  result.log.push_back("Number of slices per volume: " + number(search.slices));
  result.log.push_back("First slice: " + number(result.firstSlice));
  if (search.volumes < 1 || search.slices < 1) return result;

  LiteralTiming timing;
  timing.nrOfVolumes = static_cast<int32_t>(search.volumes);
  timing.nrOfSlicesPerVolume = static_cast<int32_t>(search.slices);
  timing.sliceDuration = sliceDurationOf(search);
  timing.volumeDuration = search.volumes >= 2 ? volumeDurationOf(search, result.volumeGaps)
                                              : static_cast<double>(search.slices) * timing.sliceDuration;
  if (!isDuration(timing.sliceDuration) || !isDuration(timing.volumeDuration)) return result;

  if (search.volumes >= 2) {
    result.log.push_back("Volume duration (s): " + number(timing.volumeDuration, 14));
  }
  result.log.push_back("Slice duration (s): " + number(timing.sliceDuration, 14));
  if (result.volumeGaps) {
    timing.firstTriggerTime = firstTriggerTimeWithGaps(search, timing);
    result.log.push_back("First trigger time (s): " + number(timing.firstTriggerTime, 6));
  } else {
    timing.firstTriggerTime =
        static_cast<double>(search.list.end(search.first)) / samplingFrequency - timing.sliceDuration;
    result.log.push_back("First trigger time: " + number(timing.firstTriggerTime, 6));
  }
  static_cast<LiteralTiming&>(result) = timing;
  result.found = true;
  return result;
}

int32_t literalWindowHalfLength(int32_t answerInSlices, const LiteralTiming& timing) {
  const double rate = static_cast<double>(timing.nrOfSlicesPerVolume) / timing.volumeDuration;
  return static_cast<int32_t>(std::ceil(static_cast<double>(answerInSlices) / rate));
}

int32_t literalLog2Length(std::size_t n) {
  int32_t k = 4;
  while ((std::size_t{1} << k) < n) ++k;
  return k;
}

} // namespace emeg
