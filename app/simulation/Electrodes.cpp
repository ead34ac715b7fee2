#include "app/simulation/Electrodes.h"

#include <array>
#include <cctype>
#include <cstddef>
#include <utility>

namespace emeg {

namespace {

constexpr std::array<const char*, 64> names = {
    "Fp1", "Fp2", "F3",  "F4",   "C3",  "C4",  "P3",  "P4",  "O1",   "O2",  "F7",  "F8",  "T7",
    "T8",  "P7",  "P8",  "Fz",   "Cz",  "Pz",  "Oz",  "FC1", "FC2",  "CP1", "CP2", "FC5", "FC6",
    "CP5", "CP6", "TP9", "TP10", "POz", "FT9", "F1",  "F2",  "C1",   "C2",  "P1",  "P2",  "AF3",
    "AF4", "FC3", "FC4", "CP3",  "CP4", "PO3", "PO4", "F5",  "F6",   "C5",  "C6",  "P5",  "P6",
    "AF7", "AF8", "FT7", "FT8",  "TP7", "TP8", "PO7", "PO8", "FT10", "Fpz", "CPz", "AFz"};

/// From the forehead to the back of the head.
constexpr std::array<std::pair<const char*, double>, 12> alphaWeights = {{{"Fp", 0.3},
                                                                          {"AF", 0.35},
                                                                          {"F", 0.4},
                                                                          {"FT", 0.4},
                                                                          {"FC", 0.5},
                                                                          {"T", 0.5},
                                                                          {"C", 0.6},
                                                                          {"TP", 0.7},
                                                                          {"CP", 0.8},
                                                                          {"P", 0.9},
                                                                          {"PO", 1.0},
                                                                          {"O", 1.0}}};
constexpr double alphaWeightElsewhere = 0.6;

/// The letters of a name without its number or the midline's z.
std::string regionOf(const std::string& name) {
  size_t length = 0;
  while (length < name.size() && name[length] != 'z' &&
         std::isalpha(static_cast<unsigned char>(name[length])) != 0)
    length++;
  return name.substr(0, length);
}

} // namespace

std::string electrodeName(int channel) {
  if (channel < static_cast<int>(names.size())) return names[static_cast<size_t>(channel)];
  const std::string number = std::to_string(channel + 1);
  return "Ch" + std::string(number.size() < 3 ? 3 - number.size() : 0, '0') + number;
}

double alphaWeightOf(const std::string& name) {
  const std::string region = regionOf(name);
  for (const auto& [prefix, weight] : alphaWeights)
    if (region == prefix) return weight;
  return alphaWeightElsewhere;
}

double leftShareOf(const std::string& name) {
  const char last = name.empty() ? 'z' : name.back();
  if (last < '0' || last > '9') return 0.5;
  return (last - '0') % 2 == 1 ? 0.8 : 0.2;
}

} // namespace emeg
