#include "app/correct/Correction.h"

#include "app/correct/BidsFiles.h"
#include "app/correct/Checksum.h"
#include "app/correct/CorrectedRecording.h"
#include "app/correct/FilterAdvice.h"
#include "app/correct/Interrupt.h"
#include "app/correct/MarkerTransfer.h"
#include "app/correct/RunWarnings.h"
#include "app/correct/ScanWarnings.h"
#include "app/correct/ScratchFolder.h"
#include "app/correct/ScratchInput.h"
#include "app/correct/Sidecar.h"
#include "files/exchange/FileExtension.h"
#include "files/formats/ChunkFiles.h"

#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <memory>

namespace emeg {

namespace {

// Where the parts of a run begin, as fractions of its time.
constexpr double readingEnds = 0.1;
constexpr double convertingEnds = 0.8;
constexpr double measuringEnds = 0.9;
constexpr double rangesEnd = 0.95;

/// One run; its members are made in the order of the steps.
class Correction {
public:
  Correction(const CorrectParameters& parameters, RunReport& report)
      : parameters_(parameters), report_(report) {}

  CorrectionResult run() {
    open();
    advise();
    makeScratch();
    copyIn();
    convert(true);
    measure();
    if (!looksLikeScan(result_)) takeBackGradientCorrection();
    judge();
    write();
    return std::move(result_);
  }

private:
  void open() {
    try {
      OpenOptions options;
      options.channels = parameters_.channels;
      reader_ = openRecording(parameters_.input, options);
    } catch (const RecordingError& error) {
      throw UnusableInput(error.what());
    }
    result_.header = reader_->header();
    for (const std::string& warning : result_.header.warnings) report_.note(warning);
    if (parameters_.bids) useBidsChannels();
    result_.plan = planCorrection(result_.header, parameters_);
    result_.place = outputPlaceOf(parameters_, result_.plan);
    checkPlaceIsFree(result_.place, parameters_.force);
  }

  void useBidsChannels() {
    try {
      applyBidsChannels(bidsPlaceOf(parameters_.input, {}), result_.header);
    } catch (const RecordingError& error) {
      throw UnusableInput(error.what());
    }
  }

  /// What the user should know before the wait.
  void advise() {
    if (parameters_.repairSaturation) {
      checkSaturationCanShow(result_.header, result_.plan, parameters_.input);
      scratchSamples_ = ScratchSamples::Float64;
    }
    const FilterAdvice advice =
        adviceOnFilters(parameters_, result_.plan.decimationFactor, result_.header.samplingFrequency);
    for (const std::string& note : advice.notes) report_.note(note);
    for (const std::string& warning : advice.warnings) report_.warning(warning);
    const bool losesTriggers = result_.plan.decimationFactor > 1 &&
                               result_.plan.channels.corrected.size() < result_.plan.channels.channels.size();
    if (losesTriggers)
      report_.note(
          fmt::format("of trigger and status channels every {}-th sample is kept: shorter pulses get lost "
                      "there. Markers keep their times.",
                      result_.plan.decimationFactor));
  }

  void makeScratch() {
    const std::string outputFolder = folderOf(result_.place.recording);
    const std::string scratchParent = parameters_.scratch.empty() ? outputFolder : parameters_.scratch;
    for (const std::string& stale : staleScratchFolders(scratchParent))
      report_.note(fmt::format("\"{}\" was left by a run that was killed; it may be removed.", stale));

    const CorrectionPlan& plan = result_.plan;
    const auto corrected = static_cast<uint64_t>(plan.channels.corrected.size());
    const auto samples = static_cast<uint64_t>(plan.nrOfTimePoints) * corrected;
    const uint64_t perChunkRounding = ChunkFiles::nrOfChunks * corrected;
    const auto outputs = static_cast<uint64_t>(plan.nrOfOutputTimePoints());
    const uint64_t chunks = (samples + perChunkRounding) * sizeof(float);
    const uint64_t scratchInput = samples * static_cast<uint64_t>(bytesPerSampleOf(scratchSamples_));
    checkRoom({{scratchParent, scratchInput + chunks + outputs * corrected * sizeof(float)},
               {outputFolder, outputs * result_.header.channels.size() * sizeof(float)}});
    scratch_ = std::make_unique<ScratchFolder>(scratchParent);
  }

  void copyIn() {
    report_.step(fmt::format("Reading \"{}\"", parameters_.input));
    try {
      const ScratchContent content =
          writeScratchInput(*reader_, result_.plan, scratchSamples_, inputPath(), partOfRun(0, readingEnds));
      if (content.nrOfNotFinite > 0)
        report_.warning(
            fmt::format("{} samples are no numbers and were taken as 0: look at the recording there.",
                        content.nrOfNotFinite));
      if (parameters_.repairSaturation)
        result_.repaired = repairSaturatedChannels(inputPath(), result_.header, result_.plan,
                                                   partOfRun(readingEnds, readingEnds));
    } catch (const RecordingError& error) {
      throw UnusableInput(error.what());
    }
    for (const std::string& file : result_.header.files)
      result_.inputFiles.push_back({file, sha256Of(file, InterruptWatch::check)});
  }

  void convert(bool removeGradient) {
    const CorrectionPlan& plan = result_.plan;
    ConverterJob job;
    job.dialogue = plan.dialogue;
    job.dialogue.ctcPath = inputPath();
    job.roles = plan.channels.roles();
    job.samplingFrequency = result_.header.samplingFrequency;
    job.seconds = static_cast<double>(plan.nrOfTimePoints) / job.samplingFrequency;
    job.lineFrequencies = parameters_.lineNoise;
    job.timing = plan.timing;
    job.beats = plan.beats;
    job.removeGradient = removeGradient;
    job.stopWithoutSequence = removeGradient && !parameters_.allowUncorrected;

    ConverterProgress progress(static_cast<int>(job.roles.size()), parameters_.bcg);
    const ConverterOutcome outcome = runConverter(job, [&](const std::string& line) {
      const std::string step = progress.take(line);
      if (!step.empty()) report_.step(step);
      report_.detail(line);
      partOfRun(readingEnds, convertingEnds)(progress.finished());
    });
    result_.found = outcome.found;
    if (!outcome.errors.empty()) throw FailedRun(outcome.errors.front());
    if (!outcome.found.hasSequence()) requireSequence();
    if (!outcome.finished) throw FailedRun("the converter ended the run without saying why.");
    convertedPath_ = outcome.outputPath;
  }

  void requireSequence() const {
    if (parameters_.allowUncorrected) return;
    if (!result_.plan.timing.isBlind())
      throw FailedRun(fmt::format(
          "nothing in \"{}\" repeats with the timing that was given, so nothing was written. Are they "
          "the scanner's markers, is the TR in seconds? Without these options the timing is looked "
          "for in the EEG; --allow-uncorrected writes the output all the same.",
          parameters_.input));
    throw FailedRun(fmt::format(
        "no scanner sequence was found in \"{}\", so nothing was written. Is it a recording "
        "with the scanner running, for three volumes at least? --interval START:END chooses the part "
        "with the scan, --channels NAME,... channels that show it; --volume-markers NAME or --tr "
        "SECONDS --slices N tell its timing; --allow-uncorrected writes the output all the same.",
        parameters_.input));
  }

  void measure() {
    report_.step("Measuring what is left");
    const std::vector<FoundScan>& scans = result_.found.timing.scans;
    if (scans.empty()) return;
    const auto before = openRecording(inputPath());
    const auto after = openRecording(convertedPath_);
    result_.quality =
        measureQuality(*before, *after, result_.plan, scans, partOfRun(convertingEnds, measuringEnds));
  }

  /// Something was detected that is no scan: its templates are EEG.
  void takeBackGradientCorrection() {
    requireSequence();
    if (!result_.found.hasSequence()) return;
    convert(false);
    result_.quality.clear();
  }

  void judge() {
    for (const std::string& note : notesOnTiming(result_.found.timing)) report_.note(note);
    for (const std::string& warning : warningsOf(result_, parameters_)) report_.warning(warning);
  }

  void write() {
    report_.step(fmt::format("Writing \"{}\"", result_.place.recording));
    try {
      const auto converted = openRecording(convertedPath_);
      CorrectedRecording corrected(*reader_, *converted, result_.plan,
                                   transferMarkers(result_.header, result_.plan, result_.found,
                                                   extensionOf(result_.place.recording) == ".vhdr"));
      WriteOptions options;
      options.overwrite = parameters_.force;
      if (needsRanges(result_.place.recording, corrected.header()))
        options.ranges = measureRanges(corrected, partOfRun(measuringEnds, rangesEnd));
      const auto writer = createRecording(result_.place.recording, corrected.header(), options);
      copyRecording(corrected, *writer, partOfRun(rangesEnd, 1));
      InterruptWatch::check();
      finish(*writer, corrected.header());
    } catch (const RecordingError& error) {
      throw FailedRun(error.what());
    }
  }

  /// The set is complete when its header is there: other files come before it, and go with it when it fails.
  void finish(RecordingWriter& writer, const RecordingHeader& header) {
    const size_t notesBefore = report_.notes().size();
    std::vector<CompanionFile> companions;
    if (result_.place.bids)
      companions = companionFiles(*result_.place.bids, result_, header.markers, header.samplingFrequency);
    companions.push_back({result_.place.sidecar, describeRun()});
    try {
      for (const CompanionFile& file : companions) {
        writeWholeFile(file.path, file.text, parameters_.force);
        written_.push_back(file.path);
      }
      writer.finish();
    } catch (...) {
      for (const std::string& path : written_) std::remove(path.c_str());
      throw;
    }
    result_.files = writer.files();
    for (const std::string& warning : writer.warnings()) report_.note(warning);
    try {
      constexpr bool overwriteOwn = true;
      if (report_.notes().size() != notesBefore)
        writeWholeFile(result_.place.sidecar, describeRun(), overwriteOwn);
      if (result_.place.bids) describeDerivatives();
    } catch (const RecordingError& error) {
      report_.warning(fmt::format("the recording is complete, but {}", error.what()));
    }
  }

  std::string describeRun() {
    result_.sidecar = sidecarText(result_, parameters_, report_);
    if (result_.place.bids)
      result_.sidecar = bidsSidecar(*result_.place.bids, result_, parameters_, result_.sidecar);
    return result_.sidecar;
  }

  void describeDerivatives() const {
    const std::string path = result_.place.bids->derivativeRoot + "/dataset_description.json";
    constexpr bool overwrite = false;
    if (!std::filesystem::exists(path)) writeWholeFile(path, derivativeDescription(), overwrite);
  }

  std::string inputPath() const { return scratch_->file("recording.ctc"); }

  /// Reports a step's progress as that of the whole run, and ends the run when the user wants that.
  std::function<void(double)> partOfRun(double begin, double end) {
    return [this, begin, end](double finished) {
      InterruptWatch::check();
      report_.progress(begin + (end - begin) * finished);
    };
  }

  const CorrectParameters& parameters_;
  RunReport& report_;
  CorrectionResult result_;
  ScratchSamples scratchSamples_ = ScratchSamples::Float32;
  std::unique_ptr<RecordingReader> reader_;
  std::unique_ptr<ScratchFolder> scratch_;
  std::string convertedPath_;
  std::vector<std::string> written_; ///< beside the recording, in this run
};

} // namespace

bool looksLikeScan(const CorrectionResult& result) {
  return result.found.hasSequence() && looksLikeScan(result.found.timing.source, result.qualityOfLongest());
}

CorrectionResult correctRecording(const CorrectParameters& parameters, RunReport& report) {
  return Correction(parameters, report).run();
}

} // namespace emeg
