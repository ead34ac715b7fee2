#!/usr/bin/python3
"""Writes small EEGLAB recordings with SciPy and h5py: make_set_files.py FOLDER

Every file holds three channels (Fp1, Cz, ECG) of 500 samples at 250 Hz, value = 100 * channel + sample / 8, and four
events. Needs the Debian packages python3-scipy and python3-h5py.
"""
import os
import sys

import h5py
import numpy as np
from scipy.io import savemat

RATE = 250.0
LABELS = ["Fp1", "Cz", "ECG"]
TYPES = ["EEG", "EEG", "ECG"]
# type, latency (the first sample is 1), duration
EVENTS = [("S  1", 1.0, 0.0), (7.0, 10.5, 2.0), ("boundary", 250.0, 12.0), ("ÄÖ, ✓", 500.0, 1.0)]


def samples():
    channel = np.arange(3)[:, None]
    return (100.0 * channel + np.arange(500)[None, :] / 8.0).astype(np.float32)


def structs(fields, rows):
    array = np.zeros((1, len(rows)), dtype=[(name, object) for name in fields])
    for i, row in enumerate(rows):
        for name, value in zip(fields, row):
            array[0, i][name] = value
    return array


def eeg(data):
    return {
        "setname": "sample",
        "nbchan": 3.0,
        "trials": 1.0,
        "pnts": 500.0,
        "srate": RATE,
        "xmin": 0.0,
        "comments": "made by a script",
        "data": data,
        "chanlocs": structs(["labels", "type"], list(zip(LABELS, TYPES))),
        "event": structs(["type", "latency", "duration"], EVENTS),
    }


def set_class(item, name):
    """MATLAB ends its class names with a zero; NumPy's texts are filled up with them."""
    kind = h5py.h5t.C_S1.copy()
    kind.set_size(len(name) + 1)
    attribute = h5py.h5a.create(item.id, b"MATLAB_class", kind, h5py.h5s.create(h5py.h5s.SCALAR))
    attribute.write(np.array(name.encode(), dtype=f"S{len(name) + 1}"))


def put_text(group, name, text):
    codes = np.array([[ord(c)] for c in text], dtype=np.uint16)
    item = group.create_dataset(name, data=codes)
    set_class(item, "char")
    item.attrs["MATLAB_int_decode"] = np.int32(2)
    return item


def put_number(group, name, number):
    item = group.create_dataset(name, data=np.array([[number]], dtype=np.float64))
    set_class(item, "double")
    return item


def mark_as_struct(group, fields):
    set_class(group, "struct")
    letters = np.empty(len(fields), dtype=object)
    for i, field in enumerate(fields):
        letters[i] = np.array([c.encode() for c in field], dtype="S1")
    group.attrs.create("MATLAB_fields", letters, dtype=h5py.vlen_dtype(np.dtype("S1")))


def put_struct_array(file, group, name, fields, rows):
    """An array of structs: every field is a data set of references to the elements' values."""
    target = group.create_group(name)
    mark_as_struct(target, fields)
    pool = file.require_group("#refs#")
    for k, field in enumerate(fields):
        references = np.empty((len(rows), 1), dtype=h5py.ref_dtype)
        for i, row in enumerate(rows):
            put = put_text if isinstance(row[k], str) else put_number
            references[i, 0] = put(pool, f"{name}_{field}_{i}", row[k]).ref
        target.create_dataset(field, data=references, dtype=h5py.ref_dtype)


def write_v73(path, compression):
    """MAT 7.3 is HDF5 behind a block of 512 bytes; arrays have their dimensions reversed."""
    with h5py.File(path, "w", userblock_size=512) as file:
        group = file.create_group("EEG")
        numbers = ["nbchan", "trials", "pnts", "srate", "xmin"]
        mark_as_struct(group, numbers + ["setname", "comments", "data", "chanlocs", "event"])
        for name in numbers:
            put_number(group, name, eeg(None)[name])
        put_text(group, "setname", "sample")
        put_text(group, "comments", "made by a script")
        data = group.create_dataset("data", data=samples().T, compression=compression)
        set_class(data, "single")
        put_struct_array(file, group, "chanlocs", ["labels", "type"], list(zip(LABELS, TYPES)))
        put_struct_array(file, group, "event", ["type", "latency", "duration"], EVENTS)
    with open(path, "r+b") as file:
        header = b"MATLAB 7.3 MAT-file, Platform: GLNXA64, Created on: Mon Jan  1 00:00:00 2024 HDF5 schema 1.00 ."
        file.write(header.ljust(116) + b"\0" * 8 + b"\x00\x02IM")


def main(folder):
    def path(name):
        return os.path.join(folder, name)

    savemat(path("plain.set"), {"EEG": eeg(samples())}, appendmat=False)
    savemat(path("compressed.set"), {"EEG": eeg(samples())}, appendmat=False, do_compression=True)
    savemat(path("doubles.set"), {"EEG": eeg(samples().astype(np.float64))}, appendmat=False)
    savemat(path("flat.set"), eeg(samples()), appendmat=False)  # fields as variables of their own
    samples().T.astype("<f4").tofile(path("beside.fdt"))
    savemat(path("beside.set"), {"EEG": eeg("beside.fdt")}, appendmat=False)
    write_v73(path("v73.set"), None)
    write_v73(path("v73compressed.set"), "gzip")

    epochs = eeg(np.zeros((3, 100, 5), dtype=np.float32))
    epochs.update(trials=5.0, pnts=100.0)
    savemat(path("epochs.set"), {"EEG": epochs}, appendmat=False)
    contradiction = eeg(samples())
    contradiction.update(nbchan=4.0)
    savemat(path("contradiction.set"), {"EEG": contradiction}, appendmat=False)
    savemat(path("other.set"), {"x": 1.0}, appendmat=False)


if __name__ == "__main__":
    main(sys.argv[1])
