"""Draws the spectrum of a recording before and after its correction.

    python3 spectrum.py before.vhdr after.vhdr [picture.png]

Median over the EEG channels, between the first and the last scanner onset that was found; stretches marked BAD are
left out. Needs MNE-Python and matplotlib (Debian: python3-mne, python3-matplotlib).
"""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import mne
import numpy as np


def read(path):
    raw = mne.io.read_raw_brainvision(path, preload=True, verbose="error")
    return raw.pick("eeg")


def scan_of(raw):
    onsets = [a["onset"] for a in raw.annotations if "MRGradientTriggers" in a["description"]]
    return min(onsets), max(onsets)


def spectrum_of(raw, start, end):
    part = raw.copy().crop(start, end)
    spectrum, frequencies = mne.time_frequency.psd_array_welch(
        part.get_data(reject_by_annotation="omit"), raw.info["sfreq"], fmin=0.5, fmax=100,
        n_fft=int(4 * raw.info["sfreq"]), verbose="error")
    return frequencies, np.median(spectrum, axis=0) * 1e12


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    before, after = read(sys.argv[1]), read(sys.argv[2])
    picture = sys.argv[3] if len(sys.argv) > 3 else "spectrum.png"
    start, end = scan_of(after)

    figure, axes = plt.subplots(figsize=(8, 4.5))
    for raw, label, colour in ((before, "as recorded", "tab:red"), (after, "corrected", "tab:blue")):
        axes.semilogy(*spectrum_of(raw, start, end), label=label, color=colour, linewidth=0.8)
    axes.set(xlabel="Frequency (Hz)", ylabel="Power density, median channel (µV²/Hz)", xlim=(0, 100))
    axes.legend()
    axes.grid(alpha=0.3)
    figure.tight_layout()
    figure.savefig(picture, dpi=110)
    print(f"{picture}: {end - start:.1f} s of scan, {len(before.ch_names)} channels")


if __name__ == "__main__":
    main()
