#include "files/exchange/MatFile.h"

#include "files/exchange/MatElements.h"
#include "files/exchange/Recording.h"
#include "files/exchange/TextFile.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <limits>

namespace emeg {

namespace {

/// matio's own messages go to the terminal, and its errors end the program.
void ignoreMessage(int, char*) {}

template <typename Number>
void appendAs(const std::vector<char>& bytes, std::vector<double>& values) {
  for (size_t i = 0; i < values.size(); ++i) {
    Number number;
    std::memcpy(&number, bytes.data() + i * sizeof(Number), sizeof(Number));
    values[i] = static_cast<double>(number);
  }
}

template <typename Number>
double firstAs(const void* data) {
  Number number;
  std::memcpy(&number, data, sizeof(Number));
  return static_cast<double>(number);
}

size_t bytesPerNumber(matio_classes kind) {
  switch (kind) {
  case MAT_C_DOUBLE:
    return sizeof(double);
  case MAT_C_SINGLE:
    return sizeof(float);
  case MAT_C_INT32:
    return sizeof(int32_t);
  case MAT_C_INT16:
    return sizeof(int16_t);
  default:
    return 0;
  }
}

/// The largest number where it is more; a damaged file may name any dimensions.
int64_t productOf(int64_t one, int64_t other) {
  constexpr int64_t largest = std::numeric_limits<int64_t>::max();
  return one < 0 || other < 0 || (one > 0 && other > largest / one) ? largest : one * other;
}

void appendUtf8(std::string& text, uint32_t code) {
  const auto tail = [&text, code](int shift) { text += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | (code >> 6));
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | (code >> 12));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | (code >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

/// UTF-16 code units as UTF-8; halves without their pair become '?'.
std::string utf8Of(const std::vector<uint16_t>& units) {
  std::string text;
  for (size_t i = 0; i < units.size(); ++i) {
    const uint16_t unit = units[i];
    const bool high = unit >= 0xD800 && unit < 0xDC00;
    if (high && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000) {
      appendUtf8(text, 0x10000U + ((unit & 0x3FFU) << 10) + (units[i + 1] & 0x3FFU));
      ++i;
    } else if (unit >= 0xD800 && unit < 0xE000) {
      text += '?';
    } else {
      appendUtf8(text, unit);
    }
  }
  return text;
}

/// Row `row` of a matrix of characters, which is stored column after column.
std::string rowOfText(const matvar_t& value, size_t row, size_t nrOfRows, size_t nrOfColumns) {
  const auto* bytes = static_cast<const unsigned char*>(value.data);
  if (value.data_size == 2) {
    std::vector<uint16_t> units;
    for (size_t c = 0; c < nrOfColumns; ++c) {
      uint16_t unit = 0;
      std::memcpy(&unit, bytes + 2 * (c * nrOfRows + row), sizeof(unit));
      units.push_back(unit);
    }
    return utf8Of(units);
  }
  std::string text;
  for (size_t c = 0; c < nrOfColumns; ++c) text += static_cast<char>(bytes[c * nrOfRows + row]);
  return toUtf8(text);
}

} // namespace

MatFile::MatFile(const std::string& path) : path_(path), unpacked_(unpackMatElements(path)) {
  Mat_LogInitFunc("emeg", ignoreMessage);
  file_.reset(Mat_Open((unpacked_ ? unpacked_->path() : path).c_str(), MAT_ACC_RDONLY));
  const int version = file_ ? static_cast<int>(Mat_GetVersion(file_.get())) : 0;
  if (version != MAT_FT_MAT5 && version != MAT_FT_MAT73)
    throw RecordingError("\"" + path + "\" is no MAT file of version 5 or 7.3; save it again in EEGLAB.");
}

void MatFile::openStruct(const std::string& name) {
  MatValue value(Mat_VarReadInfo(file_.get(), name.c_str()), Mat_VarFree);
  if (value && value->class_type == MAT_C_STRUCT) struct_ = value;
}

MatValue MatFile::field(const std::string& name) {
  if (struct_) {
    // The struct owns its fields.
    matvar_t* const part = Mat_VarGetStructFieldByName(struct_.get(), name.c_str(), 0);
    return part == nullptr ? nullptr : MatValue(struct_, part);
  }
  matvar_t* const variable = Mat_VarReadInfo(file_.get(), name.c_str());
  return variable == nullptr ? nullptr : MatValue(variable, Mat_VarFree);
}

MatValue MatFile::loadedField(const std::string& name) {
  MatValue value = field(name);
  if (!value || Mat_VarReadDataAll(file_.get(), value.get()) != 0) return nullptr;
  return value;
}

/// matio 1.5.23 reads a piece of a matrix in version 5 correctly as a stretch of elements only, in
/// version 7.3 as a range of columns only.
bool MatFile::readPiece(const MatValue& matrix, int64_t first, int64_t count, void* bytes) {
  const int64_t rows = nrOfRows(matrix);
  constexpr int64_t most = std::numeric_limits<int>::max();
  if (Mat_GetVersion(file_.get()) != MAT_FT_MAT73) {
    if (first + count > most / std::max<int64_t>(rows, 1)) return false;
    return Mat_VarReadDataLinear(file_.get(), matrix.get(), bytes, static_cast<int>(first * rows), 1,
                                 static_cast<int>(count * rows)) == 0;
  }
  if (first + count > most || matrix->rank < 2) return false;
  std::vector<int> start(static_cast<size_t>(matrix->rank), 0);
  std::vector<int> stride(start.size(), 1);
  std::vector<int> edge(start.size(), 1);
  start[1] = static_cast<int>(first);
  edge[0] = static_cast<int>(rows);
  edge[1] = static_cast<int>(count);
  return Mat_VarReadData(file_.get(), matrix.get(), bytes, start.data(), stride.data(), edge.data()) == 0;
}

bool MatFile::hasRoomFor(const MatValue& matrix) const {
  if (Mat_GetVersion(file_.get()) == MAT_FT_MAT73) return true; // HDF5 looks itself
  std::error_code problem;
  const auto size = std::filesystem::file_size(unpacked_ ? unpacked_->path() : path_, problem);
  return !problem && static_cast<uintmax_t>(nrOfElements(matrix)) <= size;
}

bool MatFile::readColumns(const MatValue& matrix, int64_t first, int64_t count, std::vector<double>& values) {
  const size_t width = bytesPerNumber(matrix->class_type);
  const int64_t rows = nrOfRows(matrix);
  if (width == 0 || matrix->isComplex != 0) return false;
  values.resize(static_cast<size_t>(rows * count));
  std::vector<char> bytes(values.size() * width);
  if (!readPiece(matrix, first, count, bytes.data())) return false;
  if (matrix->class_type == MAT_C_DOUBLE) appendAs<double>(bytes, values);
  if (matrix->class_type == MAT_C_SINGLE) appendAs<float>(bytes, values);
  if (matrix->class_type == MAT_C_INT32) appendAs<int32_t>(bytes, values);
  if (matrix->class_type == MAT_C_INT16) appendAs<int16_t>(bytes, values);
  return true;
}

int64_t nrOfElements(const MatValue& value) {
  return productOf(nrOfRows(value), nrOfColumns(value));
}

int64_t nrOfRows(const MatValue& value) {
  return value && value->rank >= 1 && value->dims != nullptr ? static_cast<int64_t>(value->dims[0]) : 0;
}

int64_t nrOfColumns(const MatValue& value) {
  if (!value || value->dims == nullptr) return 0;
  int64_t columns = 1;
  for (int d = 1; d < value->rank; ++d) columns = productOf(columns, static_cast<int64_t>(value->dims[d]));
  return columns;
}

std::optional<double> numberOf(const matvar_t* value) {
  if (value == nullptr || value->data == nullptr || value->nbytes == 0 || value->isComplex != 0)
    return std::nullopt;
  switch (value->class_type) {
  case MAT_C_DOUBLE:
    return firstAs<double>(value->data);
  case MAT_C_SINGLE:
    return firstAs<float>(value->data);
  case MAT_C_INT8:
    return firstAs<int8_t>(value->data);
  case MAT_C_UINT8:
    return firstAs<uint8_t>(value->data);
  case MAT_C_INT16:
    return firstAs<int16_t>(value->data);
  case MAT_C_UINT16:
    return firstAs<uint16_t>(value->data);
  case MAT_C_INT32:
    return firstAs<int32_t>(value->data);
  case MAT_C_UINT32:
    return firstAs<uint32_t>(value->data);
  default:
    return std::nullopt;
  }
}

std::optional<std::string> textOf(const matvar_t* value) {
  if (value == nullptr || value->class_type != MAT_C_CHAR) return std::nullopt;
  if (value->data == nullptr || value->rank < 2 || value->dims == nullptr) return "";
  const size_t rows = value->dims[0];
  const size_t columns = value->dims[1];
  if (rows == 1 && value->data_size == 1)
    return toUtf8(std::string_view(static_cast<const char*>(value->data), value->nbytes));
  if (rows * columns * static_cast<size_t>(value->data_size) > value->nbytes) return std::nullopt;
  std::string text;
  for (size_t row = 0; row < rows; ++row) {
    std::string line = rowOfText(*value, row, rows, columns);
    if (rows > 1) line.erase(line.find_last_not_of(' ') + 1);
    text += row == 0 ? line : '\n' + line;
  }
  return text;
}

std::string textOrNumberOf(const matvar_t* value) {
  if (const auto text = textOf(value)) return *text;
  if (const auto number = numberOf(value)) return fmt::format("{}", *number);
  return "";
}

matvar_t* elementField(const MatValue& structs, const std::string& name, int64_t index) {
  if (!structs || structs->class_type != MAT_C_STRUCT) return nullptr;
  return Mat_VarGetStructFieldByName(structs.get(), name.c_str(), static_cast<size_t>(index));
}

} // namespace emeg
