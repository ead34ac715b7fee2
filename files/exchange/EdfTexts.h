#pragma once

#include "files/exchange/Recording.h"

#include <edflib.h>
#include <string>
#include <vector>

namespace emeg {

/// Patient and recording fields of a header that EDFlib has read; empty ones are left out.
std::vector<RecordingText> edfTexts(const edf_hdr_struct& edf);

/// Fills the patient and recording fields of a file that EDFlib writes. What it has no field for is told in
/// `warnings`.
void setEdfTexts(int handle, const std::vector<RecordingText>& texts, std::vector<std::string>& warnings);

} // namespace emeg
