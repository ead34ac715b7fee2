#ifndef EMEG_EMEG_HPP
#define EMEG_EMEG_HPP

/// The C functions of emeg.h as C++17 classes that free themselves. Everything here is compiled into the
/// program that includes it: only the C functions are called in the library, so that the two may come from
/// different compilers.
///
/// Whatever fails throws emeg::Error (std::bad_alloc where memory is missing). Callbacks may throw: the call
/// that needed them ends, and throws the same. An object is used by one thread at a time; different objects
/// may be used in different threads at the same time.

#include <emeg/emeg.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace emeg {

/// A call failed. what() is a sentence.
class Error : public std::runtime_error {
public:
  Error(emeg_status status, const std::string& message) : std::runtime_error(message), status_(status) {}
  emeg_status status() const { return status_; }

private:
  emeg_status status_;
};

namespace detail {

inline void check(emeg_status status, const char* message = "") {
  if (status == EMEG_OK) return;
  if (status == EMEG_NO_MEMORY) throw std::bad_alloc();
  throw Error(status, *message != 0 ? message : emeg_status_text(status));
}

struct Free {
  void operator()(emeg_settings* settings) const { emeg_settings_free(settings); }
  void operator()(emeg_recording* recording) const { emeg_recording_free(recording); }
  void operator()(emeg_correction* correction) const { emeg_correction_free(correction); }
};

} // namespace detail

/// What a correction is asked for: options of `emeg correct` by their names, at their defaults first.
class Settings {
public:
  Settings() {
    emeg_settings* created = nullptr;
    detail::check(emeg_settings_create(&created));
    handle_.reset(created);
  }
  Settings(const Settings& other) { *this = other; }
  Settings& operator=(const Settings& other) {
    emeg_settings* copy = nullptr;
    detail::check(emeg_settings_copy(other.handle(), &copy));
    handle_.reset(copy);
    return *this;
  }
  ~Settings() = default;

  Settings& set(const std::string& name, const std::string& value) {
    return checked(emeg_settings_set(handle(), name.c_str(), value.c_str()));
  }
  Settings& set(const std::string& name, const char* value) {
    return checked(emeg_settings_set(handle(), name.c_str(), value));
  }
  /// A number; true or false for options without a value.
  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  Settings& set(const std::string& name, Number value) {
    return checked(emeg_settings_set_number(handle(), name.c_str(), static_cast<double>(value)));
  }
  Settings& setVolumeOnsets(const std::vector<double>& seconds) {
    return checked(emeg_settings_set_volume_onsets(handle(), seconds.data(), seconds.size()));
  }
  Settings& setSliceOnsets(const std::vector<double>& seconds) {
    return checked(emeg_settings_set_slice_onsets(handle(), seconds.data(), seconds.size()));
  }
  Settings& setBeats(const std::vector<double>& seconds) {
    return checked(emeg_settings_set_beats(handle(), seconds.data(), seconds.size()));
  }

  emeg_settings* handle() const { return handle_.get(); }

private:
  Settings& checked(emeg_status status) {
    detail::check(status, emeg_settings_error(handle()));
    return *this;
  }

  std::unique_ptr<emeg_settings, detail::Free> handle_;
};

/// How a recorder stored a channel: microvolts = step x integer + offset.
struct Integers {
  double step = 1;
  double offset = 0;
  std::int64_t smallest = -32768;
  std::int64_t largest = 32767;
};

struct Channel {
  std::string name;
  emeg_role role = EMEG_EEG;
  bool hasIntegers = false; ///< only for the setting "repair-saturation"
  Integers integers = {};
};

/// What a correction must know before the first sample.
struct Recording {
  double samplingFrequency = 0; ///< Hz
  std::int64_t nrOfSamples = 0; ///< per channel
  std::vector<Channel> channels;
};

/// Where samples lie in an array: channel c at time point t at c x channelStride + t x sampleStride.
struct Layout {
  std::ptrdiff_t sampleStride = 1;
  std::ptrdiff_t channelStride = 0;
  double microvolts = 1; ///< that one unit is: 1e6 for volts
};

/// A scan of the recording, times in seconds.
struct Scan {
  double begin = 0;
  double end = 0;
  double firstOnset = 0;
  double volumeDuration = 0;
  double sliceDuration = 0;
  int nrOfVolumes = 0;
  int slicesPerVolume = 0;
  bool countsAreCertain = true;
  int channelsAgreeing = 0;
  int channelsAsked = 0;

  double onset(int volume, int slice = 0) const {
    return firstOnset + volume * volumeDuration + slice * sliceDuration;
  }
};

struct Findings {
  std::vector<Scan> scans;
  std::vector<double> beats; ///< seconds, ascending
  std::string json;          ///< everything, also warnings
};

/// The correction of one recording.
class Correction {
public:
  /// What is done, the channel (-1: all), and the finished part of it. false cancels.
  using Progress = std::function<bool(const char* step, int channel, double part)>;
  /// Fills microvolts[c x count + t] with the time points from `first` on.
  using Reader = std::function<void(std::int64_t first, std::int64_t count, double* microvolts)>;
  /// Takes the corrected ones.
  using Writer = std::function<void(std::int64_t first, std::int64_t count, const double* microvolts)>;

  /// Samples are kept in memory, or in a new file that is gone with the correction.
  Correction(const Settings& settings, const Recording& recording, const std::string& scratchFile = {})
      : calls_(std::make_unique<Calls>()) {
    const auto description = describe(recording);
    emeg_correction* created = nullptr;
    const emeg_status status = emeg_correction_create(
        settings.handle(), description.get(), scratchFile.empty() ? nullptr : scratchFile.c_str(), &created);
    handle_.reset(created);
    check(status);
  }

  void setProgress(Progress progress) {
    calls_->progress = std::move(progress);
    check(emeg_correction_set_progress(handle(), calls_->progress ? onProgress : nullptr, calls_.get()));
  }

  void give(const float* samples, const Layout& layout, std::int64_t count) {
    giveAs(EMEG_FLOAT, samples, layout, count);
  }
  void give(const double* samples, const Layout& layout, std::int64_t count) {
    giveAs(EMEG_DOUBLE, samples, layout, count);
  }
  void read(Reader reader) {
    calls_->reader = std::move(reader);
    check(emeg_correction_read(handle(), onRead, calls_.get()));
  }

  Findings find() {
    check(emeg_correction_find(handle()));
    return findings();
  }

  std::int64_t nrOfOutputs() const {
    std::int64_t samples = 0;
    check(emeg_correction_output(handle(), &samples, nullptr));
    return samples;
  }
  double outputRate() const {
    double rate = 0;
    check(emeg_correction_output(handle(), nullptr, &rate));
    return rate;
  }

  /// `capacity` time points have room at `samples`: nrOfOutputs() at least.
  void run(float* samples, const Layout& layout, std::int64_t capacity) {
    runAs(EMEG_FLOAT, samples, layout, capacity);
  }
  void run(double* samples, const Layout& layout, std::int64_t capacity) {
    runAs(EMEG_DOUBLE, samples, layout, capacity);
  }
  void write(Writer writer) {
    calls_->writer = std::move(writer);
    check(emeg_correction_write(handle(), onWrite, calls_.get()));
  }

  Findings findings() {
    Findings found;
    size_t count = 0;
    check(emeg_correction_scans(handle(), &count));
    for (size_t i = 0; i < count; ++i) found.scans.push_back(scan(i));
    const double* beats = nullptr;
    check(emeg_correction_beats(handle(), &beats, &count));
    found.beats.assign(beats, beats + count);
    const char* json = nullptr;
    check(emeg_correction_findings(handle(), &json));
    found.json = json;
    return found;
  }

  emeg_correction* handle() const { return handle_.get(); }

private:
  /// What C calls back, at an address that stays where the correction is moved.
  struct Calls {
    Progress progress;
    Reader reader;
    Writer writer;
    std::exception_ptr thrown;
  };

  static std::unique_ptr<emeg_recording, detail::Free> describe(const Recording& recording) {
    emeg_recording* created = nullptr;
    const emeg_status status =
        emeg_recording_create(recording.samplingFrequency, recording.nrOfSamples, &created);
    std::unique_ptr<emeg_recording, detail::Free> description(created);
    detail::check(status, "The recording needs a sampling frequency above 0 and a sample at least.");
    int index = 0;
    for (const Channel& channel : recording.channels) {
      detail::check(emeg_recording_add_channel(created, channel.name.c_str(), channel.role),
                    emeg_recording_error(created));
      const Integers& range = channel.integers;
      if (channel.hasIntegers)
        detail::check(emeg_recording_set_integers(created, index, range.step, range.offset, range.smallest,
                                                  range.largest),
                      emeg_recording_error(created));
      ++index;
    }
    return description;
  }

  static emeg_layout layoutOf(int type, const Layout& layout) {
    return {type, layout.sampleStride, layout.channelStride, layout.microvolts};
  }
  void giveAs(int type, const void* samples, const Layout& layout, std::int64_t count) {
    const emeg_layout inC = layoutOf(type, layout);
    check(emeg_correction_give(handle(), samples, &inC, count));
  }
  void runAs(int type, void* samples, const Layout& layout, std::int64_t capacity) {
    const emeg_layout inC = layoutOf(type, layout);
    check(emeg_correction_run(handle(), samples, &inC, capacity));
  }
  Scan scan(size_t index) const {
    emeg_scan found{};
    check(emeg_correction_scan(handle(), index, &found));
    return {found.begin,
            found.end,
            found.first_onset,
            found.volume_duration,
            found.slice_duration,
            found.volumes,
            found.slices,
            found.counts_are_certain != 0,
            found.channels_agreeing,
            found.channels_asked};
  }

  /// Throws what a callback threw, or what the status says.
  void check(emeg_status status) const {
    if (calls_->thrown) std::rethrow_exception(std::exchange(calls_->thrown, nullptr));
    detail::check(status, emeg_correction_error(handle()));
  }

  /// Nothing that a callback throws crosses the C functions; anything but 0 ends the call.
  template <class Work>
  static int keepingExceptions(void* user, Work work) noexcept {
    auto& calls = *static_cast<Calls*>(user);
    try {
      return work(calls) ? 0 : 1;
    } catch (...) {
      calls.thrown = std::current_exception();
      return 1;
    }
  }
  static int onProgress(void* user, const char* step, int channel, double part) {
    return keepingExceptions(user, [&](Calls& calls) { return calls.progress(step, channel, part); });
  }
  static int onRead(void* user, std::int64_t first, std::int64_t count, double* microvolts) {
    return keepingExceptions(user, [&](Calls& calls) {
      calls.reader(first, count, microvolts);
      return true;
    });
  }
  static int onWrite(void* user, std::int64_t first, std::int64_t count, const double* microvolts) {
    return keepingExceptions(user, [&](Calls& calls) {
      calls.writer(first, count, microvolts);
      return true;
    });
  }

  std::unique_ptr<Calls> calls_;
  std::unique_ptr<emeg_correction, detail::Free> handle_;
};

} // namespace emeg

#endif
