// A piece of LongFFTPassesLoops.h: rows forward, times the gains, inverse; columns inverse.

/// Transforms a block of 2^log2n points of `lanes` rows: natural order in, bit-reversed order out.
template <BlockKind kind>
void transformLanesToReversed(const FFTPlan& plan, Vector* block, int32_t log2n) {
  if (log2n == 4) return transformBlockToReversed<Direction::Forward, kind, 16>(block);
  if (log2n == 5) return transformBlockToReversed<Direction::Forward, kind, 32>(block);
  const int64_t n = int64_t{1} << log2n;
  const double* turns = plan.passTurns(log2n);
  separate<Direction::Forward, kind>(block, n / 2, FixedTwiddle<4, 0>{});
  for (int64_t k = 1; k < n / 4; ++k)
    separate<Direction::Forward, kind>(block + 2 * k, n / 2, Twiddle{turns[2 * k], turns[2 * k + 1]});
  transformLanesToReversed<kind>(plan, block + PartOffsets<kind>::half(n), log2n - 1);
  transformLanesToReversed<BlockKind::A>(plan, block + PartOffsets<kind>::quarterPlus(n), log2n - 2);
  transformLanesToReversed<BlockKind::B>(plan, block + PartOffsets<kind>::quarterMinus(n), log2n - 2);
}

/// Gains as they lie in memory.
typedef float Floats __attribute__((vector_size(vectorBytes / 2)));

inline Vector loadGains(const float* from) {
  Floats gains;
  __builtin_memcpy(&gains, from, sizeof gains);
  return __builtin_convertvector(gains, Vector);
}

/// A row that holds its own mirrors, in bit-reversed order: columns k and `mirrorSum` - k, from `first` on.
inline void filterOwnMirrors(Point<double>* row, int64_t first, int64_t mirrorSum, const RealFFTPlan& plan,
                             const uint32_t* reversals, const Turn& rowTurn, const float* gains) {
  for (int64_t k = first; 2 * k < mirrorSum; ++k) {
    const int64_t at = reversals[k] / 2;
    const Turn& columnTurn = plan.columnTurns()[at];
    const double cosine = rowTurn.cosine * columnTurn.cosine - rowTurn.sine * columnTurn.sine;
    const double sine = rowTurn.sine * columnTurn.cosine + rowTurn.cosine * columnTurn.sine;
    filterPair(row[at], row[reversals[mirrorSum - k] / 2], cosine, sine, static_cast<double>(gains[k]),
               static_cast<double>(gains[mirrorSum - k]));
  }
}

/// Row 0: DC and Nyquist share column 0, and the middle column is its own mirror.
inline void filterFirstRow(Point<double>* row, int64_t columns, const RealFFTPlan& plan,
                           const uint32_t* reversals, const BinGains& gains) {
  filterOwnMirrors(row, 1, columns, plan, reversals, {1.0, 0.0}, gains.ofFirstRow().data());
  const double dc = (row[0].re + row[0].im) * static_cast<double>(gains.dc());
  const double nyquist = (row[0].re - row[0].im) * static_cast<double>(gains.nyquist());
  row[0] = {(dc + nyquist) * 0.5, (dc - nyquist) * 0.5};
  const double gain = static_cast<double>(gains.ofFirstRow()[static_cast<std::size_t>(columns / 2)]);
  Point<double>& middle = row[reversals[columns / 2] / 2];
  middle = {middle.re * gain, middle.im * gain};
}

/// Rows 0 and rows/2, in the first lane of the two registers, hold their own mirrors and are done apart.
class OwnMirrors {
public:
  OwnMirrors(const Vector* rows, const Vector* mirrors, int64_t columns, Point<double>* space)
      : columns_(columns), first_(space), middle_(space + columns) {
    for (int64_t i = 0; i < columns; ++i) {
      first_[i] = {rows[2 * i][0], rows[2 * i + 1][0]};
      middle_[i] = {mirrors[2 * i][0], mirrors[2 * i + 1][0]};
    }
  }
  void filter(const RealFFTPlan& plan, const FFTPlan& matrix, const uint32_t* reversals,
              const BinGains& gains) {
    filterFirstRow(first_, columns_, plan, reversals, gains);
    const int64_t middleRow = matrix.rows() / 2;
    filterOwnMirrors(middle_, 0, columns_ - 1, plan, reversals,
                     {plan.rowCosines()[middleRow], plan.rowSines()[middleRow]}, gains.ofMiddleRow().data());
  }
  /// Real and imaginary parts change places.
  void putBackSwapped(Vector* rows, Vector* mirrors) const {
    for (int64_t i = 0; i < columns_; ++i) {
      rows[2 * i][0] = first_[i].im;
      rows[2 * i + 1][0] = first_[i].re;
      mirrors[2 * i][0] = middle_[i].im;
      mirrors[2 * i + 1][0] = middle_[i].re;
    }
  }

private:
  int64_t columns_;
  Point<double>* first_;
  Point<double>* middle_;
};

/// Multiplies the spectrum of `lanes` rows and of the rows with their mirrors, both in bit-reversed order, by
/// the gains. Real and imaginary parts have changed places afterwards.
inline void filterPairsOfRows(Vector* rows, Vector* mirrors, int64_t columns, int64_t firstRow,
                              const RealFFTPlan& plan, const float* gains) {
  const Vector rowCosine = load(plan.rowCosines() + firstRow);
  const Vector rowSine = load(plan.rowSines() + firstRow);
  for (int64_t i = 0; i < columns; ++i) {
    // Bit reversal keeps complements: what holds column k from the front holds columns - 1 - k from the end.
    Vector* const at = rows + 2 * i;
    Vector* const mirrorAt = mirrors + 2 * (columns - 1 - i);
    const Turn& column = plan.columnTurns()[i];
    const Vector cosine = rowCosine * column.cosine - rowSine * column.sine;
    const Vector sine = rowSine * column.cosine + rowCosine * column.sine;
    Point<Vector> bin{at[0], at[1]};
    Point<Vector> mirror{mirrorAt[0], mirrorAt[1]};
    filterPair(bin, mirror, cosine, sine, loadGains(gains + 2 * lanes * i),
               loadGains(gains + 2 * lanes * i + lanes));
    at[0] = bin.im;
    at[1] = bin.re;
    mirrorAt[0] = mirror.im;
    mirrorAt[1] = mirror.re;
  }
}

/// A register full of rows between their squares (see scatterColumns) and the work space.
inline void loadRows(const double* rows, int64_t columns, Vector* work) {
  for (int64_t square = 0; square < columns; square += lanes)
    for (int64_t i = 0; i < lanes; ++i) {
      const double* const from = rows + 2 * (i * columns + square);
      work[2 * (square + i)] = load(from);
      work[2 * (square + i) + 1] = load(from + lanes);
    }
}

inline void storeRows(const Vector* work, int64_t columns, double* rows) {
  for (int64_t square = 0; square < columns; square += lanes)
    for (int64_t i = 0; i < lanes; ++i) {
      double* const to = rows + 2 * (i * columns + square);
      store(work[2 * (square + i)], to);
      store(work[2 * (square + i) + 1], to + lanes);
    }
}

void filterRows(const LongFFT& fft, const RealFFTPlan& realPlan, const BinGains& gains, double* points) {
  const FFTPlan& plan = fft.plan;
  const int64_t columns = plan.columns();
  Vector* const rows = static_cast<Vector*>(fft.work);
  Vector* const mirrors = rows + 2 * columns;
  for (int64_t firstRow = 0; firstRow < plan.rows() / 2; firstRow += lanes) {
    double* const upper = points + 2 * firstRow * 2 * columns;
    double* const lower = upper + lanes * 2 * columns;
    loadRows(upper, columns, rows);
    loadRows(lower, columns, mirrors);
    transformLanesToReversed<BlockKind::A>(plan, rows, plan.log2Columns());
    transformLanesToReversed<BlockKind::A>(plan, mirrors, plan.log2Columns());
    const float* const ofPairs = gains.ofPairs().data() + 2 * firstRow * columns;
    if (firstRow == 0) {
      OwnMirrors own(rows, mirrors, columns, reinterpret_cast<Point<double>*>(mirrors + 2 * columns));
      own.filter(realPlan, plan, fft.reversedColumns, gains);
      filterPairsOfRows(rows, mirrors, columns, firstRow, realPlan, ofPairs);
      own.putBackSwapped(rows, mirrors);
    } else {
      filterPairsOfRows(rows, mirrors, columns, firstRow, realPlan, ofPairs);
    }
    transformLanes<BlockKind::A>(plan, rows, plan.log2Columns());
    transformLanes<BlockKind::A>(plan, mirrors, plan.log2Columns());
    storeRows(rows, columns, upper);
    storeRows(mirrors, columns, lower);
  }
}

/// Reads a group of columns whose rows are bins, in squares and with real and imaginary parts exchanged, into
/// bit-reversed order and turns it.
template <int64_t groupSize>
void gatherBins(const LongFFT& fft, int64_t firstColumn, const double* points, Vector* work) {
  const FFTPlan& plan = fft.plan;
  const int64_t rows = plan.rows();
  const int64_t rowSize = 2 * plan.columns();
  constexpr int64_t parts = groupSize / lanes;
  for (int64_t place = 0; place < rows; place += lanes)
    for (int64_t part = 0; part < parts; ++part) {
      const int64_t column = firstColumn + part * lanes;
      const RowTurns turns(plan, column);
      const double* const square = points + place * rowSize + 2 * column;
      Vector re[lanes];
      Vector im[lanes];
      forEachLane([&](int i) {
        re[i] = load(square + i * rowSize);
        im[i] = load(square + i * rowSize + lanes);
      });
      transpose(re);
      transpose(im);
      forEachLane([&](int i) {
        const int64_t row = rowAt<RowOrder::InPairs>(place + i, rows);
        const Point<Vector> point = turns.apply({re[i], im[i]}, row);
        Vector* const to = work + part * 2 * rows + fft.reversedRows[row];
        to[0] = point.re;
        to[1] = point.im;
      });
    }
}

template <int64_t groupSize>
void restoreGroups(const LongFFT& fft, double* points) {
  const FFTPlan& plan = fft.plan;
  Vector* const work = static_cast<Vector*>(fft.work);
  const int64_t rows = plan.rows();
  constexpr int64_t parts = groupSize / lanes;
  for (int64_t column = 0; column < plan.columns(); column += groupSize) {
    gatherBins<groupSize>(fft, column, points, work);
    for (int64_t part = 0; part < parts; ++part)
      transformLanes<BlockKind::A>(plan, work + part * 2 * rows, plan.log2Rows());
    double* const first = points + 2 * column;
    for (int64_t row = 0; row < rows; ++row)
      for (int64_t part = 0; part < parts; ++part) {
        const Vector* const from = work + 2 * (part * rows + row);
        storePairs(from[1], from[0], first + row * 2 * plan.columns() + part * 2 * lanes);
      }
  }
}

void restoreColumns(const LongFFT& fft, double* points) {
  withGroups(fft.plan, [&](auto size) { restoreGroups<size>(fft, points); });
}
