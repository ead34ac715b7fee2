#include "engine/figures/ChannelQuality.h"

#include <algorithm>

namespace emeg {

namespace {

constexpr double visibleRatio = 3;          // of power at lines to power beside them
constexpr double scanLineToBackground = 10; // of a scan
constexpr double nearlyTheBest = 0.9;       // of the best channel's share

bool isAlive(const ChannelQuality& channel) {
  return channel.medianImagingArtifactBefore > 0;
}

/// Share of the power at the multiples of the slice frequency that is the scan's, 0 ... 1. Of many lines the
/// median, so that the mains do not pass for one.
double shareOfScan(const ChannelQuality& channel) {
  const double ratio = channel.before.medianSliceToBackground;
  return ratio > 1 ? 1 - 1 / ratio : 0;
}

} // namespace

double ChannelQuality::artifactBefore() const {
  return std::max(before.artifact(), peaksBefore.rms);
}

double ChannelQuality::artifactAfter() const {
  return std::max(after.artifact(), peaksAfter.rms);
}

double ChannelQuality::remaining() const {
  return artifactBefore() > 0 ? artifactAfter() / artifactBefore() : 0;
}

bool ChannelQuality::isVisible() const {
  return after.lineToBackground > visibleRatio || peaksAfter.toBackground > visibleRatio;
}

bool looksLikeScan(TimingSource source, const QualityFigures* figures) {
  if (source == TimingSource::None) return false;
  if (source != TimingSource::QuietBetweenSlices || figures == nullptr) return true;
  return std::any_of(figures->channels.begin(), figures->channels.end(), [](const ChannelQuality& channel) {
    return channel.before.medianSliceToBackground > scanLineToBackground;
  });
}

std::vector<size_t> witnessesOf(const std::vector<ChannelQuality>& channels,
                                const std::vector<bool>& showsScan) {
  std::vector<size_t> alive, expected;
  for (size_t c = 0; c < channels.size(); ++c) {
    if (!isAlive(channels[c])) continue;
    alive.push_back(c);
    if (c < showsScan.size() && showsScan[c]) expected.push_back(c);
  }
  std::vector<size_t> witnesses = expected.empty() ? alive : expected;
  double best = 0;
  for (const size_t c : witnesses) best = std::max(best, shareOfScan(channels[c]));
  const auto isWorse = [&](size_t c) { return shareOfScan(channels[c]) < nearlyTheBest * best; };
  witnesses.erase(std::remove_if(witnesses.begin(), witnesses.end(), isWorse), witnesses.end());
  return witnesses;
}

} // namespace emeg
