#!/usr/bin/python3
"""Writes small EDF, EDF+, BDF and BDF+ recordings: make_edf_files.py FOLDER

Number stored for channel c (from 0) and sample t: 1000 * c + t - 200, in BDF 1000 times that. Formats: Kemp et al. 1992
(EDF), Kemp and Olivan 2003 (EDF+); BDF is the same with 3 bytes per sample and another first field.
Needs nothing but Python.
"""
import os
import sys

LENGTH = 400
ANNOTATION_BYTES = 120  # of an annotation signal, per data record


def number(channel, sample):
    return 1000 * channel + sample - 200


class Signal:
    def __init__(self, label, unit="uV", physical=(-3276.8, 3276.7), digital=(-32768, 32767), per_record=200,
                 transducer="", prefilter="", texts=None, factor=1):
        self.label, self.unit, self.physical, self.digital = label, unit, physical, digital
        self.per_record, self.transducer, self.prefilter = per_record, transducer, prefilter
        self.texts = texts  # of an annotation signal: bytes per data record
        self.factor = factor


def annotations(is_bdf, texts):
    largest = 2 ** (23 if is_bdf else 15)
    return Signal("BDF Annotations" if is_bdf else "EDF Annotations", "", (-1, 1), (-largest, largest - 1),
                  ANNOTATION_BYTES // (3 if is_bdf else 2), texts=texts)


def tal(onset, *texts, duration=None):
    """A list of annotations at one time; without texts the mark that says when the data record begins."""
    times = onset if duration is None else f"{onset}\x15{duration}"
    return (times + "\x14" + "".join(text + "\x14" for text in (texts or ("",))) + "\x00").encode()


def field(text, width):
    encoded = str(text).encode("latin-1")
    assert len(encoded) <= width, text
    return encoded.ljust(width)


def write(path, signals, duration, reserved="", patient="X", recording="", start=("31.12.23", "23.59.58")):
    is_bdf = path.endswith(".bdf")
    width = 3 if is_bdf else 2
    samples = [signal for signal in signals if signal.texts is None]
    nr_of_records = LENGTH // max(signal.per_record for signal in samples)
    out = b"\xffBIOSEMI" if is_bdf else field("0", 8)
    out += field(patient, 80) + field(recording, 80) + field(start[0], 8) + field(start[1], 8)
    out += field(256 * (1 + len(signals)), 8) + field(reserved, 44) + field(nr_of_records, 8)
    out += field(duration, 8) + field(len(signals), 4)
    for size, texts in [
        (16, [s.label for s in signals]), (80, [s.transducer for s in signals]), (8, [s.unit for s in signals]),
        (8, [s.physical[0] for s in signals]), (8, [s.physical[1] for s in signals]),
        (8, [s.digital[0] for s in signals]), (8, [s.digital[1] for s in signals]),
        (80, [s.prefilter for s in signals]), (8, [s.per_record for s in signals]), (32, [""] * len(signals)),
    ]:
        out += b"".join(field(text, size) for text in texts)
    for record in range(nr_of_records):
        channel = 0
        for signal in signals:
            if signal.texts is not None:
                assert len(signal.texts[record]) <= ANNOTATION_BYTES
                out += signal.texts[record].ljust(ANNOTATION_BYTES, b"\0")
                continue
            for t in range(record * signal.per_record, (record + 1) * signal.per_record):
                out += (signal.factor * number(channel, t)).to_bytes(width, "little", signed=True)
            channel += 1
    with open(path, "wb") as file:
        file.write(out)


def edf_signals():
    """Steps of 0.1 uV, 0.5 mV (range around another middle than 0) and 0.01 degrees."""
    return [Signal("EEG Fp1", transducer="AgAgCl electrode", prefilter="HP:0.1Hz LP:75Hz"),
            Signal("ECG", "mV", (-1000, 1047.5), (-2048, 2047)),
            Signal("Temp rectal", "degC", (-327.68, 327.67))]


def bdf_signals():
    """Steps of nearly 1/32 uV; numbers need 24 bits."""
    digital, physical = (-8388608, 8388607), (-262144, 262143)
    eeg = dict(physical=physical, digital=digital, factor=1000, transducer="Active Electrode")
    return [Signal("Fp1", **eeg), Signal("Cz", **eeg), Signal("Status", "Boolean", digital, digital, factor=1)]


def main(folder):
    def path(name):
        return os.path.join(folder, name)

    write(path("plain.edf"), edf_signals(), 1, patient="someone", recording="in the scanner")
    write(path("plain.bdf"), bdf_signals(), 1, reserved="24BIT")

    # Half a second per data record; the first sample is a quarter of a second behind the full second of the header.
    # Two annotation signals, the second one without marks of the record's beginning.
    def plus_records(bdf):
        first = [tal("+0.25") + tal("+0.25", "begin") + tal("+0.3", "two at", "one time"),
                 tal("+0.75") + tal("+1", "Bl\u00fcte, \u2713", duration="0.5"), tal("+1.25"), tal("+1.75")]
        second = [b"", tal("+0.2", "before the first sample"), b"", tal("+2.245", "the last sample")]
        return annotations(bdf, first), annotations(bdf, second)

    identity = dict(patient="X-17 F 02-MAY-1951 some_one", recording="Startdate 31-DEC-2023 PSG-1 NN scanner_3T")
    for name, signals in [("plus.edf", edf_signals()), ("plus.bdf", bdf_signals())]:
        for signal in signals:
            signal.per_record = 100
        first, second = plus_records(name.endswith("bdf"))
        write(path(name), [signals[0], first, *signals[1:], second], 0.5,
              reserved="BDF+C" if name.endswith("bdf") else "EDF+C", **identity)

    # EDF+ that has no annotation signal.
    write(path("plus_without_annotations.edf"), edf_signals(), 1, reserved="EDF+C", **identity)

    # Refused: a gap of a second between the data records; two channels of lower rates.
    for name, signals in [("discontinuous.edf", edf_signals()), ("discontinuous.bdf", bdf_signals())]:
        bdf = name.endswith("bdf")
        write(path(name), [*signals, annotations(bdf, [tal("+0"), tal("+2")])], 1,
              reserved="BDF+D" if bdf else "EDF+D", **identity)
    write(path("rates.edf"), [*edf_signals(), Signal("Pulse", per_record=50), Signal("SaO2", "%", per_record=1)], 1)


if __name__ == "__main__":
    main(sys.argv[1])
