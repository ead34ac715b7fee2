// The loops of ResamplingKernels, written once for registers of vectorBytes bytes (see
// cmake/SimdLevels.cmake). Nothing else may be included here: the file stands inside an unnamed namespace.

typedef double Vector __attribute__((vector_size(vectorBytes)));
typedef int32_t Indices __attribute__((vector_size(vectorBytes / 2)));

constexpr int lanes = vectorBytes / static_cast<int>(sizeof(double));
constexpr int vectors = nrOfLockstepIntervals / lanes;
constexpr double infinity = __builtin_huge_val();

inline Vector load(const double* from) {
  Vector v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}

inline void store(const Vector& v, double* to) {
  __builtin_memcpy(to, &v, sizeof v);
}

typedef double Pair __attribute__((vector_size(16)));

inline Pair loadPair(const double* from) {
  Pair pair;
  __builtin_memcpy(&pair, from, sizeof pair);
  return pair;
}

/// here[lane] = series[index[lane]], next[lane] = series[index[lane] + 1]: one load of both for every lane.
template <class V>
inline void loadNeighbours(const double* series, const int32_t* index, V& here, V& next) {
  constexpr int count = static_cast<int>(sizeof(V) / sizeof(double));
  Pair pair[count];
  for (int lane = 0; lane < count; ++lane) pair[lane] = loadPair(series + index[lane]);
  if constexpr (count == 2) {
    here = __builtin_shufflevector(pair[0], pair[1], 0, 2);
    next = __builtin_shufflevector(pair[0], pair[1], 1, 3);
  } else if constexpr (count == 4) {
    const auto even = __builtin_shufflevector(pair[0], pair[2], 0, 1, 2, 3);
    const auto odd = __builtin_shufflevector(pair[1], pair[3], 0, 1, 2, 3);
    here = __builtin_shufflevector(even, odd, 0, 4, 2, 6);
    next = __builtin_shufflevector(even, odd, 1, 5, 3, 7);
  } else {
    const auto even = __builtin_shufflevector(__builtin_shufflevector(pair[0], pair[2], 0, 1, 2, 3),
                                              __builtin_shufflevector(pair[4], pair[6], 0, 1, 2, 3), 0, 1, 2,
                                              3, 4, 5, 6, 7);
    const auto odd = __builtin_shufflevector(__builtin_shufflevector(pair[1], pair[3], 0, 1, 2, 3),
                                             __builtin_shufflevector(pair[5], pair[7], 0, 1, 2, 3), 0, 1, 2,
                                             3, 4, 5, 6, 7);
    here = __builtin_shufflevector(even, odd, 0, 8, 2, 10, 4, 12, 6, 14);
    next = __builtin_shufflevector(even, odd, 1, 9, 3, 11, 5, 13, 7, 15);
  }
}

inline Indices larger(const Indices& a, const Indices& b) {
  return a > b ? a : b;
}

inline Indices smaller(const Indices& a, const Indices& b) {
  return a < b ? a : b;
}

/// Where a stretch of the common time base lies in the intervals: the sample in front of every place, and how
/// far behind it the place lies. Found before anything is loaded, so that the loads do not wait for each
/// other.
struct Places {
  static constexpr int64_t capacity = 64;
  int32_t samples[capacity * nrOfLockstepIntervals];
  double fractions[capacity * nrOfLockstepIntervals];
};

struct Cursor {
  Vector start[vectors];
  Vector length[vectors];
  Indices sample[vectors]; ///< the largest whole part of any place so far
};

inline void findPlaces(const double* position, const double* offset, int64_t count, int32_t lastSample,
                       Cursor& cursor, Places& places) {
  const Indices last = Indices{} + lastSample;
  for (int64_t j = 0; j < count; ++j) {
    for (int v = 0; v < vectors; ++v) {
      const Vector place = cursor.length[v] * position[j] + cursor.start[v] + offset[j];
      // Places are within the recording or close to it: their whole part fits.
      cursor.sample[v] = larger(cursor.sample[v], __builtin_convertvector(place, Indices));
      const Indices sample = smaller(cursor.sample[v], last);
      const int64_t at = j * nrOfLockstepIntervals + v * lanes;
      __builtin_memcpy(places.samples + at, &sample, sizeof sample);
      store(place - __builtin_convertvector(sample, Vector), places.fractions + at);
    }
  }
}

void resample(const double* series, int64_t lastSample, const LockstepIntervals& intervals,
              const double* position, const double* offset, int64_t count, double* values, double* energies) {
  Cursor cursor;
  Vector energy[vectors];
  for (int v = 0; v < vectors; ++v) {
    cursor.start[v] = load(intervals.starts + v * lanes);
    cursor.length[v] = load(intervals.lengths + v * lanes);
    cursor.sample[v] = larger(__builtin_convertvector(cursor.start[v], Indices), Indices{});
    energy[v] = Vector{};
  }
  Places places;
  for (int64_t first = 0; first < count; first += Places::capacity) {
    const int64_t size = count - first < Places::capacity ? count - first : Places::capacity;
    findPlaces(position + first, offset + first, size, static_cast<int32_t>(lastSample), cursor, places);
    for (int64_t j = 0; j < size; ++j) {
      for (int v = 0; v < vectors; ++v) {
        const int64_t at = j * nrOfLockstepIntervals + v * lanes;
        Vector here;
        Vector next;
        loadNeighbours(series, places.samples + at, here, next);
        const Vector fraction = load(places.fractions + at);
        const Vector value = (1.0 - fraction) * here + fraction * next;
        energy[v] += value * value;
        store(value, values + first * nrOfLockstepIntervals + at);
      }
    }
  }
  for (int v = 0; v < vectors; ++v) store(energy[v], energies + v * lanes);
}

void addScaledIntervals(const double* values, const double* factors, int nrOfIntervals, int64_t count,
                        double* sum) {
  if (nrOfIntervals < nrOfLockstepIntervals) {
    for (int64_t j = 0; j < count; ++j)
      for (int i = 0; i < nrOfIntervals; ++i) sum[j] += factors[i] * values[j * nrOfLockstepIntervals + i];
    return;
  }
  for (int64_t j = 0; j < count; ++j) {
    const double* const row = values + j * nrOfLockstepIntervals;
    double scaled[nrOfLockstepIntervals];
    for (int v = 0; v < vectors; ++v)
      store(load(factors + v * lanes) * load(row + v * lanes), scaled + v * lanes);
    double total = sum[j];
    for (int i = 0; i < nrOfLockstepIntervals; ++i) total += scaled[i];
    sum[j] = total;
  }
}

inline Vector magnitude(const Vector& x) {
  return x < 0.0 ? -x : x;
}

int solveWarps(const WarpEquations& equations, double firstDistance, int64_t count, double* roots) {
  constexpr double smallestStep = 1e-10;
  constexpr int mostRounds = 100;
  Vector x[vectors] = {};
  double unsettled[nrOfLockstepIntervals] = {}; // 1 once an equation has failed
  for (int64_t k = 0; k < count; ++k) {
    const double distance = firstDistance + static_cast<double>(k);
    for (int v = 0; v < vectors; ++v) {
      const Vector samples = load(equations.samples + v * lanes);
      const Vector bend = load(equations.medianBends + v * lanes);
      Vector root = x[v];
      Vector moving = Vector{} + 1.0;
      Vector failed = load(unsettled + v * lanes);
      for (int round = 0; round < mostRounds; ++round) {
        const Vector slope = (3.0 * samples * root - 2.0 * bend) * root + bend;
        const Vector step = (((samples * root - bend) * root + bend) * root - distance) / slope;
        // A step of an equation that has settled is taken back: each one does what it would do alone.
        const Vector moved = root - step;
        root = moving > 0.0 ? moved : root;
        const Vector isNumber = magnitude(step) < infinity ? Vector{} + 1.0 : Vector{};
        failed = moving > isNumber ? Vector{} + 1.0 : failed;
        moving = magnitude(step) > smallestStep ? moving * isNumber : Vector{};
        double still = 0;
        for (int lane = 0; lane < lanes; ++lane) still += moving[lane];
        if (still == 0) break;
      }
      failed = moving > 0.0 ? Vector{} + 1.0 : failed;
      x[v] = root;
      store(failed, unsettled + v * lanes);
      store(root, roots + k * nrOfLockstepIntervals + v * lanes);
    }
  }
  int failedEquations = 0;
  for (int i = 0; i < nrOfLockstepIntervals; ++i)
    if (unsettled[i] > 0) failedEquations |= 1 << i;
  return failedEquations;
}

constexpr ResamplingKernels kernels = {resample, addScaledIntervals, solveWarps};
