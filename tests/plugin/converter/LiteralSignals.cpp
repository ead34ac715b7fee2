#include "tests/plugin/converter/LiteralSignals.h"

#include <cmath>
#include <optional>

namespace emeg {

namespace {

constexpr double pi = 3.14159265358979323846;

double shapeAt(const PlainEdge& edge, double x) {
  return 1.0 / (std::pow(x / edge.cutOff, 2 * edge.order) + 1.0);
}

/// The gain at a frequency between 0 and 1 (the Nyquist frequency): edges are taken singly or in pairs.
double gainAt(const std::vector<PlainEdge>& edges, double x) {
  double gain = 1;
  const int count = static_cast<int>(edges.size());
  const auto edge = [&](int i) -> const PlainEdge& { return edges[static_cast<size_t>(i)]; };
  for (int i = 0; i < count; ++i) {
    std::optional<PlainEdge> kept;
    std::optional<PlainEdge> removed;
    if (i == 0 && !edge(0).lowPass) {
      removed = edge(0);
    } else {
      while (i < count - 2 && !(edge(i).lowPass && !edge(i + 1).lowPass)) ++i;
      if (i == count - 1 && !edge(i).lowPass) break;
      kept = edge(i);
      if (i != count - 1) removed = edge(i + 1);
    }
    if (x == 0) {
      gain *= kept ? 1 : 0;
      continue;
    }
    const double a = kept ? shapeAt(*kept, x) : 0;
    const double b = removed ? shapeAt(*removed, x) : 1;
    gain *= 1 - (1 - a) * b;
  }
  return gain;
}

} // namespace

std::vector<double> plainFilter(const std::vector<double>& signal, const std::vector<PlainEdge>& edges,
                                int log2Length) {
  const size_t length = size_t{1} << log2Length;
  const size_t valid = signal.size();
  std::vector<double> x = signal;
  x.resize(length);
  for (size_t p = valid; p < length; ++p) {
    const size_t i = p - valid;
    const double t = static_cast<double>(i) / static_cast<double>(length - valid - 1);
    const double mirrored = x[i + 2 <= valid ? valid - 2 - i : 0];
    const double opening = x[1 + i < valid ? 1 + i : valid - 1];
    x[p] = (1 - t) * mirrored + t * opening;
  }

  std::vector<double> cosine(length);
  std::vector<double> sine(length);
  for (size_t j = 0; j < length; ++j) {
    cosine[j] = std::cos(2 * pi * static_cast<double>(j) / static_cast<double>(length));
    sine[j] = std::sin(2 * pi * static_cast<double>(j) / static_cast<double>(length));
  }
  std::vector<double> filtered(valid, 0.0);
  for (size_t k = 0; k <= length / 2; ++k) {
    double re = 0;
    double im = 0;
    for (size_t j = 0; j < length; ++j) {
      re += x[j] * cosine[k * j % length];
      im += x[j] * sine[k * j % length];
    }
    const double weight = k == 0 || k == length / 2 ? 1.0 : 2.0;
    const double gain = gainAt(edges, static_cast<double>(k) / static_cast<double>(length / 2)) * weight /
                        static_cast<double>(length);
    for (size_t j = 0; j < valid; ++j)
      filtered[j] += gain * (re * cosine[k * j % length] + im * sine[k * j % length]);
  }
  return filtered;
}

std::vector<double> plainSpline(const std::vector<double>& knots, int64_t samplesPerKnot,
                                int64_t nrOfSamples) {
  const std::vector<double>& a = knots;
  const size_t n = a.size();
  std::vector<double> b(n);
  std::vector<double> c(n);
  std::vector<double> d(n);
  for (size_t i = 0; i + 1 < n; ++i) b[i] = a[i + 1] - a[i];
  c[1] = 4;
  d[1] = 3 * (b[1] - b[0]);
  for (size_t i = 1; i + 2 < n; ++i) {
    if (i + 1 > n - 2) break;
    c[i + 1] = 4 - 1 / c[i];
    d[i + 1] = 3 * (b[i + 1] - b[i]) - d[i] / c[i];
  }
  c[n - 1] = d[n - 2] / (1 - 2 * c[n - 2]);
  for (size_t i = n - 2; i >= 1; --i) c[i] = (d[i] - c[i + 1]) / c[i];
  c[0] = -0.5 * c[1];
  for (size_t i = 0; i + 1 < n; ++i) {
    b[i] -= (2 * c[i] + c[i + 1]) / 3;
    d[i] = (c[i + 1] - c[i]) / 3;
  }
  b[n - 1] = b[n - 2] + 2 * c[n - 2] + 3 * d[n - 2]; // the slope where the last piece ends
  d[n - 1] = 0;

  std::vector<double> values;
  const double s = 1.0 / static_cast<double>(samplesPerKnot);
  double t = 0;
  size_t k = 0;
  for (int64_t i = 0; i < nrOfSamples; ++i) {
    values.push_back(((d[k] * t + c[k]) * t + b[k]) * t + a[k]);
    if (t + s > 0.99999) {
      t = 0;
      ++k;
    } else {
      t += s;
    }
  }
  return values;
}

} // namespace emeg
