#pragma once

#include <string>
#include <vector>

namespace emeg {

/// A table with named columns, one tab between two values, as BIDS keeps its events and channels.
struct TabSeparated {
  std::vector<std::string> columns;
  std::vector<std::vector<std::string>> rows; ///< as many values as columns

  /// Index of a column; -1 when there is none.
  int columnNamed(const std::string& name) const;
  /// "n/a" where there is no such column.
  std::string value(const std::vector<std::string>& row, const std::string& column) const;
  /// Index of the column, which is added when it is not there ("n/a" in all rows).
  size_t addColumn(const std::string& name);
  /// A row of "n/a".
  std::vector<std::string> emptyRow() const;
  std::string text() const;
};

/// Throws RecordingError when the file cannot be read or holds no header line. Short rows are filled with
/// "n/a".
TabSeparated readTabSeparated(const std::string& path);

} // namespace emeg
