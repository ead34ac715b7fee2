#pragma once

#include "artifacts/gradient/ScanSegment.h"

#include <span>
#include <vector>

namespace emeg {

/// How well a scan describes a stretch of which it covers a share (0 to 1): the power that its average volume
/// explains. That something tells a count is worth a little more.
double scoreOf(const ScanSegment& scan, double covered);

/// Nothing can describe the stretch much better.
bool isSettled(const ScanSegment& scan, double score);

/// Whether a scan, found with a period that is tried later, describes a stretch better than the best so far.
/// A longer volume that explains no more than a shorter one is several of these.
bool isBetter(const ScanSegment& scan, double score, const ScanSegment& best, double bestScore);

/// Scores of scans that share a stretch of the (sharpened) signal, by the power that each one covers.
double scoreOf(const std::vector<ScanSegment>& scans, std::span<const double> sharpened);

/// Whether scans found across quiet describe a stretch better than those found on either side of it. Scans
/// that fit into one volume of a larger one are its parts, unless they have volumes of their own and explain
/// as much. Where both explain as much, the fewer stand.
bool areBetter(const std::vector<ScanSegment>& across, const std::vector<ScanSegment>& apart,
               std::span<const double> sharpened);

} // namespace emeg
