#!/usr/bin/python3
"""Writes small BrainVision recordings: make_brainvision_files.py FOLDER

Number stored for channel c (from 0) and sample t: 1000 * c + t - 200, times the resolution in floats of some files; what
a file does differently stands where it is made. Format: BrainVision Core Data Format 1.0. Needs nothing but Python.
"""
import os
import struct
import sys

LENGTH = 400
CRLF = "\r\n"


def number(channel, sample):
    return 1000 * channel + sample - 200


def data(nr_of_channels, code, vectorized, value=number):
    """`code` is struct's: "<h" for little-endian 16-bit integers."""
    channels, samples = range(nr_of_channels), range(LENGTH)
    if vectorized:
        values = [value(c, t) for c in channels for t in samples]
    else:
        values = [value(c, t) for t in samples for c in channels]
    return struct.pack(code[0] + str(len(values)) + code[1], *values)


def header(files, layout, interval, channels, codepage="UTF-8", binary="", comment=""):
    """`channels`: the values of Ch1=, Ch2=, ..."""
    lines = ["Brain Vision Data Exchange Header File Version 1.0", "; Written by a script", "", "[Common Infos]"]
    lines += ([f"Codepage={codepage}"] if codepage else []) + files
    lines += ["DataFormat=BINARY", f"DataOrientation={layout[1]}", f"NumberOfChannels={len(channels)}"]
    lines += ["; the time from sample to sample in microseconds", f"SamplingInterval={interval}", ""]
    lines += ["[Binary Infos]", f"BinaryFormat={layout[0]}"] + ([binary] if binary else []) + [""]
    lines += ["[Channel Infos]", "; Ch<number>=<name>,<reference>,<resolution>,<unit>"]
    lines += [f"Ch{i + 1}={channel}" for i, channel in enumerate(channels)]
    return CRLF.join(lines + [""]) + (CRLF + "[Comment]" + CRLF + comment if comment else "")


def markers(data_file, entries):
    lines = ["Brain Vision Data Exchange Marker File, Version 1.0", "", "[Common Infos]", "Codepage=UTF-8"]
    lines += [f"DataFile={data_file}", "", "[Marker Infos]", "; Mk<number>=<type>,<description>,<position>,..."]
    return CRLF.join(lines + entries + [""])


def files_of(name):
    return [f"DataFile={name}.eeg", f"MarkerFile={name}.vmrk"]


def main(folder):
    def write(name, content):
        with open(os.path.join(folder, name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    usual_markers = [
        "Mk1=New Segment,,1,1,0,20231231235958123456",
        "Mk2=Stimulus,S  1,11,1,0",
        "Mk3=Comment,eyes open\\1 then closed,101,50,2",
        "Mk4=Response,R 12,400,1,0",
    ]
    units = ["Fp1,,0.5,µV", "EOG,Cz,0.25,mV", "small,,50,nV", "no unit,,0.1", "Temp,,0.01,C"]

    # Resolutions and units; a comment whose lines look like something else; a comma in a name and a reference.
    comment = CRLF.join(["A m p l i f i e r   S e t u p", "; kept", "", "Ch1=no channel", "Größe: 58 cm"])
    write("int16_multiplexed.vhdr", header(files_of("int16_multiplexed"), ("INT_16", "MULTIPLEXED"), 5000, units,
                                           comment=comment))
    write("int16_multiplexed.eeg", data(5, "<h", False))
    write("int16_multiplexed.vmrk", markers("int16_multiplexed.eeg", usual_markers))

    # Latin-1 in names, units and markers, as older recorders write; no Codepage; a rate whose interval is no whole number;
    # "$b" stands for the header's name.
    latin = ["Fp1,,0.5,µV", "Stirn\\1 größer,Ohr\\1 links,2,µV", "EKG,,1,mV"]
    write("int16_vectorized_latin1.vhdr", header(["DataFile=$b.eeg", "MarkerFile=$b.vmrk"], ("INT_16", "VECTORIZED"),
                                                 "1666.666666666667", latin, codepage="").encode("latin-1"))
    write("int16_vectorized_latin1.eeg", data(3, "<h", True))
    write("int16_vectorized_latin1.vmrk", markers("int16_vectorized_latin1.eeg", ["Mk1=Comment,Blick auf Tür,31,1,0"])
          .replace("UTF-8", "ANSI").encode("latin-1"))

    # Floats with resolutions, names in UTF-8; entries that are no markers, positions outside, an order of their own,
    # missing fields.
    names = ["Fp1,,1,µV", "βeta ✓,,0.001,mV", "ECG,,,"]
    odd_markers = [
        "; a comment",
        "Mk1=Stimulus,S  2,201,1,0",
        "Mk2=Stimulus,S  1,11",
        "Mk3=Stimulus,no position,,1,0",
        "Mk4=Stimulus,too few",
        "Mkx=Stimulus,S  9,5,1,0",
        "no sign of equality",
        "Mk7=Comment,after the end,9999,1,0",
        "Mk8=,,21,0,77",
        "Mk8=Comment,the number came already,31,1,3",
        "",
        "[Something Else]",
        "Mk9=Stimulus,in another section,41,1,0",
    ]
    write("float32_multiplexed.vhdr", header(files_of("float32_multiplexed"), ("IEEE_FLOAT_32", "MULTIPLEXED"), 4000,
                                             names))
    write("float32_multiplexed.eeg", data(3, "<f", False, lambda c, t: number(c, t) / 8))
    write("float32_multiplexed.vmrk", markers("float32_multiplexed.eeg", odd_markers))

    # A marker file that begins with its first section; lines end with LF only, the last one not at all.
    write("float32_vectorized.vhdr", header(files_of("float32_vectorized"), ("IEEE_FLOAT_32", "VECTORIZED"), 200,
                                            names).replace(CRLF, "\n"))
    write("float32_vectorized.eeg", data(3, "<f", True, lambda c, t: number(c, t) / 8))
    text = markers("float32_vectorized.eeg", ["Mk1=Stimulus,S  1,11,1,0", "Mk2=Response,R  1,400,1,0"])
    write("float32_vectorized.vmrk", text[text.index("[Common") :].replace(CRLF, "\n").rstrip("\n"))

    # Other headers of the same samples: without a marker file, and with one that is not there.
    write("without_markers.vhdr", header(["DataFile=int16_multiplexed.eeg"], ("INT_16", "MULTIPLEXED"), 5000, units))
    write("missing_markers.vhdr", header(["DataFile=int16_multiplexed.eeg", "MarkerFile=lost.vmrk"],
                                         ("INT_16", "MULTIPLEXED"), 5000, units))
    # A text editor's byte order mark in front of texts that begin with their first section.
    text = header(["DataFile=int16_multiplexed.eeg", "MarkerFile=byte_order_mark.vmrk"], ("INT_16", "MULTIPLEXED"), 5000,
                  units)
    write("byte_order_mark.vhdr", "\ufeff" + text[text.index("[Common") :])
    text = markers("int16_multiplexed.eeg", usual_markers)
    write("byte_order_mark.vmrk", "\ufeff" + text[text.index("[Marker") :])

    # Rarer numbers: 32-bit integers with the highest byte first; unsigned integers, 200 added to each.
    write("int32_bigendian.vhdr", header(["DataFile=int32_bigendian.eeg"], ("INT_32", "MULTIPLEXED"), 5000, units[:2],
                                         binary="UseBigEndianOrder=YES"))
    write("int32_bigendian.eeg", data(2, ">i", False, lambda c, t: 1000 * number(c, t)))
    write("uint16_vectorized.vhdr", header(["DataFile=uint16_vectorized.eeg"], ("UINT_16", "VECTORIZED"), 5000,
                                           units[:2]))
    write("uint16_vectorized.eeg", data(2, "<H", True, lambda c, t: number(c, t) + 200))


if __name__ == "__main__":
    main(sys.argv[1])
