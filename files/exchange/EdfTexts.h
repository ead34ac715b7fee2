#pragma once

#include "files/exchange/EdfHeader.h"
#include "files/exchange/Recording.h"

#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// What the header's fields for patient and recording say; EDF+ and BDF+ divide them into parts, of which
/// empty ones ("X") are left out.
std::vector<RecordingText> edfTexts(const EdfHeader& header);

/// The header's date and time; nothing when it says none, or the first second that the format can express,
/// which stands for an unknown date.
std::optional<StartTime> edfStart(const EdfHeader& header);

/// Fills the patient and recording fields of a file that EDFlib writes. What it has no field for is told in
/// `warnings`.
void setEdfTexts(int handle, const std::vector<RecordingText>& texts, std::vector<std::string>& warnings);

} // namespace emeg
