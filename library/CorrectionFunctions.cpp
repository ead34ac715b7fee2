#include "library/CorrectionHandle.h"
#include "library/Guarded.h"
#include "library/StridedSamples.h"

#include <memory>

namespace {

using emeg::Refusal;

/// Puts the corrected samples into a caller's array.
class ArraySink : public emeg::CorrectedSink {
public:
  ArraySink(void* samples, const emeg_layout& layout, int64_t capacity, const std::vector<bool>& isRaw)
      : samples_(samples), layout_(layout), capacity_(capacity), isRaw_(isRaw) {}

  void take(int64_t count, std::span<const double> values) override {
    if (count > capacity_ - first_) throw Refusal(EMEG_FAILED, "The result is longer than it was announced.");
    emeg::scatter(values, first_, count, isRaw_, layout_, samples_);
    first_ += count;
  }

private:
  void* samples_;
  emeg_layout layout_;
  int64_t capacity_;
  const std::vector<bool>& isRaw_;
  int64_t first_ = 0;
};

/// Hands them to a caller's function.
class CallbackSink : public emeg::CorrectedSink {
public:
  CallbackSink(emeg_writer writer, void* user) : writer_(writer), user_(user) {}

  void take(int64_t count, std::span<const double> values) override {
    if (writer_(user_, first_, count, values.data()) != 0) throw emeg::Cancelled();
    first_ += count;
  }

private:
  emeg_writer writer_;
  void* user_;
  int64_t first_ = 0;
};

void give(emeg_correction& correction, const void* samples, const emeg_layout* layout, int64_t count) {
  emeg::refuseNull(samples, "samples");
  emeg::refuseNull(layout, "layout");
  emeg::checkLayout(*layout);
  const int64_t begin = correction.nrOfTaken;
  correction.take(count, [&](int64_t first, int64_t length, std::vector<double>& microvolts) {
    emeg::gather(samples, *layout, first - begin, length, correction.isRaw, microvolts);
  });
}

void runInto(emeg_correction& correction, void* samples, const emeg_layout* layout, int64_t capacity) {
  emeg::refuseNull(samples, "samples");
  emeg::refuseNull(layout, "layout");
  emeg::checkLayout(*layout);
  const int64_t needed = correction.running().nrOfOutputs();
  if (capacity < needed)
    throw Refusal(EMEG_BAD_ARGUMENT, "The array has room for " + std::to_string(capacity) +
                                         " time points; the result has " + std::to_string(needed) + ".");
  ArraySink sink(samples, *layout, capacity, correction.isRaw);
  correction.correct(sink);
}

} // namespace

emeg_status emeg_correction_create(const emeg_settings* settings, const emeg_recording* recording,
                                   const char* scratch_file, emeg_correction** correction) {
  if (correction == nullptr) return EMEG_BAD_ARGUMENT;
  *correction = nullptr;
  if (settings == nullptr || recording == nullptr) return EMEG_BAD_ARGUMENT;
  const emeg_status status = emeg::guarded(
      [&] { *correction = std::make_unique<emeg_correction>(*settings, *recording).release(); });
  if (status != EMEG_OK) return status;
  return emeg::guarded((*correction)->error,
                       [&] { (*correction)->prepare(scratch_file == nullptr ? "" : scratch_file); });
}

void emeg_correction_free(emeg_correction* correction) {
  delete correction;
}

emeg_status emeg_correction_set_progress(emeg_correction* correction, emeg_progress progress, void* user) {
  if (correction == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] { correction->observer.set(progress, user); });
}

emeg_status emeg_correction_give(emeg_correction* correction, const void* samples, const emeg_layout* layout,
                                 int64_t count) {
  if (correction == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] { give(*correction, samples, layout, count); });
}

emeg_status emeg_correction_read(emeg_correction* correction, emeg_reader reader, void* user) {
  if (correction == nullptr || reader == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] {
    correction->take(correction->shape.nrOfSamples - correction->nrOfTaken,
                     [&](int64_t first, int64_t count, std::vector<double>& microvolts) {
                       if (reader(user, first, count, microvolts.data()) != 0) throw emeg::Cancelled();
                     });
  });
}

emeg_status emeg_correction_find(emeg_correction* correction) {
  if (correction == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] { correction->find(); });
}

emeg_status emeg_correction_output(const emeg_correction* correction, int64_t* samples,
                                   double* sampling_frequency) {
  if (correction == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] {
    const emeg::Correction& run = correction->running();
    if (samples != nullptr) *samples = run.nrOfOutputs();
    if (sampling_frequency != nullptr) *sampling_frequency = run.outputRate();
  });
}

emeg_status emeg_correction_run(emeg_correction* correction, void* samples, const emeg_layout* layout,
                                int64_t capacity) {
  if (correction == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] { runInto(*correction, samples, layout, capacity); });
}

emeg_status emeg_correction_write(emeg_correction* correction, emeg_writer writer, void* user) {
  if (correction == nullptr || writer == nullptr) return EMEG_BAD_ARGUMENT;
  return emeg::guarded(correction->error, [&] {
    correction->running();
    CallbackSink sink(writer, user);
    correction->correct(sink);
  });
}

const char* emeg_correction_error(const emeg_correction* correction) {
  return correction == nullptr ? "" : correction->error.c_str();
}
