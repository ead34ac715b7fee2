#pragma once

#include <cstddef>
#include <vector>

namespace emeg {

/// Linear-phase filters of finite length: sinc functions in a Hamming window, as the `firwin` design of
/// MNE-Python (Widmann, Schroeger, Maess: Digital filter design for electrophysiological data - a practical
/// approach, J. Neurosci. Methods 250, 2015).
///
/// Edges, transition widths and sampling rates are in Hz. At an edge the amplitude is 0.5 within 0.01; half a
/// transition beyond it the gain is at least 40 dB down, half a transition before it within 0.1 dB of 1. The
/// taps are symmetric, odd in number and last 3.3/w seconds (four taps more below 100). The width w is the
/// transition, or the way from an edge to 0 Hz or rate/2 where that is less: beyond, an edge would meet its
/// own mirror image. A low-pass and a band-stop have gain 1 at 0 Hz, a high-pass has gain 0 there, to
/// rounding.
///
/// std::invalid_argument, with a sentence: an edge outside of 0 ... rate/2 (both excluded), a transition that
/// is not positive or reaches below 0 Hz or above rate/2, anything that is not a finite number, and filters
/// of more than longestFir taps.
std::vector<double> highPassTaps(double edge, double transition, double rate);
std::vector<double> lowPassTaps(double edge, double transition, double rate);

/// Removes what lies between lowEdge and highEdge. The transition must not be wider than the band, or its
/// middle would not be 40 dB down.
std::vector<double> bandStopTaps(double lowEdge, double highEdge, double transition, double rate);

/// 2^24 + 1: 0.001 Hz at 5 kHz.
inline constexpr std::size_t longestFir = 16777217;

/// Transition widths where none is given, for edges that the designs above take.
///
/// As in MNE-Python a quarter of the edge and at least 2 Hz, but no wider than the way to 0 Hz or to rate/2.
/// (There the edge is where the pass band ends; here it is the middle of the transition, so that the way to
/// both sides counts.)
double defaultHighPassTransition(double edge, double rate);
double defaultLowPassTransition(double edge, double rate);

/// 1 Hz, but no wider than the band (so that its middle is 40 dB down), the way from it to 0 Hz or that to
/// rate/2.
double defaultBandStopTransition(double lowEdge, double highEdge, double rate);

} // namespace emeg
