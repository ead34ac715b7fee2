#include "files/exchange/EdfTexts.h"

#include "files/exchange/TextFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <edflib.h>
#include <string_view>

namespace emeg {

namespace {

const char* const sex = "Patient's sex";
const char* const birthDate = "Patient's date of birth";

/// EDF's fields "Patient" and "Recording" have no parts; EDF+ keeps them as additional information.
struct EdfField {
  const char* name;
  int (*write)(int handle, const char* text);
};
const std::array<EdfField, 9> fields = {{
    {"Patient", edf_set_patient_additional},
    {"Recording", edf_set_recording_additional},
    {"Patient code", edf_set_patientcode},
    {"Patient name", edf_set_patientname},
    {"Patient, more", edf_set_patient_additional},
    {"Administration code", edf_set_admincode},
    {"Technician", edf_set_technician},
    {"Equipment", edf_set_equipment},
    {"Recording, more", edf_set_recording_additional},
}};

bool setSex(int handle, const std::string& text) {
  return (text == "M" || text == "F") && edf_set_gender(handle, text == "M" ? 1 : 0) == 0;
}

constexpr std::string_view months = "JANFEBMARAPRMAYJUNJULAUGSEPOCTNOVDEC";

/// "03-FEB-1980"
bool setBirthDate(int handle, const std::string& text) {
  int year = 0;
  int day = 0;
  std::array<char, 4> month{};
  if (std::sscanf(text.c_str(), "%2d-%3c-%4d", &day, month.data(), &year) != 3) return false;
  const size_t place = months.find(month.data());
  return place != std::string_view::npos && place % 3 == 0 &&
         edf_set_birthdate(handle, year, static_cast<int>(place / 3) + 1, day) == 0;
}

/// The parts of an EDF+ field: divided by blanks, a blank within a part is '_'. The last takes all the rest.
void addParts(std::vector<RecordingText>& texts, std::string_view field,
              const std::vector<const char*>& names) {
  for (size_t i = 0; i < names.size() && !field.empty(); ++i) {
    const size_t end = i + 1 < names.size() ? field.find(' ') : std::string_view::npos;
    std::string part(field.substr(0, end));
    field.remove_prefix(end == std::string_view::npos ? field.size() : end + 1);
    std::replace(part.begin(), part.end(), '_', ' ');
    const bool isStartDate = std::string_view(names[i]).empty();
    if (!part.empty() && part != "X" && !isStartDate) texts.push_back({names[i], part});
  }
}

} // namespace

std::vector<RecordingText> edfTexts(const EdfHeader& header) {
  std::vector<RecordingText> texts;
  const std::string start = "Startdate ";
  if (header.isPlus) {
    addParts(texts, header.patient, {"Patient code", sex, birthDate, "Patient name", "Patient, more"});
    if (header.recording.starts_with(start))
      addParts(texts, std::string_view(header.recording).substr(start.size()),
               {"", "Administration code", "Technician", "Equipment", "Recording, more"});
    else if (!header.recording.empty())
      texts.push_back({"Recording", header.recording});
  } else {
    if (!header.patient.empty()) texts.push_back({"Patient", header.patient});
    if (!header.recording.empty()) texts.push_back({"Recording", header.recording});
  }
  return texts;
}

std::optional<StartTime> edfStart(const EdfHeader& header) {
  constexpr int firstYear = 85; // of the 20th century
  StartTime start;
  if (std::sscanf(header.startDate.c_str(), "%2d.%2d.%2d", &start.day, &start.month, &start.year) != 3 ||
      std::sscanf(header.startTime.c_str(), "%2d.%2d.%2d", &start.hour, &start.minute, &start.second) != 3)
    return std::nullopt;
  start.year += start.year < firstYear ? 2000 : 1900;
  const bool possible = start.month >= 1 && start.month <= 12 && start.day >= 1 && start.day <= 31 &&
                        start.hour >= 0 && start.hour < 24 && start.minute >= 0 && start.minute < 60 &&
                        start.second >= 0 && start.second < 60;
  const bool unknown = header.startDate == "01.01.85" && header.startTime == "00.00.00";
  return possible && !unknown ? std::optional(start) : std::nullopt;
}

void setEdfTexts(int handle, const std::vector<RecordingText>& texts, std::vector<std::string>& warnings) {
  for (const RecordingText& text : texts) {
    const auto field = std::find_if(fields.begin(), fields.end(), [&text](const EdfField& candidate) {
      return text.name == candidate.name;
    });
    bool written = false;
    if (field != fields.end()) written = field->write(handle, text.text.c_str()) == 0;
    if (text.name == sex) written = setSex(handle, text.text);
    if (text.name == birthDate) written = setBirthDate(handle, text.text);
    if (!written)
      warnings.push_back("EDF and BDF have no field for the text \"" + text.name + "\", it is lost.");
  }
}

} // namespace emeg
