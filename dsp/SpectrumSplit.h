// Between the spectrum of the complex points x[2j] + i x[2j + 1] and that of the real signal x, for bin k and
// its mirror m - k of m complex points. T is a double, or a register whose lanes hold neighbouring bins.
// Stands inside an unnamed namespace behind dsp/SplitRadix.h, so nothing is included here.

/// Takes the spectrum of the complex points apart into that of the real signal (forward), or puts it together
/// again (inverse). `cosine` and `sine` are those of pi k / m.
template <Direction direction, class T, class Number>
inline void splitPair(Point<T>& bin, Point<T>& mirror, const Number& cosine, const Number& sine) {
  constexpr double sign = direction == Direction::Forward ? 1.0 : -1.0;
  const Point<T> even{(bin.re + mirror.re) * 0.5, (bin.im - mirror.im) * 0.5};
  const Point<T> odd{(bin.im + mirror.im) * (0.5 * sign), (mirror.re - bin.re) * (0.5 * sign)};
  const Point<T> turned = turn<direction>(odd, cosine, sine);
  bin = {even.re + turned.re, even.im + turned.im};
  mirror = {even.re - turned.re, turned.im - even.im};
}

/// The same forward, every bin times its gain, and the same inverse, in one: with e and t the even and the
/// turned odd part, the products' even part is s e + d t and their odd part d e + s t, where s and d are half
/// the sum and half the difference of the two gains.
template <class T>
inline void filterPair(Point<T>& bin, Point<T>& mirror, const T& cosine, const T& sine, const T& gain,
                       const T& mirrorGain) {
  // The two factors 1/2 of the parts stand here: they are exact anywhere.
  const T s = (gain + mirrorGain) * 0.25;
  const T d = (gain - mirrorGain) * 0.25;
  const Point<T> even{bin.re + mirror.re, bin.im - mirror.im};
  const Point<T> turned =
      turn<Direction::Forward>(Point<T>{bin.im + mirror.im, mirror.re - bin.re}, cosine, sine);
  const Point<T> newEven{s * even.re + d * turned.re, s * even.im + d * turned.im};
  const Point<T> odd{d * even.re + s * turned.re, d * even.im + s * turned.im};
  const Point<T> back = turn<Direction::Inverse>(Point<T>{-odd.im, odd.re}, cosine, sine);
  bin = {newEven.re + back.re, newEven.im + back.im};
  mirror = {newEven.re - back.re, back.im - newEven.im};
}
