#include "plugin/converter/Converter.h"

#include "dsp/RealFFT.h"

namespace emeg {

LMTRPluginEMEGFileConverter::LMTRPluginEMEGFileConverter(const char* logPrefix, bool littleEndianData)
    : log(logPrefix), swapBytes(littleEndianData != hostIsLittleEndian) {
  initFFTTables();
}

ChannelRole LMTRPluginEMEGFileConverter::roleOf(int32_t outputChannel) const {
  const auto position = static_cast<size_t>(outputChannel);
  if (position >= selection.selectedChannels.size()) return {};
  const auto channel = static_cast<size_t>(selection.selectedChannels[position]);
  return channel < channels.roles.size() ? channels.roles[channel] : ChannelRole();
}

// Streams, chunk files and buffers belong to members that release them.
LMTRPluginEMEGFileConverter::~LMTRPluginEMEGFileConverter() = default;

} // namespace emeg
