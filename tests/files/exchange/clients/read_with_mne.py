#!/usr/bin/python3
"""Reads a recording with MNE-Python: read_with_mne.py FILE SAMPLES

Prints what MNE found as JSON and writes the samples (microvolts, channel after channel, 64-bit floats) to SAMPLES.
"""
import json
import sys

import mne

READERS = {
    "vhdr": mne.io.read_raw_brainvision,
    "edf": mne.io.read_raw_edf,
    "bdf": mne.io.read_raw_bdf,
    "set": mne.io.read_raw_eeglab,
}

raw = READERS[sys.argv[1].rsplit(".", 1)[1]](sys.argv[1], preload=True, verbose="error")
(raw.get_data() * 1e6).astype("<f8").tofile(sys.argv[2])
json.dump(
    {
        "samplingFrequency": raw.info["sfreq"],
        "nrOfTimePoints": int(raw.n_times),
        "channels": raw.ch_names,
        "units": [raw._orig_units.get(name, "") for name in raw.ch_names],
        "start": str(raw.info["meas_date"]),
        "markers": [
            {"onset": a["onset"], "duration": a["duration"], "description": a["description"]} for a in raw.annotations
        ],
    },
    sys.stdout,
)
