#!/usr/bin/python3
"""Writes small channel time courses with description and protocol: make_ctc_files.py FOLDER

Number stored for channel c (from 0) and sample t: 1000 * c + t - 200, in floats an eighth, in doubles a tenth of it; all
of them are microvolts. Byte by byte as docs/formats.md has it. Needs nothing but Python.
"""
import os
import struct
import sys

LENGTH = 400
RATE = 200.0
NAMES = ["Fp1", "Cz", "ECG"]
TYPES = {"float32": (1, "f", lambda n: n / 8), "float64": (2, "d", lambda n: n / 10), "int16": (3, "h", lambda n: n)}


def number(channel, sample):
    return 1000 * channel + sample - 200


def ctc(sample_type, multiplexed):
    kind, code, value = TYPES[sample_type]
    channels, samples = range(len(NAMES)), range(LENGTH)
    if multiplexed:
        values = [value(number(c, t)) for t in samples for c in channels]
    else:
        values = [value(number(c, t)) for c in channels for t in samples]
    organisation = 2 if multiplexed else 1
    head = struct.pack("<H6xiihHifI", 1, kind, organisation, len(NAMES), 0, LENGTH, RATE, 0)
    return head + struct.pack(f"<{len(values)}{code}", *values)


def ccd(ctc_name, prt_name):
    milliseconds = 1000 * LENGTH / RATE
    head = struct.pack("<B256s256sH20xHHddddiB8x", 0, ctc_name.encode(), prt_name.encode(), len(NAMES), 1, len(NAMES),
                       RATE, milliseconds, 0, milliseconds, LENGTH, 0)
    assert len(head) == 584
    records = b""
    for name in NAMES:
        good = 0 if name == "Cz" else 1
        record = struct.pack("<32sB317xd2xd16xd24x4B", name.encode(), good, 1, RATE, -1, 255, 255, 255, 3)
        assert len(record) == 420
        records += record
    return head + records


def prt(resolution, ctc_name, conditions):
    """conditions: name, list of onset and offset, colour"""
    lines = ["", "FileVersion:        2", "", f"ResolutionOfTime:   {resolution}", "",
             f"Experiment:         {ctc_name}", "", "BackgroundColor:    0 0 0", "TextColor:          255 255 255",
             "TimeCourseColor:    192 192 192", "TimeCourseThick:    2", "ReferenceFuncColor: 0 0 80",
             "ReferenceFuncThick: 2", "", f"NrOfConditions:     {len(conditions)}"]
    for name, intervals, colour in conditions:
        lines += ["", name, str(len(intervals))] + [f"{on:10d} {off:10d}" for on, off in intervals]
        lines += [f"Color:              {colour}"]
    return "".join("\r\n" + line for line in lines[1:]).encode()


def main(folder):
    def write(name, content):
        with open(os.path.join(folder, name), "wb") as file:
            file.write(content)

    # Rest at samples 0 to 100 and 200 to 300, Task at 100 to 200, in three units.
    units = {"float32": ("usec", 5000), "float64": ("msec", 5), "int16": ("Volumes", 1)}
    for sample_type, (resolution, unit) in units.items():
        conditions = [("Rest", [(0, 100 * unit), (200 * unit, 300 * unit)], "255 0 0"),
                      ("Task", [(100 * unit, 200 * unit)], "0 255 255")]
        for multiplexed in (False, True):
            name = sample_type + ("_multiplexed" if multiplexed else "_vectorized")
            write(name + ".ctc", ctc(sample_type, multiplexed))
            # Both organisations share the protocol; the description says which one it is.
            write(name + ".ccd", ccd(name + ".ctc", sample_type + ".prt"))
        write(sample_type + ".prt", prt(resolution, sample_type + "_multiplexed.ctc", conditions))
    # Detected onsets stand in a companion of the protocol.
    write("float32_ArtifactsTriggers.prt", prt("usec", "float32_multiplexed.ctc", [
        ("MRGradientTriggers", [(50000, 50000), (1050000, 1050000)], "255 64 255"),
        ("HeartPulseTriggers", [(300250, 300250)], "255 64 64")]))
    # Without a description the protocol has the recording's name.
    write("alone.ctc", ctc("float32", True))
    write("alone.prt", prt("msec", "alone.ctc", [("Task", [(100, 200)], "0 255 255")]))


if __name__ == "__main__":
    main(sys.argv[1])
