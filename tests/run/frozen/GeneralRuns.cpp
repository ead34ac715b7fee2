#include "tests/run/frozen/RunTables.h"

namespace emeg::test {

namespace {

using nlohmann::json;

/// Answers of all dialogues by a part of their text, so that a run is read without counting questions.
json prompts(const std::vector<std::pair<std::string, json>>& answers) {
  json given = withDescription(json::array());
  given["prompts"] = json::array();
  for (const auto& [prompt, answer] : answers)
    given["prompts"].push_back({{"prompt", prompt}, {"answer", answer}});
  return given;
}

FrozenRun run(const std::string& name, const std::string& options, const json& answers) {
  FrozenRun made;
  made.name = name;
  made.simulated = simulated(Preset::Gap, 2000, 51, 3, 25);
  made.options = options;
  made.answers = answers;
  return made;
}

FrozenRun withHeart(FrozenRun made) {
  made.simulated = simulated(Preset::Both, 2000, 52, 4, 40);
  return made;
}

const std::string correction = "artifact correction:", volumeWise = "volume-wise", window = "Window",
                  decimation = "decimation factor", notches = "number of notches", highPass = "high-pass",
                  lowPass = "low-pass", start = "starting point", end = "end point",
                  reference = "average reference", channels = "Would you like to export",
                  customise = "customize condition";

std::vector<FrozenRun> filterRuns() {
  return {
      // Without other work the correction is asked for, too, and means nothing.
      run("HighPass", "filters",
          prompts({{correction, 1}, {decimation, 1}, {notches, 0}, {highPass, 0.5}, {lowPass, 0}})),
      run("LowPass", "filters",
          prompts({{correction, 1}, {decimation, 1}, {notches, 0}, {highPass, 0}, {lowPass, 70}})),
      run("Notches", "filters",
          prompts({{correction, 1},
                   {decimation, 1},
                   {notches, 2},
                   {"frequency [0-1000.00] for notch #1", 50},
                   {"notch #1", 4},
                   {"frequency [0-1000.00] for notch #2", 600},
                   {"notch #2", 10},
                   {highPass, 0},
                   {lowPass, 0}})),
      run("Decimation", "filters",
          prompts({{correction, 1}, {decimation, 4}, {notches, 0}, {highPass, 0}, {lowPass, 0}})),
      run("AllFilters", "filters scaling",
          prompts({{correction, 1},
                   {decimation, 8},
                   {notches, 1},
                   {"frequency", 50},
                   {"width", 4},
                   {highPass, 1},
                   {lowPass, 40}})),
      run("TooManyNotches", "filters",
          [] {
            json given =
                prompts({{correction, 1}, {decimation, 2}, {notches, 20}, {highPass, 0}, {lowPass, 0}});
            for (const auto& [prompt, answer] : {std::pair("frequency", 60), std::pair("width", 2)})
              given["prompts"].push_back({{"prompt", prompt}, {"answer", answer}, {"repeat", true}});
            return given;
          }()),
  };
}

std::vector<FrozenRun> dialogueRuns() {
  json fromDialogue = prompts({{correction, 1}, {volumeWise, "yes"}});
  fromDialogue["parameters"] = {
      {"integers", {{"0", 2}, {"1", 2}, {"2", 2}, {"3", 3}, {"4", 2}, {"5", 2}, {"6", 2}}},
      {"floats", {{"0", 0.7}, {"1", 70}, {"2", 50}, {"3", 5}}}};
  json scaled = prompts({{correction, 1}, {"scaling order", 3}});
  return {
      run("Interval", "interval", prompts({{correction, 1}, {start, 5000.3}, {end, 20123.7}})),
      run("IntervalToTheEnd", "interval header", prompts({{correction, 1}, {start, 7000}, {end, "default"}})),
      run("WholeInterval", "interval", prompts({{correction, 1}, {start, 0}, {end, "default"}})),
      run("AverageReference", "reference channels",
          prompts({{correction, 1}, {channels, 1}, {reference, "yes"}})),
      run("OutputWouldReplaceTheInput", "reference", prompts({{correction, 1}, {reference, "yes"}})),
      run("Scaling", "scaling dialogue", scaled),
      run("EverythingFromTheDialogue", "filters scaling reference artifacts dialogue", fromDialogue),
      run("AllChannels", "channels header", prompts({{correction, 1}, {channels, 1}})),
      run("ChosenChannels", "channels",
          prompts({{correction, 1},
                   {channels, 4},
                   {"channels to select", 2},
                   {"channel #1/2", 3},
                   {"channel #2/2", 1}})),
      run("NoChoiceOfChannels", "channels", prompts({{correction, 1}, {channels, 2}})),
      run("NoMEGChannels", "meg channels header", prompts({{channels, 1}})),
      run("NamedConditions", "artifacts names",
          prompts({{correction, 1},
                   {volumeWise, "yes"},
                   {window, 100},
                   {customise, "yes"},
                   {"alternate name", "Quiet"},
                   {"delay", 250},
                   {"alternate name", "Busy"},
                   {"delay", 0}})),
  };
}

std::vector<FrozenRun> combinedRuns() {
  const std::string all = "channels interval filters artifacts scaling reference header";
  const auto answers = [](int choice, const char* mode) {
    return prompts({{channels, 1},
                    {start, 4000},
                    {end, 22000},
                    {correction, choice},
                    {volumeWise, mode},
                    {decimation, 4},
                    {notches, 1},
                    {"frequency", 50},
                    {"width", 3},
                    {highPass, 0.5},
                    {lowPass, 80},
                    {reference, "yes"},
                    {window, 60}});
  };
  return {
      run("EverythingVolumeWise", all, answers(1, "yes")),
      run("EverythingSliceWise", all, answers(1, "no")),
      withHeart(run("EverythingWithHeart", all, answers(2, "yes"))),
      withHeart(run("HeartAndReference", "artifacts reference",
                    prompts({{correction, 2}, {volumeWise, "no"}, {reference, "yes"}, {window, 150}}))),
      withHeart(
          run("HeartInAnInterval", "artifacts interval",
              prompts({{start, 3000}, {end, 38000}, {correction, 2}, {volumeWise, "yes"}, {window, 150}}))),
      run("GradientAndFilters", "artifacts filters",
          prompts({{correction, 1},
                   {volumeWise, "no"},
                   {decimation, 10},
                   {notches, 0},
                   {highPass, 0},
                   {lowPass, 0},
                   {window, 150}})),
  };
}

std::vector<FrozenRun> cancelledRuns() {
  return {
      run("CancelledAtTheChannels", "channels", prompts({{channels, nullptr}})),
      run("CancelledAtAChannel", "channels",
          prompts({{channels, 4}, {"channels to select", 2}, {"channel #1/2", nullptr}})),
      run("CancelledAtTheStart", "interval", prompts({{start, nullptr}})),
      run("CancelledAtTheEnd", "interval", prompts({{start, 10}, {end, nullptr}})),
      run("CancelledAtTheDecimation", "filters", prompts({{correction, 1}, {decimation, nullptr}})),
      run("CancelledAtTheNotches", "filters",
          prompts({{correction, 1}, {decimation, 1}, {notches, nullptr}})),
      run("CancelledAtTheCutOff", "filters",
          prompts({{correction, 1}, {decimation, 1}, {notches, 0}, {highPass, nullptr}})),
      run("CancelledAtTheReference", "reference", prompts({{correction, 1}, {reference, nullptr}})),
      run("CancelledAtTheScaling", "scaling dialogue",
          prompts({{correction, 1}, {"scaling order", nullptr}})),
      run("CancelledAtTheDelay", "artifacts names",
          prompts({{correction, 1},
                   {volumeWise, "yes"},
                   {window, 100},
                   {customise, "yes"},
                   {"alternate name", "Quiet"},
                   {"delay", nullptr}})),
      run("EmptyInterval", "interval", prompts({{correction, 1}, {start, 30000}, {end, 30000}})),
  };
}

} // namespace

std::vector<FrozenRun> generalRuns() {
  std::vector<FrozenRun> runs;
  for (const std::vector<FrozenRun>& some : {filterRuns(), dialogueRuns(), combinedRuns(), cancelledRuns()})
    for (FrozenRun made : some) {
      made.name = "General_" + made.name;
      runs.push_back(std::move(made));
    }
  return runs;
}

} // namespace emeg::test
