#include "dsp/FFTTables.h"

#include "dsp/FFTTwiddles.h"
#include "dsp/RealFFT.h"

#include <utility>

namespace emeg {

FFTTables& fftTables() {
  static FFTTables tables;
  return tables;
}

void initFFTTables() {
  FFTTables& tables = fftTables();
  if (tables.initialised) return;
  tables = FFTTables{};
  tables.initialised = true;
}

void makeCosineTable(int32_t log2n) {
  if (log2n < 0 || log2n > maxLog2FftSize) return;
  initFFTTables();
  FFTTables& tables = fftTables();
  const int64_t period = powersOfTwo[static_cast<std::size_t>(log2n)];
  if (tables.cosinePeriod >= period) return;

  // The old table goes first: the two together would be the largest memory of a run. Should the new one not
  // fit, the tables say so and a later transform starts again.
  tables.cosinePeriod = 0;
  std::vector<double>().swap(tables.cosines);
  std::vector<double> cosines(static_cast<std::size_t>(period / 4));
  for (std::size_t k = 0; k < cosines.size(); ++k) cosines[k] = cosineOfTurn(static_cast<int64_t>(k), log2n);
  tables.cosines = std::move(cosines);
  tables.cosinePeriod = period;
}

void prepareFFTSize(int32_t log2m) {
  if (log2m < 0 || log2m > maxLog2FftSize) return;
  initFFTTables();
  const std::size_t size = powersOfTwo[static_cast<std::size_t>(log2m)];
  std::vector<uint32_t> table(size);
  // Behind the entries of the lowest t bits stand the same ones with bit t set, whose reversal has bit
  // log2m - 1 - t set; doubled, because the entries index doubles.
  for (int32_t t = 0; t < log2m; ++t) {
    const std::size_t done = powersOfTwo[static_cast<std::size_t>(t)];
    const uint32_t reversedBit = powersOfTwo[static_cast<std::size_t>(log2m - t)];
    for (std::size_t i = 0; i < done; ++i) table[done + i] = table[i] + reversedBit;
  }
  fftTables().bitReversals[static_cast<std::size_t>(log2m)] = std::move(table);
  makeCosineTable(log2m);
}

const std::vector<uint32_t>& bitReversalTable(int32_t log2m) {
  const std::vector<uint32_t>& table = fftTables().bitReversals[static_cast<std::size_t>(log2m)];
  if (table.empty()) prepareFFTSize(log2m);
  return table;
}

void permuteToBitReversed(double* points, const std::vector<uint32_t>& bitReversals) {
  for (std::size_t i = 0; i < bitReversals.size(); ++i) {
    const std::size_t r = bitReversals[i];
    if (2 * i >= r) continue;
    std::swap(points[2 * i], points[r]);
    std::swap(points[2 * i + 1], points[r + 1]);
  }
}

} // namespace emeg
