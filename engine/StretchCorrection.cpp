#include "engine/StretchCorrection.h"

#include "engine/stages/StageList.h"
#include "engine/store/CorrectedInStore.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t largestBlock = int64_t{3} << 22; // values of all channels together: 48 MB
constexpr double longestStretch = 120;             // seconds

/// Has no part in a correction stretch by stretch, where the timing is known before.
class NoTiming : public TimingStrategy {
public:
  std::optional<MRSequence> find(const TimingQuestion&, Observer&) override { return std::nullopt; }
};

} // namespace

StretchCorrection::StretchCorrection(const RunPlan& plan, const StretchPlan& stretchPlan, ChannelStore& store,
                                     int64_t offset, GradientMeter* meter, Observer& observer)
    : plan_(plan), stretchPlan_(stretchPlan), store_(store), offset_(offset), meter_(meter),
      observer_(observer), state_{stretchPlan,
                                  SegmentRemoval(stretchPlan.scans, stretchPlan.samplingFrequency,
                                                 stretchPlan.volumeWise, stretchPlan.windowSlices),
                                  {},
                                  {},
                                  {},
                                  {},
                                  {},
                                  {},
                                  {}} {
  outputRate_ = plan.outputRate;
  int pulseChannels = 0;
  for (const ChannelRole& role : plan.roles)
    pulseNumber_.push_back(
        plan.correctBCG && role.takesPartInPulses && !role.passesUnchanged ? pulseChannels++ : -1);
}

int64_t StretchCorrection::longestFor(double samplingFrequency, size_t nrOfChannels) {
  return std::min(largestBlock / static_cast<int64_t>(nrOfChannels),
                  static_cast<int64_t>(std::ceil(longestStretch * samplingFrequency)));
}

/// Not shorter than what its stages need around it: what is put in place of one stretch is not needed any
/// more by the next but one. In whole blocks of the filter in front of the templates.
int64_t StretchCorrection::stretchLength() const {
  const int64_t n = stretchPlan_.recordingLength;
  const int64_t middle = n / 2;
  const PositionRange one = stretchPlan_.resampler
                                ? stretchPlan_.resampler->outputsIn({middle, std::min(middle + 1, n)}, n)
                                : PositionRange{middle, std::min(middle + 1, n)};
  const int64_t context = rangesFor(stretchPlan_, one, !stretchPlan_.scans.empty()).input.length();
  const int64_t length = std::max(longestFor(plan_.samplingFrequency, plan_.roles.size()), context + 1);
  const int64_t block = stretchPlan_.scans.empty() ? 1 : stretchPlan_.split.blockLength();
  return (length + block - 1) / block * block;
}

/// `emit` gets the number of time points of the block that is complete.
template <typename Emit>
void StretchCorrection::runStretches(const Emit& emit) {
  const int64_t n = stretchPlan_.recordingLength;
  const int64_t length = stretchLength();
  observer_.stepBegins(Step::Correcting, -1);
  for (int64_t begin = 0; begin < n; begin += length) {
    // What would be left at the end is no stretch of its own.
    const int64_t end = n - begin < length + length / 4 ? n : begin + length;
    emit(correctStretch({begin, end}));
    if (end == n) break;
  }
}

void StretchCorrection::run(CorrectedSink& sink) {
  runStretches([&](size_t) { sendBlock(block_, plan_.roles.size(), sink); });
}

/// A block is written when the next one is complete: until then the stages may still need what it replaces.
KeptCorrection StretchCorrection::runIntoStore() {
  ChannelBounds bounds(plan_.roles.size());
  KeptCorrection kept;
  int64_t written = 0;
  const auto writeKept = [&] {
    const auto count = static_cast<size_t>(kept.lastCount);
    for (size_t c = 0; c < plan_.roles.size() && count > 0; ++c)
      store_.write(static_cast<int>(c), written,
                   std::span<const float>(kept.lastStretch).subspan(c * count, count));
    written += kept.lastCount;
  };
  runStretches([&](size_t count) {
    writeKept();
    bounds.add(count, std::span<const float>(block_));
    kept.lastStretch.swap(block_);
    kept.lastCount = static_cast<int64_t>(count);
  });
  kept.bounds = bounds.all();
  return kept;
}

/// Returns the number of time points that the block holds.
size_t StretchCorrection::correctStretch(PositionRange stretch) {
  const int64_t n = stretchPlan_.recordingLength;
  const PositionRange outputs =
      stretchPlan_.resampler ? stretchPlan_.resampler->outputsIn(stretch, n) : stretch;
  const auto count = static_cast<size_t>(outputs.length());
  block_.resize(count * plan_.roles.size());
  work_.referenceOfStretch.assign(plan_.useAverageReference ? count : 0, 0.0);
  int number = 0;
  for (int channel = 0; channel < static_cast<int>(plan_.roles.size()); ++channel) {
    const double done =
        (static_cast<double>(stretch.begin) +
         static_cast<double>(stretch.length()) * channel / static_cast<double>(plan_.roles.size())) /
        static_cast<double>(n);
    observer_.progress(done);
    if (plan_.roleOf(channel).passesUnchanged) {
      passUnchanged(channel, outputs);
      continue;
    }
    state_.ranges = rangesFor(stretchPlan_, outputs, !stretchPlan_.scans.empty());
    load(channel);
    measureBefore(number++, stretch);
    correctChannel(channel, outputs);
  }
  if (plan_.useAverageReference) subtractReference(count);
  measureAfter(count);
  return count;
}

void StretchCorrection::measureAfter(size_t count) {
  int number = 0;
  for (size_t c = 0; meter_ != nullptr && c < plan_.roles.size(); ++c) {
    if (plan_.roles[c].passesUnchanged) continue;
    const std::span<const float> samples = std::span<const float>(block_).subspan(c * count, count);
    constexpr size_t longest = size_t{1} << 15;
    for (size_t done = 0; done < count; done += longest) {
      const auto part = samples.subspan(done, std::min(longest, count - done));
      values_.assign(part.begin(), part.end());
      meter_->addAfter(number, values_, figureWork_);
    }
    ++number;
  }
}

/// Also what lies between the outputs' input and the stretch itself, for the figures.
void StretchCorrection::load(int channel) {
  const PositionRange range = state_.ranges.input;
  state_.asStored.resize(static_cast<size_t>(range.length()));
  store_.read(channel, offset_ + range.begin, state_.asStored);
  state_.samples.assign(state_.asStored.begin(), state_.asStored.end());
  state_.held = range;
}

void StretchCorrection::measureBefore(int number, PositionRange stretch) {
  if (meter_ != nullptr) meter_->addBefore(number, state_.at(stretch), figureWork_);
}

void StretchCorrection::correctChannel(int channel, PositionRange outputs) {
  NoTiming noTiming;
  StageRun run{plan_, shared_, work_, observer_, noTiming};
  run.channel = channel;
  run.pulseChannel = pulseNumber_[static_cast<size_t>(channel)];
  run.stretch = &state_;
  applyStages(Pass::BeforeBeats, run);
  applyStages(Pass::BehindBeats, run);
  std::transform(state_.output.begin(), state_.output.end(),
                 block_.begin() + static_cast<std::ptrdiff_t>(channel * outputs.length()),
                 [](double value) { return static_cast<float>(value); });
}

/// The sample that is nearest in time.
void StretchCorrection::passUnchanged(int channel, PositionRange outputs) {
  const double ratio = plan_.samplingFrequency / outputRate_;
  const int64_t last = stretchPlan_.recordingLength - 1;
  const auto inputOf = [&](int64_t output) {
    return std::min(static_cast<int64_t>(std::floor(static_cast<double>(output) * ratio + 0.5)), last);
  };
  if (outputs.length() == 0) return;
  const int64_t first = inputOf(outputs.begin);
  state_.asStored.resize(static_cast<size_t>(inputOf(outputs.end - 1) - first + 1));
  store_.read(channel, offset_ + first, state_.asStored);
  float* const values = block_.data() + channel * outputs.length();
  for (int64_t k = 0; k < outputs.length(); ++k)
    values[k] = state_.asStored[static_cast<size_t>(inputOf(outputs.begin + k) - first)];
}

void StretchCorrection::subtractReference(size_t count) {
  for (size_t c = 0; c < plan_.roles.size(); ++c) {
    if (!plan_.roles[c].takesPartInReference || plan_.roles[c].passesUnchanged) continue;
    float* const values = block_.data() + c * count;
    for (size_t i = 0; i < count; ++i)
      values[i] = static_cast<float>(static_cast<double>(values[i]) - work_.referenceOfStretch[i]);
  }
}

} // namespace emeg
