#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// The kinds of recording that can be simulated.
enum class Preset {
  Gap,        ///< scanning with a pause at the end of every volume
  Continuous, ///< slice after slice, with a few milliseconds of dead time per volume
  Bcg,        ///< heart beats in the magnet, no scanning
  Both,       ///< the scan of Gap and heart beats
  // Scans whose timing is hard to see.
  Fill,        ///< the readout fills the slice: no quiet at all but for the dead time of a volume
  TwoBursts,   ///< every slice shows two bursts
  Equidistant, ///< slice after slice without dead time
  Multiband,   ///< few excitations per volume with 6 ms of quiet between them, no dead time
  ManySlices   ///< 120 short slices per volume
};

/// "gap", "continuous", "bcg", "both", "fill", "twobursts", "equidistant", "multiband" or "manyslices".
std::optional<Preset> presetNamed(const std::string& name);
std::string nameOf(Preset preset);

struct EegParameters {
  double backgroundRmsUv = 15;   ///< expected RMS of the 1/f background
  double alphaPeakUv = 30;       ///< the alpha rhythm's largest amplitude, over the back of the head
  double sensorNoiseRmsUv = 0.7; ///< white noise of electrode and amplifier
};

/// The scan and the artifact that it leaves in the EEG.
struct GradientParameters {
  int nrOfSlicesPerVolume = 20;
  double sliceDuration = 0.0750142;   ///< seconds from one slice's onset to the next
  double gapDuration = 0.3000531;     ///< seconds between the last slice's end and the next volume
  std::optional<int64_t> nrOfVolumes; ///< of every scan; as many as fit when not given
  double quietBefore = 3;             ///< seconds without scanning in front of the scan
  double quietAfter = 5;              ///< least seconds without scanning behind it
  double burstDuration = 0.048;       ///< seconds of gradient activity per slice
  double peakUv = 2500;               ///< largest absolute value of an ordinary slice's burst at gain 1
  double firstSliceDifference = 0.15; ///< RMS of what the first slice of a volume adds, relative to its burst
  double lowPassHz = 250;             ///< the amplifier's low-pass (half power)
  double readoutHz = 220;             ///< frequency of the readout gradient
  double driftRms = 0;                ///< relative slow change of the artifact's amplitude
  double secondBurstDelay = 0;     ///< seconds from a slice's onset to that of its second burst; 0: only one
  double secondBurstFactor = -0.8; ///< the second burst relative to the first
  double leastQuiet = 0.020;       ///< seconds that a burst leaves in its slice; negative: bursts may overlap
  double onsetJitterRms = 0;       ///< seconds by which every volume comes early or late
  int nrOfScans = 1;               ///< one after the other, all alike
  double pauseDuration = 8;        ///< seconds from the end of one scan to the next
  double cutBefore = 0;    ///< seconds of the scan that are over when the recording begins; 0: quietBefore
  bool endsInScan = false; ///< the recording ends before the scan does, in place of quietAfter

  double volumeDuration() const { return nrOfSlicesPerVolume * sliceDuration + gapDuration; }
};

/// What the scanner tells the amplifier, marker by marker.
struct ScannerTriggerParameters {
  enum class Per { None, Volume, Slice };
  Per per = Per::None;
  std::string name = "R128";
};

/// A stretch in which the heart beat artifact is smaller than elsewhere.
struct WeakStretch {
  double start = 0;    ///< seconds
  double duration = 0; ///< seconds
  double factor = 0.2; ///< on the artifact of every beat whose onset lies in the stretch
};

struct HeartParameters {
  double beatsPerMinute = 65;
  double rmssd = 0.030;    ///< seconds, root mean square of successive differences of beat intervals
  double pulseDelay = 0.2; ///< seconds from the R peak to the onset of the artifact
  double peakUv = 80;      ///< mean over channels of the artifact's peak; channels lie within 25 % of it
  double amplitudeJitter = 0.04; ///< relative standard deviation from beat to beat
  double ectopicShare = 0;       ///< of the beats that come early, followed by a compensatory pause
  std::optional<WeakStretch> weak;
};

/// The electrocardiogram of the last channel, which then shows no heart beat artifact.
struct EcgParameters {
  double rPeakUv = 1000; ///< height of the R peaks; negative: electrodes the wrong way round
  double tWave = 0.5;    ///< height of the T wave, of R's: larger than outside the magnet
};

/// Movements of the head: bursts of slow voltages in all channels.
struct MovementParameters {
  double peakUv = 300; ///< largest absolute value of every burst, in the channel that sees most of it
  int64_t nrOfBursts = 5;
};

struct LineNoiseParameters {
  double frequencyHz = 0; ///< 0: none
  double amplitudeUv = 5;
};

/// What else goes wrong while recording, in all channels at once.
struct DisturbanceParameters {
  int nrOfSpikes = 0;
  double spikeUv = 20000; ///< peak of a spike; it has decayed after a few milliseconds
  int nrOfDropouts = 0;
  double dropoutDuration = 0.3; ///< seconds in which the recording is 0
  double clipUv = 0;            ///< largest absolute value that the amplifier can record; 0: any
};

/// Everything that determines the samples of a simulated recording.
struct SimulationParameters {
  Preset preset = Preset::Gap;
  uint64_t seed = 1;
  int nrOfChannels = 32;
  double seconds = 120;
  double samplingFrequency = 5000; ///< Hz, a value that a 32-bit float holds exactly
  EegParameters eeg;
  std::optional<GradientParameters> gradient;
  ScannerTriggerParameters triggers; ///< none without a scan
  std::optional<HeartParameters> heart;
  std::optional<EcgParameters> ecg; ///< needs a heart
  LineNoiseParameters lineNoise;
  std::optional<MovementParameters> movement;
  DisturbanceParameters disturbances;
  std::vector<int> deadChannels; ///< indices from 0; these channels are 0 throughout

  int64_t nrOfTimePoints() const;
  bool isDead(int channel) const;
  bool isEcg(int channel) const { return ecg && channel == nrOfChannels - 1; }
  std::string channelName(int channel) const;
};

constexpr int maxNrOfSimulatedChannels = 256;

/// The reference recording of a preset. At 4000 Hz and more the amplifier passes 250 Hz and the artifact
/// keeps its size; below, it passes 560 Hz (or what the sampling frequency allows) and the artifact drifts by
/// 1 % RMS. `samplingFrequency` is rounded to 32-bit float, as the file's header holds it.
SimulationParameters presetParameters(Preset preset, double samplingFrequency);

/// Gives the bursts the length that the preset wants in slices, at a readout or at a sampling frequency that
/// are not its own: presetParameters has done so for its own.
void fitBurstsToSlices(SimulationParameters& parameters);

/// A sentence that says why these parameters cannot be simulated; empty when they can.
std::string problemWith(const SimulationParameters& parameters);

} // namespace emeg
