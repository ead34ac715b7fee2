#include "converter/Converter.h"

#include "dsp/RealFFT.h"

namespace emeg {

LMTRPluginEMEGFileConverter::LMTRPluginEMEGFileConverter(const char* logPrefix, bool littleEndianData)
    : log(logPrefix), swapBytes(littleEndianData != hostIsLittleEndian) {
  initFFTTables();
}

// Streams, chunk files and buffers belong to members that release them.
LMTRPluginEMEGFileConverter::~LMTRPluginEMEGFileConverter() = default;

} // namespace emeg
