#!/bin/sh
# Writes small recordings with biosig (Debian package biosig-tools, 2.5.0) from those that make_edf_files.py and
# make_brainvision_files.py wrote: make_biosig_files.sh, run in its own folder
#
# What biosig makes of them, and the tests therefore expect: EDF and BDF are called EDF+C, without annotations; EDF is
# scaled to its largest range anew, BDF has a data record per sample and no status channel; BrainVision loses resolutions,
# units and the names of markers, and names a marker file "vhdr" that is not there.
set -e
save2gdf -f=EDF edf/plus_without_annotations.edf edf/biosig.edf
save2gdf -f=BDF edf/plain.bdf edf/biosig.bdf
cd brainvision
save2gdf -f=BVA int16_multiplexed.vhdr biosig.eeg
