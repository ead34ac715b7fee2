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

const FFTPlan& fftPlan(int32_t log2m) {
  std::unique_ptr<const FFTPlan>& plan = fftTables().plans[static_cast<std::size_t>(log2m)];
  if (plan == nullptr) {
    makeCosineTable(log2m);
    plan = std::make_unique<const FFTPlan>(log2m);
  }
  return *plan;
}

const RealFFTPlan& realFFTPlan(int32_t log2n) {
  std::unique_ptr<const RealFFTPlan>& plan = fftTables().realPlans[static_cast<std::size_t>(log2n)];
  if (plan == nullptr) {
    makeCosineTable(log2n);
    plan = std::make_unique<const RealFFTPlan>(log2n);
  }
  return *plan;
}

LongFFT longFFT(int32_t log2m) {
  const FFTPlan& plan = fftPlan(log2m);
  std::vector<CacheLine>& workspace = fftTables().workspace;
  const std::size_t lines = plan.workspaceSize() * sizeof(double) / sizeof(CacheLine);
  if (workspace.size() < lines) {
    std::vector<CacheLine>().swap(workspace);
    workspace.resize(lines);
  }
  return {plan, bitReversalTable(plan.log2Rows()).data(), bitReversalTable(plan.log2Columns()).data(),
          workspace.data()};
}

Turn turnFromTable(int64_t k, int32_t log2N) {
  const FFTTables& tables = fftTables();
  const int64_t quarter = tables.cosinePeriod / 4;
  const int64_t position = k * (tables.cosinePeriod >> log2N);
  const int64_t within = position % quarter;
  const double cosine = tables.cosines[static_cast<std::size_t>(within)];
  const double sine = within == 0 ? 0.0 : tables.cosines[static_cast<std::size_t>(quarter - within)];
  switch (position / quarter) {
  case 0:
    return {cosine, sine};
  case 1:
    return {-sine, cosine};
  case 2:
    return {-cosine, -sine};
  default:
    return {sine, -cosine};
  }
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
