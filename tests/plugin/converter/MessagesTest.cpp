#include "plugin/converter/messages/Messages.h"
#include "tests/plugin/converter/ScriptedHost.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

TEST(Messages, EveryProgressLineCarriesThePrefix) {
  ScriptedHost host;
  ProgressLog log("// EMEG artifacts > ");
  log.logProgress("Creating chunk #%d/%d", 3, 32);
  EXPECT_EQ(host.calls, Lines{"log // EMEG artifacts > Creating chunk #3/32"});
}

TEST(Messages, OfTwoConsecutiveMessagesOnlyTheSecondStaysInTheBuffer) {
  ScriptedHost host;
  ProgressLog log("// EMEG artifacts > ");
  log.logProgress("A first message that is longer than the second");
  log.logProgress("Second");
  EXPECT_STREQ(log.logBuffer(), "// EMEG artifacts > Second");
  EXPECT_STREQ(log.logMessage(), "Second");
  EXPECT_EQ(host.calls.back(), "log // EMEG artifacts > Second");
}

TEST(Messages, AMessageIsCutWhereTheBufferOf512CharactersEnds) {
  ScriptedHost host;
  ProgressLog log("// EMEG artifacts > ");
  log.logProgress("%s", std::string(2000, 'x').c_str());
  EXPECT_EQ(std::string(log.logBuffer()), "// EMEG artifacts > " + std::string(511 - 20, 'x'));
}

TEST(Messages, APrefixLongerThanTheBufferIsCut) {
  ScriptedHost host;
  ProgressLog log(std::string(2000, 'p').c_str());
  log.logProgress("%s", "message");
  EXPECT_EQ(std::string(log.logBuffer()), std::string(511, 'p'));
}

TEST(Messages, AnAbortIsAnEmptyLogLineThenTheAbortLineThenFalse) {
  ScriptedHost host;
  ProgressLog log("// EMEG artifacts > ");
  EXPECT_FALSE(abortRun(log));
  EXPECT_EQ(host.calls, (Lines{"log ", "log // EMEG artifacts > Plugin execution was aborted."}));
}

TEST(Messages, AnErrorIsOneMessageBoxWithoutPrefixAndFalse) {
  ScriptedHost host;
  EXPECT_FALSE(showError("No channels found!"));
  EXPECT_EQ(host.calls, Lines{"box No channels found!"});
}

TEST(Messages, AFileErrorWithoutErrorNumberSpeaksOfTheEndOfTheFile) {
  ScriptedHost host;
  errno = 0;
  EXPECT_FALSE(reportFileError("Error reading file: "));
  EXPECT_EQ(host.calls, Lines{"box Error reading file: <br>Attempt to read beyond the end of file."});
}

TEST(Messages, AFileErrorNamesTheCurrentErrorNumbersText) {
  ScriptedHost host;
  errno = ENOENT;
  EXPECT_FALSE(reportFileError("Error accessing CTC file."));
  EXPECT_EQ(host.calls, Lines{"box Error accessing CTC file.<br>No such file or directory."});
}

TEST(ErrorTexts, TheNumbersThatAllPlatformsShareHaveTheTextsOfTheTable) {
  const std::vector<std::pair<int, std::string>> table = {
      {1, "Operation not permitted"},
      {2, "No such file or directory"},
      {3, "No such process"},
      {4, "Interrupted function"},
      {5, "I/O error"},
      {6, "No such device or address"},
      {7, "Argument list too long"},
      {8, "Exec format error"},
      {9, "Bad file number"},
      {10, "No spawned processes"},
      {11, "No more processes or not enough memory or maximum nesting level reached"},
      {12, "Not enough memory"},
      {13, "Permission denied"},
      {14, "Bad address"},
      {16, "Device or resource busy"},
      {17, "File exists"},
      {18, "Cross-device link"},
      {19, "No such device"},
      {20, "Not a directory"},
      {21, "Is a directory"},
      {22, "Invalid argument"},
      {23, "Too many files open in system"},
      {24, "Too many open files"},
      {25, "Inappropriate I/O control operation"},
      {27, "File too large"},
      {28, "No space left on device"},
      {29, "Invalid seek"},
      {30, "Read-only file system"},
      {31, "Too many links"},
      {32, "Broken pipe"},
      {33, "Math argument"},
      {34, "Result too large"},
  };
  for (const auto& [number, text] : table) EXPECT_EQ(errorTextOf(number), text) << number;
}

TEST(ErrorTexts, NumbersThatDifferBetweenPlatformsAreMappedByTheirMeaning) {
  EXPECT_STREQ(errorTextOf(EDEADLK), "Resource deadlock would occur");
  EXPECT_STREQ(errorTextOf(ENAMETOOLONG), "Filename too long");
  EXPECT_STREQ(errorTextOf(ENOLCK), "No locks available");
  EXPECT_STREQ(errorTextOf(ENOSYS), "Function not supported");
  EXPECT_STREQ(errorTextOf(ENOTEMPTY), "Directory not empty");
  EXPECT_STREQ(errorTextOf(EILSEQ), "Illegal byte sequence");
}

TEST(ErrorTexts, ANumberThatIsNotListedSpeaksOfTheEndOfTheFile) {
  for (const int number : {0, -1, 15, 26, 1000, ELOOP, EOVERFLOW})
    EXPECT_STREQ(errorTextOf(number), "Attempt to read beyond the end of file") << number;
}

} // namespace
} // namespace emeg
