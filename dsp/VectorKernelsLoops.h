// The loops of VectorKernels, written once for registers of vectorBytes bytes (see cmake/SimdLevels.cmake).
// Nothing else may be included here: the file stands inside an unnamed namespace.

constexpr int nrOfPartialSums = 8;

/// Calls block.run<V>(p) so that V x lanes outputs from p on are made at a time, and block.single(p) where
/// fewer than one vector of outputs is left. The last vector may overlap the one before it: outputs are set,
/// not added to.
template <int V, class Block>
void forAllOutputs(int64_t count, const Block& block) {
  int64_t p = 0;
  for (; p + V * lanes <= count; p += V * lanes) block.template run<V>(p);
  if constexpr (V > 4) {
    if (p + 4 * lanes <= count) {
      block.template run<4>(p);
      p += 4 * lanes;
    }
  }
  for (; p + lanes <= count; p += lanes) block.template run<1>(p);
  if (p < count && count >= lanes) {
    block.template run<1>(count - lanes);
  } else {
    for (; p < count; ++p) block.single(p);
  }
}

/// Every lane is an output of its own, summed in the plain order.
struct SlidingDot {
  const double* s;
  const double* w;
  int64_t taps;
  double* out;

  template <int V>
  void run(int64_t p) const {
    Vector sum[V] = {};
    for (int64_t i = 0; i < taps; ++i) {
      const double weight = w[i];
      for (int v = 0; v < V; ++v) sum[v] += load(s + p + i + v * lanes) * weight;
    }
    for (int v = 0; v < V; ++v) store(sum[v], out + p + v * lanes);
  }
  void single(int64_t p) const {
    double sum = 0;
    for (int64_t i = 0; i < taps; ++i) sum += s[p + i] * w[i];
    out[p] = sum;
  }
};

struct SlidingSum {
  const double* s;
  int64_t taps;
  double* out;

  template <int V>
  void run(int64_t p) const {
    Vector sum[V] = {};
    for (int64_t i = 0; i < taps; ++i)
      for (int v = 0; v < V; ++v) sum[v] += load(s + p + i + v * lanes);
    for (int v = 0; v < V; ++v) store(sum[v], out + p + v * lanes);
  }
  void single(int64_t p) const {
    double sum = 0;
    for (int64_t i = 0; i < taps; ++i) sum += s[p + i];
    out[p] = sum;
  }
};

struct SlidingWeightedSquares {
  const double* s;
  const double* f;
  const double* g;
  const double* w;
  int64_t taps;
  double* out;

  template <int V>
  void run(int64_t p) const {
    Vector sum[V] = {};
    Vector factor[V];
    for (int v = 0; v < V; ++v) factor[v] = load(f + p + v * lanes);
    for (int64_t i = 0; i < taps; ++i) {
      const double gain = g[i];
      const double offset = w[i];
      for (int v = 0; v < V; ++v) {
        const Vector x = factor[v] * load(s + p + i + v * lanes) + offset;
        sum[v] += gain * (x * x);
      }
    }
    for (int v = 0; v < V; ++v) store(sum[v], out + p + v * lanes);
  }
  void single(int64_t p) const {
    double sum = 0;
    for (int64_t i = 0; i < taps; ++i) {
      const double x = f[p] * s[p + i] + w[i];
      sum += g[i] * (x * x);
    }
    out[p] = sum;
  }
};

void slidingDot(const double* s, const double* w, int64_t taps, int64_t count, double* out) {
  forAllOutputs<8>(count, SlidingDot{s, w, taps, out});
}

void slidingSum(const double* s, int64_t taps, int64_t count, double* out) {
  forAllOutputs<8>(count, SlidingSum{s, taps, out});
}

void slidingWeightedSquares(const double* s, const double* f, const double* g, const double* w, int64_t taps,
                            int64_t count, double* out) {
  forAllOutputs<4>(count, SlidingWeightedSquares{s, f, g, w, taps, out});
}

/// Sums of products of R rows with b. The partial sums of a row are added pairwise at the end.
template <int R>
void dotRows(const double* rows, int64_t stride, const double* b, int64_t count, double* results) {
  constexpr int vectors = nrOfPartialSums / lanes;
  Vector sum[R][vectors] = {};
  int64_t i = 0;
  for (; i + nrOfPartialSums <= count; i += nrOfPartialSums) {
    for (int v = 0; v < vectors; ++v) {
      const Vector factor = load(b + i + v * lanes);
      for (int r = 0; r < R; ++r) sum[r][v] += load(rows + r * stride + i + v * lanes) * factor;
    }
  }
  for (int r = 0; r < R; ++r) {
    double partial[nrOfPartialSums];
    for (int v = 0; v < vectors; ++v) store(sum[r][v], partial + v * lanes);
    for (int64_t k = i; k < count; ++k) partial[k - i] += rows[r * stride + k] * b[k];
    for (int half = nrOfPartialSums / 2; half > 0; half /= 2)
      for (int k = 0; k < half; ++k) partial[k] += partial[k + half];
    results[r] = partial[0];
  }
}

double dot(const double* a, const double* b, int64_t count) {
  double result;
  dotRows<1>(a, 0, b, count, &result);
  return result;
}

void dotFour(const double* rows, int64_t stride, const double* b, int64_t count, double* results) {
  dotRows<4>(rows, stride, b, count, results);
}

template <int R>
void addScaledRows(const double* rows, int64_t stride, const double* factors, int64_t count, double* out) {
  int64_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    Vector sum = load(out + i);
    for (int r = 0; r < R; ++r) sum += load(rows + r * stride + i) * factors[r];
    store(sum, out + i);
  }
  for (; i < count; ++i)
    for (int r = 0; r < R; ++r) out[i] += rows[r * stride + i] * factors[r];
}

void addScaled(const double* a, double factor, int64_t count, double* out) {
  addScaledRows<1>(a, 0, &factor, count, out);
}

void addScaledFour(const double* rows, int64_t stride, const double* factors, int64_t count, double* out) {
  addScaledRows<4>(rows, stride, factors, count, out);
}

constexpr VectorKernels kernels = {slidingDot, slidingSum, slidingWeightedSquares, dot,
                                   dotFour,    addScaled,  addScaledFour};
