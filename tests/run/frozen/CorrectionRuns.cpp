#include "tests/run/frozen/RunTables.h"

namespace emeg::test {

namespace {

constexpr int gradient = 1;
constexpr int gradientAndHeart = 2;

/// The answers to the three questions, for a correction with the default window.
nlohmann::json corrected(int correction, const char* volumeWise) {
  return withDescription({correction, volumeWise, "default"});
}

FrozenRun run(const std::string& name, const SimulationParameters& recording, const nlohmann::json& answers) {
  FrozenRun made;
  made.name = name;
  made.simulated = recording;
  made.answers = answers;
  return made;
}

SimulationParameters disturbed() {
  SimulationParameters parameters = simulated(Preset::Both, 2000, 21, 5, 40);
  parameters.disturbances.nrOfSpikes = 6;
  parameters.disturbances.nrOfDropouts = 2;
  parameters.disturbances.clipUv = 2000;
  parameters.lineNoise.frequencyHz = 50;
  parameters.movement.emplace();
  parameters.deadChannels = {2};
  return parameters;
}

SimulationParameters cutScan() {
  SimulationParameters parameters = simulated(Preset::Gap, 2000, 22, 2, 40);
  parameters.gradient->cutBefore = 2.5;
  parameters.gradient->endsInScan = true;
  return parameters;
}

SimulationParameters twoScans() {
  SimulationParameters parameters = simulated(Preset::Gap, 2000, 23, 2, 50);
  parameters.gradient->nrOfScans = 2;
  parameters.gradient->nrOfVolumes = 9;
  return parameters;
}

SimulationParameters irregularHeart() {
  SimulationParameters parameters = simulated(Preset::Both, 2000, 24, 3, 60);
  parameters.heart->ectopicShare = 0.05;
  parameters.heart->rmssd = 0.06;
  return parameters;
}

} // namespace

std::vector<FrozenRun> correctionRuns() {
  const SimulationParameters gap = simulated(Preset::Gap, 2000, 11, 3, 40);
  const SimulationParameters continuous = simulated(Preset::Continuous, 5000, 12, 2, 30);
  const SimulationParameters both = simulated(Preset::Both, 2000, 13, 4, 60);
  const SimulationParameters quick = simulated(Preset::Both, 5000, 14, 2, 40);
  const SimulationParameters heart = simulated(Preset::Bcg, 1000, 15, 3, 60);
  std::vector<FrozenRun> runs = {
      run("VolumeWise", gap, corrected(gradient, "yes")),
      run("SliceWise", gap, corrected(gradient, "no")),
      run("VolumeWiseWithoutGaps", continuous, corrected(gradient, "yes")),
      run("SliceWiseWithoutGaps", continuous, corrected(gradient, "no")),
      run("NarrowWindow", gap, withDescription({gradient, "yes", 1})),
      run("WideWindow", gap, withDescription({gradient, "no", 1000})),
      run("VolumeWiseQuestionCancelled", gap, withDescription({gradient, nullptr, 40})),
      run("HeartVolumeWise", both, corrected(gradientAndHeart, "yes")),
      run("HeartSliceWise", both, corrected(gradientAndHeart, "no")),
      run("HeartAt5000Hz", quick, corrected(gradientAndHeart, "yes")),
      run("HeartIrregular", irregularHeart(), corrected(gradientAndHeart, "no")),
      run("HeartWithoutScan", heart, corrected(gradientAndHeart, "yes")),
      run("HeartNotThere", gap, corrected(gradientAndHeart, "yes")),
      run("NoScan", heart, corrected(gradient, "yes")),
      run("DisturbedVolumeWise", disturbed(), corrected(gradient, "yes")),
      run("DisturbedHeartSliceWise", disturbed(), corrected(gradientAndHeart, "no")),
      run("CutScan", cutScan(), corrected(gradient, "yes")),
      run("TwoScans", twoScans(), corrected(gradient, "no")),
  };
  for (const Preset preset :
       {Preset::Fill, Preset::TwoBursts, Preset::Equidistant, Preset::Multiband, Preset::ManySlices}) {
    runs.push_back(run("ScanKind_" + nameOf(preset), simulated(preset, 5000, 16, 2, 30),
                       corrected(gradient, preset == Preset::Multiband ? "no" : "yes")));
  }
  FrozenRun dialogue = run("WindowFromTheDialogue", gap, withDescription({gradient, "yes"}));
  dialogue.answers["parameters"]["integers"]["0"] = 30;
  runs.push_back(dialogue);
  return runs;
}

} // namespace emeg::test
