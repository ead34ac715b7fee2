#include "host/Transcript.h"

namespace emeg {

bool Transcript::open(const std::filesystem::path& file, std::string& problem) {
  stream_.open(file, std::ios::binary | std::ios::trunc);
  if (stream_) return true;
  problem = "the transcript " + file.string() + " cannot be written";
  return false;
}

void Transcript::write(const Line& line) {
  if (!stream_.is_open()) return;
  stream_ << line.dump(-1, ' ', false, Line::error_handler_t::replace) << '\n' << std::flush;
  if (!stream_) failed_ = true;
}

} // namespace emeg
