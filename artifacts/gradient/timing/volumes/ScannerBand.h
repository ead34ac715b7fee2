#pragma once

#include "artifacts/gradient/ScanSegment.h"

#include <span>

namespace emeg {

/// Share of the power that the average volume explains (what it explains of mere noise taken off) at
/// frequencies where a scanner is heard and little else is: above 120 Hz (a quarter of the sampling frequency
/// where that is less), the mains' 50 and 60 Hz and their multiples left out. Heart beats, pacemakers,
/// ventilators, helium pumps and the mains repeat themselves as faithfully as a scanner, but below. Up to 16
/// volumes are looked at.
double explainedInScannerBand(std::span<const double> sharpened, double samplingFrequency,
                              const ScanSegment& scan);

} // namespace emeg
