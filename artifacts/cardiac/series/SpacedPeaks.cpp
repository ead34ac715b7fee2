#include "artifacts/cardiac/series/SpacedPeaks.h"

#include <algorithm>

namespace emeg {

namespace {

constexpr size_t piecesOnEitherSide = 5;

} // namespace

std::vector<Peak> spacedPeaks(std::span<const double> signal, size_t distance) {
  std::vector<Peak> maxima;
  for (size_t i = 1; i + 1 < signal.size(); ++i)
    if (signal[i] > 0 && signal[i] > signal[i - 1] && signal[i] >= signal[i + 1])
      maxima.push_back({i, signal[i]});

  std::vector<size_t> order(maxima.size());
  for (size_t k = 0; k < order.size(); ++k) order[k] = k;
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return maxima[a].height > maxima[b].height; });
  std::vector<char> isSuppressed(maxima.size());
  std::vector<char> isKept(maxima.size());
  for (const size_t k : order) {
    if (isSuppressed[k] != 0) continue;
    isKept[k] = 1;
    for (size_t j = k; j-- > 0 && maxima[k].at - maxima[j].at < distance;) isSuppressed[j] = 1;
    for (size_t j = k + 1; j < maxima.size() && maxima[j].at - maxima[k].at < distance; ++j)
      isSuppressed[j] = 1;
  }
  std::vector<Peak> peaks;
  for (size_t k = 0; k < maxima.size(); ++k)
    if (isKept[k] != 0) peaks.push_back(maxima[k]);
  return peaks;
}

UsualHeight::UsualHeight(std::span<const double> signal, size_t pieceLength)
    : pieceLength_(std::max<size_t>(pieceLength, 1)) {
  std::vector<double> highest;
  for (size_t first = 0; first < signal.size(); first += pieceLength_) {
    const auto piece = signal.subspan(first, std::min(pieceLength_, signal.size() - first));
    // What is left at the end may be too short to hold a peak.
    if (piece.size() == pieceLength_ || highest.empty())
      highest.push_back(*std::max_element(piece.begin(), piece.end()));
  }
  for (size_t k = 0; k < highest.size(); ++k) {
    const size_t from = k > piecesOnEitherSide ? k - piecesOnEitherSide : 0;
    const size_t to = std::min(k + piecesOnEitherSide + 1, highest.size());
    std::vector<double> around(highest.begin() + static_cast<std::ptrdiff_t>(from),
                               highest.begin() + static_cast<std::ptrdiff_t>(to));
    std::sort(around.begin(), around.end());
    heights_.push_back(around[around.size() / 2]);
  }
}

double UsualHeight::at(size_t sample) const {
  if (heights_.empty()) return 0;
  return heights_[std::min(sample / pieceLength_, heights_.size() - 1)];
}

} // namespace emeg
