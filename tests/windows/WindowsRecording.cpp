#include "tests/windows/WindowsRecording.h"

#include "app/simulation/RecordingWriter.h"

#include <stdexcept>

namespace emeg::test {

std::filesystem::path WindowsRecordingTest::recordingIn(const std::string& folder) const {
  const std::filesystem::path path = std::filesystem::path(folder_.path()) / folder;
  std::filesystem::create_directories(path);
  SimulationParameters parameters = presetParameters(Preset::Both, 1000);
  parameters.nrOfChannels = 3;
  parameters.seconds = 40;
  RecordingTarget target;
  target.path = (path / "run1.ctc").string();
  target.withTruth = false;
  const std::string problem = writeRecording(parameters, target, [](double) {});
  if (!problem.empty()) throw std::runtime_error(problem);
  return path;
}

} // namespace emeg::test
