#include "files/exchange/EdfTexts.h"

#include "files/exchange/TextFile.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace emeg {

namespace {

struct EdfField {
  const char* name;
  const char* (*read)(const edf_hdr_struct& edf);
  int (*write)(int handle, const char* text);
};

/// The fields "Patient" and "Recording" of EDF and BDF have no parts; EDF+ and BDF+ keep them as additional
/// information.
const std::array<EdfField, 9> fields = {{
    {"Patient", [](const edf_hdr_struct& edf) -> const char* { return edf.patient; },
     edf_set_patient_additional},
    {"Recording", [](const edf_hdr_struct& edf) -> const char* { return edf.recording; },
     edf_set_recording_additional},
    {"Patient code", [](const edf_hdr_struct& edf) -> const char* { return edf.patientcode; },
     edf_set_patientcode},
    {"Patient name", [](const edf_hdr_struct& edf) -> const char* { return edf.patient_name; },
     edf_set_patientname},
    {"Patient, more", [](const edf_hdr_struct& edf) -> const char* { return edf.patient_additional; },
     edf_set_patient_additional},
    {"Administration code", [](const edf_hdr_struct& edf) -> const char* { return edf.admincode; },
     edf_set_admincode},
    {"Technician", [](const edf_hdr_struct& edf) -> const char* { return edf.technician; },
     edf_set_technician},
    {"Equipment", [](const edf_hdr_struct& edf) -> const char* { return edf.equipment; }, edf_set_equipment},
    {"Recording, more", [](const edf_hdr_struct& edf) -> const char* { return edf.recording_additional; },
     edf_set_recording_additional},
}};

const char* const sex = "Patient's sex";
const char* const birthDate = "Patient's date of birth";

bool setSex(int handle, const std::string& text) {
  if (text != "Male" && text != "Female") return false;
  return edf_set_gender(handle, text == "Male" ? 1 : 0) == 0;
}

bool setBirthDate(int handle, const std::string& text) {
  int year = 0;
  int month = 0;
  int day = 0;
  return std::sscanf(text.c_str(), "%4d-%2d-%2d", &year, &month, &day) == 3 &&
         edf_set_birthdate(handle, year, month, day) == 0;
}

/// What EDF+ writes for a field that says nothing.
bool saysSomething(const std::string& text) {
  return !text.empty() && text != "X";
}

} // namespace

std::vector<RecordingText> edfTexts(const edf_hdr_struct& edf) {
  std::vector<RecordingText> texts;
  for (const EdfField& field : fields) {
    const std::string text = toUtf8(trimmed(field.read(edf)));
    if (saysSomething(text)) texts.push_back({field.name, text});
  }
  if (saysSomething(edf.gender)) texts.push_back({sex, edf.gender});
  if (edf.birthdate_year > 0) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", edf.birthdate_year, edf.birthdate_month,
                  edf.birthdate_day);
    texts.push_back({birthDate, text.data()});
  }
  return texts;
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
