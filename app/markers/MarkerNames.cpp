#include "app/markers/MarkerNames.h"

#include "app/correct/MarkerTransfer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <vector>

namespace emeg {

namespace {

/// Names of inputs that scanners are wired to by custom, without blanks.
constexpr std::array<std::string_view, 3> customaryNames = {"r128", "s128", "t1"};
constexpr std::array<std::string_view, 4> volumeWords = {"volume", "volumes", "vol", "tr"};
constexpr std::array<std::string_view, 2> sliceWords = {"slice", "slices"};
constexpr std::array<std::string_view, 7> scannerWords = {"scanner", "scan", "fmri", "mri",
                                                          "mr",      "epi",  "bold"};
constexpr std::array<std::string_view, 9> otherWords = {"artifact", "heart", "cardiac", "ecg",     "ekg",
                                                        "qrs",      "bcg",   "bad",     "boundary"};

char lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

/// In lower case, letters and digits only.
std::string lettersAndDigits(const std::string& text) {
  std::string result;
  for (const char c : text)
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) result += lower(c);
  return result;
}

/// Runs of letters, in lower case; a capital behind a small letter begins another ("SliceTrigger").
std::vector<std::string> wordsOf(const std::string& text) {
  std::vector<std::string> words;
  bool insideWord = false;
  bool wasSmall = false;
  for (const char c : text) {
    const bool isLetter = std::isalpha(static_cast<unsigned char>(c)) != 0;
    const bool isSmall = std::islower(static_cast<unsigned char>(c)) != 0;
    if (isLetter && (!insideWord || (wasSmall && !isSmall))) words.emplace_back();
    if (isLetter) words.back() += lower(c);
    insideWord = isLetter;
    wasSmall = isSmall;
  }
  return words;
}

template <size_t Count>
bool holdsOneOf(const std::vector<std::string>& words, const std::array<std::string_view, Count>& wanted) {
  return std::find_first_of(words.begin(), words.end(), wanted.begin(), wanted.end()) != words.end();
}

bool isReportOfTheClock(const std::string& compact) {
  return compact.find("syncstatus") != std::string::npos || compact.find("syncon") != std::string::npos ||
         compact.find("syncoff") != std::string::npos;
}

/// "R128", "Response/R128".
bool isCustomary(const std::string& description) {
  const std::string name = lettersAndDigits(description.substr(description.rfind('/') + 1));
  return std::find(customaryNames.begin(), customaryNames.end(), name) != customaryNames.end();
}

} // namespace

MarkerOrigin originOfMarker(const std::string& type, const std::string& description) {
  if (isReportOfTheClock(lettersAndDigits(type + description))) return MarkerOrigin::Other;
  if (lettersAndDigits(type) == "newsegment" || description.find(gradientMarkerName) != std::string::npos ||
      description.find(pulseMarkerName) != std::string::npos)
    return MarkerOrigin::Other;
  const std::vector<std::string> words = wordsOf(type + "/" + description);
  if (holdsOneOf(words, otherWords)) return MarkerOrigin::Other;
  if (holdsOneOf(words, sliceWords)) return MarkerOrigin::Slice;
  if (holdsOneOf(words, volumeWords)) return MarkerOrigin::Volume;
  if (holdsOneOf(words, scannerWords) || isCustomary(description)) return MarkerOrigin::Scanner;
  return MarkerOrigin::Unknown;
}

} // namespace emeg
