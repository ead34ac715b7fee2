#!/usr/bin/python3
"""Prints what MNE-Python sees of a corrected recording, as JSON: python3 read_good_stretches.py FILE"""

import json
import sys

import mne

mne.set_log_level("ERROR")
path = sys.argv[1]
readers = {"vhdr": mne.io.read_raw_brainvision, "bdf": mne.io.read_raw_bdf, "edf": mne.io.read_raw_edf}
raw = readers[path.rsplit(".", 1)[1]](path, preload=True)
good = raw.get_data(reject_by_annotation="omit")
annotations = {}
for annotation in raw.annotations:
    annotations.setdefault(annotation["description"], []).append(float(annotation["onset"]))
print(json.dumps({
    "samplingFrequency": float(raw.info["sfreq"]),
    "start": str(raw.info["meas_date"]),
    "nrOfTimePoints": int(raw.n_times),
    "nrOfGoodTimePoints": int(good.shape[1]),
    "annotations": annotations,
}))
