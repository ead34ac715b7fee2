// A piece of LongFFTPassesLoops.h: between the spectrum of complex points and that of a real signal.

/// The turns of `lanes` bins from `bin` on, a multiple of lanes.
inline Point<Vector> turnsOfBins(const RealFFTPlan& plan, int64_t bin) {
  const Turn& coarse = plan.coarseTurn(bin);
  const Vector cosine = load(plan.fineCosines(bin));
  const Vector sine = load(plan.fineSines(bin));
  return {cosine * coarse.cosine - sine * coarse.sine, sine * coarse.cosine + cosine * coarse.sine};
}

template <Direction direction>
void splitSpectrum(const RealFFTPlan& plan, double* x) {
  const int64_t m = int64_t{1} << (plan.log2n() - 1);
  for (int64_t bin = 1; bin < lanes; ++bin) {
    double* const at = x + 2 * bin;
    double* const mirrorAt = x + 2 * (m - bin);
    Point<double> here{at[0], at[1]};
    Point<double> mirror{mirrorAt[0], mirrorAt[1]};
    splitPair<direction>(here, mirror, *plan.fineCosines(bin), *plan.fineSines(bin));
    at[0] = here.re;
    at[1] = here.im;
    mirrorAt[0] = mirror.re;
    mirrorAt[1] = mirror.im;
  }
  for (int64_t bin = lanes; bin < m / 2; bin += lanes) {
    double* const at = x + 2 * bin;
    double* const mirrorAt = x + 2 * (m - bin - lanes + 1);
    Point<Vector> here;
    Point<Vector> mirror;
    loadPairs(at, here.re, here.im);
    loadPairs(mirrorAt, mirror.re, mirror.im);
    mirror = {reversed(mirror.re), reversed(mirror.im)};
    const Point<Vector> turns = turnsOfBins(plan, bin);
    splitPair<direction>(here, mirror, turns.re, turns.im);
    storePairs(here.re, here.im, at);
    storePairs(reversed(mirror.re), reversed(mirror.im), mirrorAt);
  }
  // The middle bin is its own mirror.
  x[m + 1] = -x[m + 1];
}
