#include "engine/timing/TimingStrategy.h"

namespace emeg {

std::optional<MRSequence> QuietRunsTiming::find(const TimingQuestion& question, Observer& observer) {
  const MRSequence sequence =
      detectMRSequence(question.channel, question.samplingFrequency, question.log2FftLength,
                       question.workspace, [&observer](const std::string& line) { observer.detail(line); });
  if (sequence.sliceDuration == 0) return std::nullopt;
  return sequence;
}

} // namespace emeg
