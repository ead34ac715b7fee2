// correct IN OUT CHANNELS HZ: IN and OUT hold 32-bit floats in microvolts, time point after time point.
#include <emeg/emeg.hpp>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

int main(int argc, char** argv) try {
  if (argc != 5) return 2;
  std::ifstream in(argv[1], std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), {});
  std::vector<float> values(bytes.size() / sizeof(float));
  std::copy_n(bytes.data(), values.size() * sizeof(float), reinterpret_cast<char*>(values.data()));

  emeg::Recording recording;
  recording.samplingFrequency = std::stod(argv[4]);
  for (int c = 0; c < std::stoi(argv[3]); ++c)
    recording.channels.push_back({"EEG" + std::to_string(c), EMEG_EEG});
  const auto channels = static_cast<std::ptrdiff_t>(recording.channels.size());
  recording.nrOfSamples = static_cast<std::ptrdiff_t>(values.size()) / channels;

  emeg::Correction correction(emeg::Settings().set("low-pass", 70), recording);
  const emeg::Layout layout{channels, 1, 1};
  correction.give(values.data(), layout, recording.nrOfSamples);
  for (const emeg::Scan& scan : correction.find().scans)
    std::cerr << scan.nrOfVolumes << " volumes, TR " << scan.volumeDuration << " s\n";
  correction.run(values.data(), layout, recording.nrOfSamples);
  std::cout << correction.findings().json << "\n";

  std::ofstream out(argv[2], std::ios::binary);
  out.write(reinterpret_cast<const char*>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(float)));
  out.close();
  return out ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
