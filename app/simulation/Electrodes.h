#pragma once

#include <string>

namespace emeg {

/// Name of a simulated channel (index from 0): the 64 positions of the extended 10-20 system that caps for
/// scanners carry, the commonest 32 first; further channels are "Ch065" and so on.
std::string electrodeName(int channel);

/// How strongly a channel sees the alpha rhythm: 1 over the back of the head, 0.3 over the forehead.
double alphaWeightOf(const std::string& name);

/// Share of the left hemisphere's source in a channel: 0.8 for odd numbers, 0.2 for even ones, 0.5 on the
/// midline.
double leftShareOf(const std::string& name);

} // namespace emeg
