#pragma once

#include "engine/CorrectionSettings.h"
#include "engine/Findings.h"

#include <vector>

namespace emeg {

/// What speaks against the heart beats of a correction, or against the removal of their artifact.
enum class BeatDoubtKind {
  TooFewBeats,    ///< measured: how many; their artifact was not removed
  FewBeats,       ///< measured: how many; too few for a good model of their artifact
  BeatListIsFull, ///< there are more than a heart can make

  // Of beats that were searched for in the EEG.
  AtLimitOfSearch,           ///< measured: beats per minute
  PeriodOfOneStretch,        ///< measured: beats per minute; expected: what most of the recording shows
  IntervalsContradictPeriod, ///< measured: intervals per minute; expected: what the period makes
  OffIntervals,              ///< measured: share of the intervals; where: the first begins
  LittleInCommon,            ///< measured: share of the energy around the beats that they have in common
  UnlikeBeats,               ///< measured: share of the beats

  // Of beats that are known from markers or an electrocardiogram.
  ManyGuessed,     ///< measured: how many stand in gaps; expected: number of all beats
  GuessedStretch,  ///< where
  ManyRefused,     ///< measured: how many came too close to be beats
  NothingInCommon, ///< measured: share of the energy around the beats that they have in common

  NotCovered ///< where: the chain of beats leaves it out
};

/// A doubt with its numbers; those that its kind does not name are 0.
struct BeatDoubt {
  BeatDoubtKind kind = BeatDoubtKind::TooFewBeats;
  double measured = 0;
  double expected = 0;
  Stretch where;
};

/// All doubts about the beats of `found`, in the order of their kinds; empty when nothing speaks against
/// them. Healthy hearts stay far from the thresholds: docs/heart-beats.md has the measurements.
std::vector<BeatDoubt> doubtsAboutBeats(const Findings& found, BeatSource source);

/// Stretches of the corrected interval in which several known beats were missing, one after the other, and
/// their places were guessed.
std::vector<Stretch> guessedStretches(const Findings& found);

} // namespace emeg
