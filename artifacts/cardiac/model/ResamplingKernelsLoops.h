// The loops of ResamplingKernels, written once for registers of vectorBytes bytes (see
// cmake/SimdLevels.cmake). Nothing else may be included here: the file stands inside an unnamed namespace.

typedef int32_t Indices __attribute__((vector_size(vectorBytes / 2)));

constexpr double infinity = __builtin_huge_val();

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

bool findPlaces(double start, double length, const double* position, const double* offset, int64_t count,
                int32_t lastSample, int32_t* samples, double* fractions) {
  const auto firstSample = static_cast<int32_t>(start > 0 ? start : 0.0);
  const Indices first = Indices{} + (firstSample < lastSample ? firstSample : lastSample);
  const Indices last = Indices{} + lastSample;
  int64_t j = 0;
  for (; j + lanes <= count; j += lanes) {
    const Vector place = length * load(position + j) + start + load(offset + j);
    // Places are within the recording or close to it: their whole part fits.
    const Indices sample = smaller(larger(first, __builtin_convertvector(place, Indices)), last);
    __builtin_memcpy(samples + j, &sample, sizeof sample);
    store(place - __builtin_convertvector(sample, Vector), fractions + j);
  }
  for (; j < count; ++j) {
    const double place = length * position[j] + start + offset[j];
    const auto whole = static_cast<int32_t>(place);
    samples[j] = whole < first[0] ? first[0] : whole > lastSample ? lastSample : whole;
    fractions[j] = place - samples[j];
  }
  int32_t descents = 0;
  for (int64_t k = 1; k < count; ++k) descents += samples[k] < samples[k - 1] ? 1 : 0;
  return descents == 0;
}

#if defined(__AVX512F__)
/// Neighbours of eight ascending samples: where they lie close together they are picked out of two registers.
/// `end` is the first index that cannot be read.
inline void loadAscendingNeighbours(const double* series, int64_t end, const int32_t* index, Vector& here,
                                    Vector& next) {
  const int32_t base = index[0];
  if (index[lanes - 1] - base > 14 || base + 16 > end) {
    loadNeighbours(series, index, here, next);
    return;
  }
  const __m512d low = _mm512_loadu_pd(series + base);
  const __m512d high = _mm512_loadu_pd(series + base + 8);
  Indices indices;
  __builtin_memcpy(&indices, index, sizeof indices);
  typedef long long Distances __attribute__((vector_size(vectorBytes)));
  const Distances distances = __builtin_convertvector(indices - base, Distances);
  here = _mm512_permutex2var_pd(low, __m512i(distances), high);
  next = _mm512_permutex2var_pd(low, __m512i(distances + 1), high);
}
#else
inline void loadAscendingNeighbours(const double* series, int64_t, const int32_t* index, Vector& here,
                                    Vector& next) {
  loadNeighbours(series, index, here, next);
}
#endif

double interpolate(const double* series, int32_t lastSample, const int32_t* samples, const double* fractions,
                   int64_t count, double* values) {
  constexpr int nrOfPartialSums = 8;
  constexpr int vectors = nrOfPartialSums / lanes;
  Vector energy[vectors] = {};
  int64_t j = 0;
  for (; j + nrOfPartialSums <= count; j += nrOfPartialSums) {
    for (int v = 0; v < vectors; ++v) {
      const int64_t at = j + v * lanes;
      Vector here;
      Vector next;
      loadAscendingNeighbours(series, int64_t{lastSample} + 2, samples + at, here, next);
      const Vector fraction = load(fractions + at);
      const Vector value = (1.0 - fraction) * here + fraction * next;
      energy[v] += value * value;
      store(value, values + at);
    }
  }
  double partial[nrOfPartialSums];
  for (int v = 0; v < vectors; ++v) store(energy[v], partial + v * lanes);
  for (int k = 0; j < count; ++j, ++k) {
    const double* const pair = series + samples[j];
    values[j] = (1.0 - fractions[j]) * pair[0] + fractions[j] * pair[1];
    partial[k] += values[j] * values[j];
  }
  for (int half = nrOfPartialSums / 2; half > 0; half /= 2)
    for (int k = 0; k < half; ++k) partial[k] += partial[k + half];
  return partial[0];
}

inline Vector magnitude(const Vector& x) {
  return x < 0.0 ? -x : x;
}

int solveWarps(const WarpEquations& equations, double firstDistance, int64_t count, double* roots) {
  constexpr double smallestStep = 1e-10;
  constexpr int mostRounds = 100;
  constexpr int vectors = nrOfLockstepEquations / lanes;
  Vector x[vectors] = {};
  double unsettled[nrOfLockstepEquations] = {}; // 1 once an equation has failed
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
      store(root, roots + k * nrOfLockstepEquations + v * lanes);
    }
  }
  int failedEquations = 0;
  for (int i = 0; i < nrOfLockstepEquations; ++i)
    if (unsettled[i] > 0) failedEquations |= 1 << i;
  return failedEquations;
}

constexpr ResamplingKernels kernels = {findPlaces, interpolate, solveWarps};
