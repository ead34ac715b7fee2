#ifndef EMEG_EMEG_H
#define EMEG_EMEG_H

/*
 * Removes MR gradient and heart beat artifacts from EEG that was recorded inside an MR scanner.
 *
 * A correction goes so:
 *
 *   emeg_settings_create     what is to be done: emeg_settings_set(settings, "high-pass", "1")
 *   emeg_recording_create    what is known of the recording; emeg_recording_add_channel for each channel
 *   emeg_correction_create   takes copies of both
 *   emeg_correction_give     the samples, block after block (or emeg_correction_read: by a callback)
 *   emeg_correction_find     looks for scans and heart beats (may be left out)
 *   emeg_correction_run      puts the corrected samples into an array (or emeg_correction_write: by a
 * callback)
 *   ..._free                 every handle has its own
 *
 * Every function that can fail returns an emeg_status; what went wrong is said by the ..._error function of
 * the handle. No function throws or ends the program. A null pointer where none is allowed gives
 * EMEG_BAD_ARGUMENT; the ..._free functions take null and do nothing.
 *
 * Threads: a handle is used by one thread at a time. Different handles may be used in different threads at
 * the same time. Callbacks are called in the thread, and during the call, that needs them; they must neither
 * throw nor jump out, nor use the handle that called them.
 *
 * Times are seconds from the first sample, frequencies Hz. Texts are UTF-8 and belong to the handle.
 */

#include <emeg/version.h>

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define EMEG_API __attribute__((visibility("default")))
#else
#define EMEG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef enum emeg_status {
  EMEG_OK = 0,
  EMEG_BAD_ARGUMENT = 1, /* a null pointer, an index or a count outside its range */
  EMEG_BAD_SETTING = 2,  /* an unknown name, a value out of range, settings that contradict the recording */
  EMEG_WRONG_ORDER = 3,  /* samples are missing or too many, or the correction has ended already */
  EMEG_NO_MEMORY = 4,
  EMEG_FILE_FAILED = 5, /* the scratch file */
  EMEG_CANCELLED = 6,   /* by a callback */
  EMEG_FAILED = 7       /* anything else */
} emeg_status;

/* "2.0.0": the version of the library that is loaded. */
EMEG_API const char* emeg_version(void);

/* "bad setting", ... for any number. */
EMEG_API const char* emeg_status_text(int status);

/* --- Settings --- */

typedef struct emeg_settings emeg_settings;

/* All settings at their defaults. */
EMEG_API emeg_status emeg_settings_create(emeg_settings** settings);
EMEG_API emeg_status emeg_settings_copy(const emeg_settings* settings, emeg_settings** copy);
EMEG_API void emeg_settings_free(emeg_settings* settings);

/* Names and values are those of `emeg correct` without the two dashes: ("high-pass", "1"),
 * ("notch", "50:2,100"). Options without a value take "1" or "0": ("bcg", "1"). A value that is refused
 * changes nothing. docs/library.md lists the names. */
EMEG_API emeg_status emeg_settings_set(emeg_settings* settings, const char* name, const char* value);
/* The same for settings that are a number or 0 and 1. */
EMEG_API emeg_status emeg_settings_set_number(emeg_settings* settings, const char* name, double value);

/* Onsets of volumes or slices, as the scanner's markers tell them, in any order; three at least. A count of
 * 0 goes back to the search in the EEG. */
EMEG_API emeg_status emeg_settings_set_volume_onsets(emeg_settings* settings, const double* seconds,
                                                     size_t count);
EMEG_API emeg_status emeg_settings_set_slice_onsets(emeg_settings* settings, const double* seconds,
                                                    size_t count);
/* Heart beats that are known, in any order; goes with ("bcg", "1"). A count of 0 goes back to the search. */
EMEG_API emeg_status emeg_settings_set_beats(emeg_settings* settings, const double* seconds, size_t count);

/* Why the last call with these settings failed, a sentence; "" when it did not. */
EMEG_API const char* emeg_settings_error(const emeg_settings* settings);

/* --- The recording --- */

typedef enum emeg_role {
  EMEG_EEG = 0,
  EMEG_ECG = 1,    /* the scanner's artifact and what the filters remove, no heart beats; see setting "ecg" */
  EMEG_OTHER = 2,  /* the same: eyes, muscles, respiration ... */
  EMEG_TRIGGER = 3 /* nothing is changed; samples are picked where the rate changes */
} emeg_role;

typedef struct emeg_recording emeg_recording;

/* `samples` per channel at `sampling_frequency` Hz. */
EMEG_API emeg_status emeg_recording_create(double sampling_frequency, int64_t samples,
                                           emeg_recording** recording);
EMEG_API void emeg_recording_free(emeg_recording* recording);

/* Channels are numbered from 0 in the order in which they come. */
EMEG_API emeg_status emeg_recording_add_channel(emeg_recording* recording, const char* name,
                                                int role /* an emeg_role */);
/* For the setting "repair-saturation": the channel was stored as integers from `smallest` to `largest`,
 * microvolts = step x integer + offset. */
EMEG_API emeg_status emeg_recording_set_integers(emeg_recording* recording, int channel, double step,
                                                 double offset, int64_t smallest, int64_t largest);
EMEG_API const char* emeg_recording_error(const emeg_recording* recording);

/* --- Samples --- */

typedef enum emeg_sample_type { EMEG_FLOAT = 0, EMEG_DOUBLE = 1 } emeg_sample_type;

/* Where the sample of channel c at time point t lies in an array, counted in samples from its first one:
 * c x channel_stride + t x sample_stride. Strides may be negative. */
typedef struct emeg_layout {
  int type; /* an emeg_sample_type */
  ptrdiff_t sample_stride;
  ptrdiff_t channel_stride;
  double microvolts; /* that one unit is: 1 for microvolts, 1e6 for volts. Not for EMEG_TRIGGER channels. */
} emeg_layout;

/* Called while something takes time: what is done at the moment, the channel (-1: all), and the finished
 * part of it, 0 ... 1. Anything but 0 cancels. */
typedef int (*emeg_progress)(void* user, const char* step, int channel, double part);
/* Fills microvolts[c x count + t] with the time points from `first` on. Anything but 0 cancels. */
typedef int (*emeg_reader)(void* user, int64_t first, int64_t count, double* microvolts);
/* Takes the corrected time points from `first` on, in the same order. Anything but 0 cancels. */
typedef int (*emeg_writer)(void* user, int64_t first, int64_t count, const double* microvolts);

/* --- The correction --- */

typedef struct emeg_correction emeg_correction;

/* Samples are kept as 32-bit floats: in memory where `scratch_file` is null, else in a file of that name. It
 * must not exist, and is gone when the correction is freed. Where this fails `*correction` may still be a
 * handle: it says why, and is freed like any other. */
EMEG_API emeg_status emeg_correction_create(const emeg_settings* settings, const emeg_recording* recording,
                                            const char* scratch_file, emeg_correction** correction);
EMEG_API void emeg_correction_free(emeg_correction* correction);

/* `progress` may be null. */
EMEG_API emeg_status emeg_correction_set_progress(emeg_correction* correction, emeg_progress progress,
                                                  void* user);

/* The next `count` time points of all channels. Samples that are not finite count as 0. */
EMEG_API emeg_status emeg_correction_give(emeg_correction* correction, const void* samples,
                                          const emeg_layout* layout, int64_t count);
/* Calls `reader` until all samples are there. */
EMEG_API emeg_status emeg_correction_read(emeg_correction* correction, emeg_reader reader, void* user);

/* When all samples are there: looks for scans and heart beats. */
EMEG_API emeg_status emeg_correction_find(emeg_correction* correction);

/* Time points per channel of the result, and its sampling frequency. Either may be null. */
EMEG_API emeg_status emeg_correction_output(const emeg_correction* correction, int64_t* samples,
                                            double* sampling_frequency);

/* When all samples are there: corrects them, once. `capacity` time points have room in the array. Without a
 * scan nothing of the gradient artifact is removed: look at emeg_correction_scans. */
EMEG_API emeg_status emeg_correction_run(emeg_correction* correction, void* samples,
                                         const emeg_layout* layout, int64_t capacity);
/* The same, block after block. */
EMEG_API emeg_status emeg_correction_write(emeg_correction* correction, emeg_writer writer, void* user);

/* Why the last call with this correction failed, a sentence; "" when it did not. */
EMEG_API const char* emeg_correction_error(const emeg_correction* correction);

/* --- What was found; behind emeg_correction_find, and complete behind the run --- */

typedef struct emeg_scan {
  double begin; /* of the scanner's activity */
  double end;
  double first_onset;     /* of the first whole volume; volume v, slice s: + v x volume_duration + s x ... */
  double volume_duration; /* the TR */
  double slice_duration;  /* 0: not known */
  int32_t volumes;        /* whole ones */
  int32_t slices;         /* per volume; excitations, where several slices are excited at once */
  int32_t counts_are_certain; /* 0: all slices are alike, so that the counts are a choice */
  int32_t channels_agreeing;
  int32_t channels_asked;
} emeg_scan;

EMEG_API emeg_status emeg_correction_scans(const emeg_correction* correction, size_t* count);
EMEG_API emeg_status emeg_correction_scan(const emeg_correction* correction, size_t index, emeg_scan* scan);
/* The heart beats in ascending order; the array belongs to the correction. */
EMEG_API emeg_status emeg_correction_beats(const emeg_correction* correction, const double** seconds,
                                           size_t* count);
/* Everything as a JSON object (docs/library.md); the text is good until the next call with this handle. */
EMEG_API emeg_status emeg_correction_findings(emeg_correction* correction, const char** json);

#ifdef __cplusplus
}
#endif

#endif
