#include "app/markers/MarkerNames.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace emeg {

namespace {

struct NamedOrigin {
  std::string type, description;
  MarkerOrigin origin;
};

void PrintTo(const NamedOrigin& name, std::ostream* out) {
  *out << name.type << "/" << name.description;
}

class NamesOfMarkers : public testing::TestWithParam<NamedOrigin> {};

TEST_P(NamesOfMarkers, SayWhereTheyComeFrom) {
  EXPECT_EQ(originOfMarker(GetParam().type, GetParam().description), GetParam().origin);
}

INSTANTIATE_TEST_SUITE_P(Scanner, NamesOfMarkers,
                         testing::Values(NamedOrigin{"Response", "R128", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "R128", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "Response/R128", MarkerOrigin::Scanner},
                                         NamedOrigin{"Stimulus", "S128", MarkerOrigin::Scanner},
                                         NamedOrigin{"Toggle", "T  1", MarkerOrigin::Scanner},
                                         NamedOrigin{"Scanner", "T  1", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "Scanner/T  1", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "scanner trigger", MarkerOrigin::Scanner},
                                         NamedOrigin{"Comment", "fMRI", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "fmri_trigger", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "EPI", MarkerOrigin::Scanner},
                                         NamedOrigin{"", "TR", MarkerOrigin::Volume},
                                         NamedOrigin{"Volume", "V  1", MarkerOrigin::Volume},
                                         NamedOrigin{"", "Volume 12", MarkerOrigin::Volume},
                                         NamedOrigin{"", "SliceTrigger", MarkerOrigin::Slice},
                                         NamedOrigin{"Scanner", "slice3", MarkerOrigin::Slice}));

INSTANTIATE_TEST_SUITE_P(Others, NamesOfMarkers,
                         testing::Values(NamedOrigin{"SyncStatus", "Sync On", MarkerOrigin::Other},
                                         NamedOrigin{"Sync Status", "Sync Off", MarkerOrigin::Other},
                                         NamedOrigin{"", "SyncStatus/Sync On", MarkerOrigin::Other},
                                         NamedOrigin{"", "Sync On", MarkerOrigin::Other},
                                         NamedOrigin{"Scanner", "Sync On", MarkerOrigin::Other},
                                         NamedOrigin{"New Segment", "", MarkerOrigin::Other},
                                         NamedOrigin{"", "boundary", MarkerOrigin::Other},
                                         NamedOrigin{"Comment", "MRGradientTriggers", MarkerOrigin::Other},
                                         NamedOrigin{"", "HeartPulseTriggers", MarkerOrigin::Other},
                                         NamedOrigin{"Comment", "BAD_no_pulse_model", MarkerOrigin::Other},
                                         NamedOrigin{"Pulse Artifact", "R", MarkerOrigin::Other},
                                         NamedOrigin{"", "ECG R-peak", MarkerOrigin::Other}));

INSTANTIATE_TEST_SUITE_P(Anything, NamesOfMarkers,
                         testing::Values(NamedOrigin{"Stimulus", "S  1", MarkerOrigin::Unknown},
                                         NamedOrigin{"Response", "R  8", MarkerOrigin::Unknown},
                                         NamedOrigin{"", "trial", MarkerOrigin::Unknown},
                                         NamedOrigin{"", "T 12", MarkerOrigin::Unknown},
                                         NamedOrigin{"", "R1280", MarkerOrigin::Unknown},
                                         NamedOrigin{"", "", MarkerOrigin::Unknown},
                                         NamedOrigin{"", "\xC3\xA4\xFF", MarkerOrigin::Unknown}));

} // namespace

} // namespace emeg
