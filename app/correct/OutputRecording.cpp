#include "app/correct/OutputRecording.h"

#include "app/correct/BidsFiles.h"
#include "app/correct/CorrectedSamples.h"
#include "app/correct/Interrupt.h"
#include "app/correct/MarkerTransfer.h"
#include "app/correct/OutputHeader.h"
#include "app/correct/Sidecar.h"
#include "files/exchange/FileExtension.h"

#include <cstdio>
#include <filesystem>
#include <fmt/format.h>

namespace emeg {

bool OutputRecording::needsRanges(const CorrectionResult& planned) {
  return emeg::needsRanges(planned.place.recording, outputHeaderOf(planned.header, planned.plan, {}));
}

OutputRecording::OutputRecording(const CorrectParameters& parameters, CorrectionResult& result)
    : parameters_(parameters), result_(result) {
  const bool atWholeSamples = extensionOf(result.place.recording) == ".vhdr";
  header_ = outputHeaderOf(result.header, result.plan,
                           transferMarkers(result.header, result.plan, result.found, atWholeSamples));
}

void OutputRecording::write(Correction& correction, RecordingSource& input, ProgressObserver& observer) {
  WriteOptions options;
  options.overwrite = parameters_.force;
  const bool isKeptFirst = needsRanges(result_);
  if (isKeptFirst) {
    for (const ValueBounds& bounds : correction.correctIntoStore())
      options.ranges.push_back({bounds.smallest, bounds.largest});
    observer.sends(result_.place.recording);
  }
  writer_ = createRecording(result_.place.recording, header_, options);
  CorrectedSamples samples(*writer_, input, result_.plan, [&observer, isKeptFirst](double finished) {
    isKeptFirst ? observer.progress(finished) : InterruptWatch::check();
  });
  isKeptFirst ? correction.readCorrected(samples) : correction.correct(samples);
}

void OutputRecording::finish(RunReport& report) {
  const size_t notesBefore = report.notes().size();
  std::vector<CompanionFile> companions;
  if (result_.place.bids)
    companions = companionFiles(*result_.place.bids, result_, header_.markers, header_.samplingFrequency);
  companions.push_back({result_.place.sidecar, describeRun(report)});
  std::vector<std::string> written;
  try {
    for (const CompanionFile& file : companions) {
      writeWholeFile(file.path, file.text, parameters_.force);
      written.push_back(file.path);
    }
    writer_->finish();
  } catch (...) {
    for (const std::string& path : written) std::remove(path.c_str());
    throw;
  }
  result_.files = writer_->files();
  for (const std::string& warning : writer_->warnings()) report.note(warning);
  try {
    constexpr bool overwriteOwn = true;
    if (report.notes().size() != notesBefore)
      writeWholeFile(result_.place.sidecar, describeRun(report), overwriteOwn);
    if (result_.place.bids) describeDerivatives();
  } catch (const RecordingError& error) {
    report.warning(fmt::format("the recording is complete, but {}", error.what()));
  }
}

std::string OutputRecording::describeRun(const RunReport& report) {
  result_.sidecar = sidecarText(result_, parameters_, report);
  if (result_.place.bids)
    result_.sidecar = bidsSidecar(*result_.place.bids, result_, parameters_, result_.sidecar);
  return result_.sidecar;
}

void OutputRecording::describeDerivatives() const {
  const std::string path = result_.place.bids->derivativeRoot + "/dataset_description.json";
  constexpr bool overwrite = false;
  if (!std::filesystem::exists(path)) writeWholeFile(path, derivativeDescription(), overwrite);
}

} // namespace emeg
