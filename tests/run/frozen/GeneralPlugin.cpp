// A plug-in that offers every dialogue of the converter: the shell of the artifact plug-in around a run whose
// options stand in the environment variable EMEG_RUN_OPTIONS, as words with a blank between them. The only
// file here that knows the converter.

#include "plugin/RunPlugin.h"
#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"

#include <cstdlib>
#include <new>
#include <sstream>
#include <string>

namespace {

bool isWanted(const std::string& option) {
  const char* const wanted = std::getenv("EMEG_RUN_OPTIONS");
  std::istringstream words(wanted != nullptr ? wanted : "");
  for (std::string word; words >> word;)
    if (word == option) return true;
  return false;
}

class GeneralConverter : public emeg::EMEGArtifactPreprocessor {
public:
  GeneralConverter() : EMEGArtifactPreprocessor("// General > ", true) {
    options.isEEG = !isWanted("meg");
    options.selectChannels = isWanted("channels");
    options.selectTimeInterval = isWanted("interval");
    options.applyFilters = isWanted("filters");
    options.correctArtifacts = isWanted("artifacts");
    options.applyScaling = isWanted("scaling");
    options.offerAverageReference = isWanted("reference");
    options.forceHeaderUpdate = isWanted("header");
    options.parametersFromDialog = isWanted("dialogue");
  }

  /// Makes the protocols ask for the names of their conditions.
  bool afterChunkFilesHook() override {
    if (isWanted("names"))
      for (emeg::Protocol& protocol : protocolList.protocols) protocol.interactive = true;
    return true;
  }
};

} // namespace

extern "C" int emegRunPlugin() {
  if (!emeg::resolveHostFunctions()) return 0;
  GeneralConverter converter;
  return converter.run(2, 1, 0) ? 1 : 0;
}

extern "C" void* emegAllocateObject(unsigned long long nrOfBytes) {
  return ::operator new(nrOfBytes, std::nothrow);
}

extern "C" void emegFreeObject(void* object) {
  ::operator delete(object);
}
