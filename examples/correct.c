/* correct IN OUT CHANNELS HZ: IN and OUT hold 32-bit floats in microvolts, time point after time point. */
#include <emeg/emeg.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  const int channels = atoi(argv[3]);
  const double rate = atof(argv[4]);
  FILE* in = fopen(argv[1], "rb");
  if (in == NULL || channels < 1 || fseek(in, 0, SEEK_END) != 0) return 2;
  const int64_t samples = ftell(in) / (int64_t)sizeof(float) / channels;
  float* values = malloc((size_t)(samples * channels + 1) * sizeof(float));
  rewind(in);
  if (values == NULL ||
      fread(values, sizeof(float) * (size_t)channels, (size_t)samples, in) < (size_t)samples)
    return 1;
  fclose(in);

  emeg_settings* settings = NULL;
  emeg_recording* recording = NULL;
  emeg_correction* correction = NULL;
  const emeg_layout layout = {EMEG_FLOAT, channels, 1, 1.0};
  const char* findings = "";
  emeg_settings_create(&settings);
  emeg_settings_set(settings, "low-pass", "70");
  emeg_recording_create(rate, samples, &recording);
  for (int c = 0; c < channels; ++c) emeg_recording_add_channel(recording, "EEG", EMEG_EEG);

  emeg_status status = emeg_correction_create(settings, recording, NULL, &correction);
  if (status == EMEG_OK) status = emeg_correction_give(correction, values, &layout, samples);
  if (status == EMEG_OK) status = emeg_correction_run(correction, values, &layout, samples);
  if (status == EMEG_OK) status = emeg_correction_findings(correction, &findings);
  if (status != EMEG_OK)
    fprintf(stderr, "%s: %s\n", emeg_status_text(status), emeg_correction_error(correction));
  puts(findings);

  FILE* out = status == EMEG_OK ? fopen(argv[2], "wb") : NULL;
  int failed =
      out == NULL || fwrite(values, sizeof(float) * (size_t)channels, (size_t)samples, out) < (size_t)samples;
  if (out != NULL && fclose(out) != 0) failed = 1;
  emeg_correction_free(correction);
  emeg_recording_free(recording);
  emeg_settings_free(settings);
  free(values);
  return failed;
}
