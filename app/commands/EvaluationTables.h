#pragma once

#include "app/evaluation/BeatMatching.h"
#include "app/evaluation/DetectedSequence.h"
#include "app/evaluation/ExplainedArtifact.h"
#include "app/evaluation/Residual.h"
#include "app/evaluation/SimulatedTruth.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace emeg {

/// How far a heart pulse may lie from its beat plus the recording's delay (seconds).
constexpr double beatTolerance = 0.1;

/// Everything that `emeg evaluate` measured.
struct Evaluation {
  SimulatedTruth truth;
  bool hasTranscript = false;
  std::optional<MRSequence> foundSequence; ///< from the transcript

  std::vector<ChannelResidual> residuals; ///< of the gradient artifact; empty without a scan

  std::string triggerFile;                        ///< where the heart pulses were looked for
  std::optional<std::vector<double>> heartPulses; ///< seconds; nothing: not in the trigger file
  std::optional<BeatAgreement> beats;             ///< from two heart pulses on
  std::vector<ChannelExplained>
      explained; ///< between the first and the last pulse, or of the whole recording
                 ///< when the beats cannot be judged; empty without a heart
};

/// Tables for people, each with a sentence that sums it up.
void printEvaluation(std::ostream& out, const Evaluation& evaluation);

/// The same as JSON text; times in seconds, voltages in microvolts, null where there is nothing to measure.
std::string evaluationJson(const Evaluation& evaluation);

} // namespace emeg
