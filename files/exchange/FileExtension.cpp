#include "files/exchange/FileExtension.h"

#include <cctype>
#include <filesystem>

namespace emeg {

namespace fs = std::filesystem;

std::string extensionOf(const std::string& path) {
  std::string extension = fs::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension;
}

std::string withoutExtension(const std::string& path) {
  return path.substr(0, path.size() - fs::path(path).extension().string().size());
}

std::string fileNameOf(const std::string& path) {
  return fs::path(path).filename().string();
}

std::string besideFile(const std::string& path, const std::string& name) {
  return (fs::path(path).parent_path() / name).string();
}

std::string refusalOfExtension(const std::string& path) {
  const std::string extension = extensionOf(path);
  const std::string start = "\"" + path + "\": ";
  if (extension == ".eeg" || extension == ".vmrk" || extension == ".dat")
    return start + "this is a part of a BrainVision recording; give its header, the .vhdr file beside it.";
  if (extension == ".fdt")
    return start + "this is the data part of an EEGLAB recording; give the .set file beside it.";
  if (extension == ".ccd" || extension == ".prt")
    return start + "this describes a recording; give the .ctc file beside it.";
  return start + (extension.empty() ? "the name has no extension" : "the extension is not known") +
         "; recordings end in .ctc, .vhdr, .edf, .bdf or .set.";
}

std::string refusalOfOutputExtension(const std::string& path) {
  if (extensionOf(path) == ".set")
    return "\"" + path + "\": EEGLAB's .set is read, not written; EEGLAB imports .vhdr and .bdf.";
  return "\"" + path +
         "\": recordings are written as .ctc, .vhdr, .edf or .bdf; choose one of these extensions.";
}

} // namespace emeg
