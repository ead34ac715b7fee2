#pragma once

#include "files/exchange/ScratchCopy.h"

#include <cstdint>
#include <matio.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// A value in a MAT file, owned or a part of an owned one. Dimensions are known, its data once it was loaded.
using MatValue = std::shared_ptr<matvar_t>;

/// A MAT file (version 5 or 7.3), read with matio; a compressed one of version 5 is unpacked into a scratch
/// file first.
class MatFile {
public:
  /// Throws RecordingError when it is none.
  explicit MatFile(const std::string& path);

  /// The struct of that name and its fields; where there is no such variable, the fields are looked for as
  /// variables of their own.
  void openStruct(const std::string& name);

  /// A field, without its data; null when it is not there.
  MatValue field(const std::string& name);
  /// With its data and that of everything in it.
  MatValue loadedField(const std::string& name);

  /// False when the file is shorter than the matrix's dimensions demand: matio would fill it with zeros.
  bool hasRoomFor(const MatValue& matrix) const;

  /// Columns first ... first + count - 1 of a matrix that is not loaded: its values column after column.
  /// False when it cannot be read or is not of single, double or integer numbers.
  bool readColumns(const MatValue& matrix, int64_t first, int64_t count, std::vector<double>& values);

private:
  struct Closer {
    void operator()(mat_t* file) const { Mat_Close(file); }
  };
  bool readPiece(const MatValue& matrix, int64_t first, int64_t count, void* bytes);

  std::string path_;
  std::unique_ptr<ScratchCopy> unpacked_; ///< null: nothing in the file is compressed
  std::unique_ptr<mat_t, Closer> file_;
  MatValue struct_;
};

/// Number of elements; 0 for a missing value.
int64_t nrOfElements(const MatValue& value);
/// Rows and columns of a matrix; more dimensions count as columns.
int64_t nrOfRows(const MatValue& value);
int64_t nrOfColumns(const MatValue& value);

/// A loaded scalar; nothing when it is empty or no number.
std::optional<double> numberOf(const matvar_t* value);
/// A loaded text in UTF-8, its rows separated by '\n'; nothing when it is no text.
std::optional<std::string> textOf(const matvar_t* value);
/// A text, or a number as text; empty for anything else.
std::string textOrNumberOf(const matvar_t* value);

/// A field of element `index` of a loaded array of structs; null when it is not there.
matvar_t* elementField(const MatValue& structs, const std::string& name, int64_t index);

} // namespace emeg
