#include "dsp/FFTTables.h"

#include "dsp/RealFFT.h"

#include <utility>

namespace emeg {

namespace {

bool isOffered(int32_t log2) {
  return log2 >= 0 && log2 <= maxLog2FftSize;
}

std::unique_ptr<const std::vector<uint32_t>> makeBitReversals(int32_t log2m) {
  std::vector<uint32_t> table(powersOfTwo[static_cast<std::size_t>(log2m)]);
  // Behind the entries of the lowest t bits stand the same ones with bit t set, whose reversal has bit
  // log2m - 1 - t set; doubled, because the entries index doubles.
  for (int32_t t = 0; t < log2m; ++t) {
    const std::size_t done = powersOfTwo[static_cast<std::size_t>(t)];
    const uint32_t reversedBit = powersOfTwo[static_cast<std::size_t>(log2m - t)];
    for (std::size_t i = 0; i < done; ++i) table[done + i] = table[i] + reversedBit;
  }
  return std::make_unique<const std::vector<uint32_t>>(std::move(table));
}

} // namespace

FFTTables& fftTables() {
  static FFTTables tables;
  return tables;
}

void initFFTTables() {
  fftTables();
}

std::shared_ptr<const CosineTable> FFTTables::makeCosineTable(int32_t log2n) {
  if (!isOffered(log2n)) return nullptr;
  const std::lock_guard<std::mutex> lock(cosinesMutex_);
  if (cosines_ == nullptr || cosines_->period() < int64_t{1} << log2n) {
    // The old table goes first: the two together would be the largest memory of a run. Should the new one not
    // fit, there is none, and a later transform starts again.
    cosines_.reset();
    cosines_ = std::make_shared<const CosineTable>(log2n);
  }
  return cosines_;
}

void FFTTables::prepareFFTSize(int32_t log2m) {
  if (isOffered(log2m)) bitReversalTable(log2m);
}

const std::vector<uint32_t>& FFTTables::bitReversalTable(int32_t log2m) {
  return bitReversals_[static_cast<std::size_t>(log2m)].get([&] {
    makeCosineTable(log2m);
    return makeBitReversals(log2m);
  });
}

const FFTPlan& FFTTables::fftPlan(int32_t log2m) {
  return plans_[static_cast<std::size_t>(log2m)].get(
      [&] { return std::make_unique<const FFTPlan>(log2m, *makeCosineTable(log2m)); });
}

const RealFFTPlan& FFTTables::realFFTPlan(int32_t log2n) {
  return realPlans_[static_cast<std::size_t>(log2n)].get([&] {
    const std::shared_ptr<const CosineTable> cosines = makeCosineTable(log2n);
    const FFTPlan& plan = fftPlan(log2n - 1);
    return std::make_unique<const RealFFTPlan>(log2n, plan, bitReversalTable(plan.log2Columns()), *cosines);
  });
}

int64_t FFTTables::cosinePeriod() const {
  const std::lock_guard<std::mutex> lock(cosinesMutex_);
  return cosines_ == nullptr ? 0 : cosines_->period();
}

std::size_t FFTTables::bytes() const {
  std::size_t bytes = static_cast<std::size_t>(cosinePeriod() / 4) * sizeof(double);
  for (const auto& table : bitReversals_)
    if (table.find() != nullptr) bytes += table.find()->size() * sizeof(uint32_t);
  for (const auto& plan : plans_)
    if (plan.find() != nullptr) bytes += plan.find()->tableBytes();
  for (const auto& plan : realPlans_)
    if (plan.find() != nullptr) bytes += plan.find()->tableBytes();
  return bytes;
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
