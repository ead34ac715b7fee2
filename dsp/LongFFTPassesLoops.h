// The loops of LongFFTPasses, written once for registers of vectorBytes bytes (see cmake/SimdLevels.cmake).
// Nothing but other pieces may be included here: the file stands inside an unnamed namespace.

#include "dsp/SimdTranspose.h"

#include "dsp/SplitRadix.h"

#include "dsp/SpectrumSplit.h"

constexpr int log2Lanes = lanes == 8 ? 3 : lanes == 4 ? 2 : 1;

/// Transforms a block of 2^log2n points of `lanes` columns or rows.
template <BlockKind kind>
void transformLanes(const FFTPlan& plan, Vector* block, int32_t log2n) {
  if (log2n == 4) return transformBlock<Direction::Forward, kind, 16>(block);
  if (log2n == 5) return transformBlock<Direction::Forward, kind, 32>(block);
  const int64_t n = int64_t{1} << log2n;
  transformLanes<kind>(plan, block + PartOffsets<kind>::half(n), log2n - 1);
  transformLanes<BlockKind::A>(plan, block + PartOffsets<kind>::quarterPlus(n), log2n - 2);
  transformLanes<BlockKind::B>(plan, block + PartOffsets<kind>::quarterMinus(n), log2n - 2);
  const double* turns = plan.passTurns(log2n);
  combine<Direction::Forward, kind>(block, n / 2, FixedTwiddle<4, 0>{});
  for (int64_t k = 1; k < n / 4; ++k)
    combine<Direction::Forward, kind>(block + 2 * k, n / 2, Twiddle{turns[2 * k], turns[2 * k + 1]});
}

/// Calls work(group size) with the plan's columnsAtOnce as a constant.
template <class Work>
void withGroups(const FFTPlan& plan, const Work& work) {
  if (plan.columnsAtOnce() == FFTPlan::narrowGroup)
    work(std::integral_constant<int64_t, FFTPlan::narrowGroup>{});
  else
    work(std::integral_constant<int64_t, FFTPlan::wideGroup>{});
}

/// Reads a group of columns into bit-reversed order, a register full after the other.
template <int64_t groupSize, bool swapped>
void gatherColumns(const LongFFT& fft, const double* group, Vector* work) {
  const int64_t rows = fft.plan.rows();
  const int64_t rowSize = 2 * fft.plan.columns();
  constexpr int64_t parts = groupSize / lanes;
  for (int64_t row = 0; row < rows; ++row) {
    const double* from = group + row * rowSize;
    for (int64_t part = 0; part < parts; ++part) {
      Vector* to = work + part * 2 * rows + fft.reversedRows[row];
      if constexpr (swapped)
        loadPairs(from + part * 2 * lanes, to[1], to[0]);
      else
        loadPairs(from + part * 2 * lanes, to[0], to[1]);
    }
  }
}

/// Turns a row of the columns from `column` on by row times column.
class RowTurns {
public:
  RowTurns(const FFTPlan& plan, int64_t column)
      : coarse_(plan.coarseTurns(column)), fine_(plan.fineTurnsOf(column)),
        lane_(column % ColumnTurns::columns) {}

  Point<Vector> apply(const Point<Vector>& point, int64_t row) const {
    const ColumnTurns& a = coarse_[row / FFTPlan::fineTurns];
    const ColumnTurns& b = fine_[row % FFTPlan::fineTurns];
    const Vector aCosine = load(a.cosines.data() + lane_);
    const Vector aSine = load(a.sines.data() + lane_);
    const Vector bCosine = load(b.cosines.data() + lane_);
    const Vector bSine = load(b.sines.data() + lane_);
    return turn<Direction::Forward>(point, aCosine * bCosine - aSine * bSine,
                                    aSine * bCosine + aCosine * bSine);
  }

private:
  const ColumnTurns* coarse_;
  const ColumnTurns* fine_;
  int64_t lane_;
};

/// Where the rows of transformed columns are written.
enum class RowOrder {
  Natural,
  /// A register full of rows from the upper half, then the rows that hold their mirrors: row k and row rows -
  /// k. Rows 0 and rows/2, which hold their own mirrors, share the first place.
  InPairs
};

template <RowOrder order>
inline int64_t rowAt(int64_t place, int64_t rows) {
  if constexpr (order == RowOrder::Natural) return place;
  const int64_t row = place / (2 * lanes) * lanes + place % lanes;
  if (place % (2 * lanes) < lanes) return row;
  return row == 0 ? rows / 2 : rows - row;
}

/// Turns a group of columns and writes it back in squares of lanes x lanes points: what was a row's part of a
/// square holds one column, real parts first.
template <int64_t groupSize, RowOrder order>
void scatterColumns(const FFTPlan& plan, int64_t firstColumn, const Vector* work, double* points) {
  const int64_t rowSize = 2 * plan.columns();
  constexpr int64_t parts = groupSize / lanes;
  for (int64_t place = 0; place < plan.rows(); place += lanes)
    for (int64_t part = 0; part < parts; ++part) {
      const int64_t column = firstColumn + part * lanes;
      const RowTurns turns(plan, column);
      Vector re[lanes];
      Vector im[lanes];
      forEachLane([&](int i) {
        const int64_t row = rowAt<order>(place + i, plan.rows());
        const Vector* const from = work + 2 * (part * plan.rows() + row);
        const Point<Vector> point = turns.apply({from[0], from[1]}, row);
        re[i] = point.re;
        im[i] = point.im;
      });
      transpose(re);
      transpose(im);
      double* const square = points + place * rowSize + 2 * column;
      forEachLane([&](int i) {
        store(re[i], square + i * rowSize);
        store(im[i], square + i * rowSize + lanes);
      });
    }
}

template <int64_t groupSize, RowOrder order, bool swapped>
void transformGroups(const LongFFT& fft, double* points) {
  const FFTPlan& plan = fft.plan;
  Vector* const work = static_cast<Vector*>(fft.work);
  for (int64_t column = 0; column < plan.columns(); column += groupSize) {
    gatherColumns<groupSize, swapped>(fft, points + 2 * column, work);
    for (int64_t part = 0; part < groupSize / lanes; ++part)
      transformLanes<BlockKind::A>(plan, work + part * 2 * plan.rows(), plan.log2Rows());
    scatterColumns<groupSize, order>(plan, column, work, points);
  }
}

void transformColumns(const LongFFT& fft, double* points, bool swapped) {
  withGroups(fft.plan, [&](auto size) {
    if (swapped)
      transformGroups<size, RowOrder::Natural, true>(fft, points);
    else
      transformGroups<size, RowOrder::Natural, false>(fft, points);
  });
}

void transformColumnsInPairs(const LongFFT& fft, double* points) {
  withGroups(fft.plan, [&](auto size) { transformGroups<size, RowOrder::InPairs, false>(fft, points); });
}

/// Bits of the number of a group of rows.
inline int32_t log2Groups(const FFTPlan& plan) {
  return plan.log2Rows() - log2Lanes;
}

void transformRows(const LongFFT& fft, double* points, bool swapped) {
  const FFTPlan& plan = fft.plan;
  Vector* const work = static_cast<Vector*>(fft.work);
  const int64_t columns = plan.columns();
  const int32_t groupBits = log2Groups(plan);
  const int32_t middleBits = plan.log2Columns() - groupBits;
  const int64_t middleMask = (int64_t{1} << middleBits) - 1;
  for (int64_t group = 0; group < plan.rows() / lanes; ++group) {
    double* const rows = points + group * lanes * 2 * columns;
    for (int64_t square = 0; square < columns / lanes; ++square)
      for (int64_t i = 0; i < lanes; ++i) {
        const double* from = rows + 2 * (i * columns + square * lanes);
        Vector* const to = work + fft.reversedColumns[square * lanes + i];
        to[0] = load(from);
        to[1] = load(from + lanes);
      }
    transformLanes<BlockKind::A>(plan, work, plan.log2Columns());
    // The number of the group and the upper bits of the column change places in toNaturalOrder.
    for (int64_t column = 0; column < columns; ++column) {
      const int64_t place = ((column & middleMask) << groupBits) + (column >> middleBits);
      double* const to = rows + 2 * lanes * place;
      if (swapped)
        storePairs(work[2 * column + 1], work[2 * column], to);
      else
        storePairs(work[2 * column], work[2 * column + 1], to);
    }
  }
}

/// `lanes` points that stay together.
inline void exchangeChunks(double* a, double* b) {
  const Vector a0 = load(a);
  const Vector a1 = load(a + lanes);
  const Vector b0 = load(b);
  const Vector b1 = load(b + lanes);
  store(b0, a);
  store(b1, a + lanes);
  store(a0, b);
  store(a1, b + lanes);
}

/// Exchanges the upper and the lower bits of a chunk's number: transposes one square of chunks for every
/// value of the bits between.
void toNaturalOrder(const LongFFT& fft, double* points) {
  const FFTPlan& plan = fft.plan;
  constexpr int64_t tile = 8;
  const int64_t side = int64_t{1} << log2Groups(plan);
  const int64_t squares = plan.columns() / side;
  const int64_t rowSize = 2 * lanes * side * squares;
  for (int64_t square = 0; square < squares; ++square) {
    double* const chunks = points + square * side * 2 * lanes;
    for (int64_t i0 = 0; i0 < side; i0 += tile)
      for (int64_t j0 = 0; j0 <= i0; j0 += tile)
        for (int64_t i = i0; i < i0 + tile && i < side; ++i)
          for (int64_t j = j0; j < j0 + tile && j < i; ++j)
            exchangeChunks(chunks + i * rowSize + 2 * lanes * j, chunks + j * rowSize + 2 * lanes * i);
  }
}

#include "dsp/SpectrumSplitLoops.h"

#include "dsp/FilterRowsLoops.h"

constexpr LongFFTPasses kernels = {lanes,
                                   transformColumns,
                                   transformRows,
                                   toNaturalOrder,
                                   splitSpectrum<Direction::Forward>,
                                   splitSpectrum<Direction::Inverse>,
                                   transformColumnsInPairs,
                                   filterRows,
                                   restoreColumns};
