#include "app/correct/TabSeparated.h"

#include "files/exchange/Recording.h"
#include "files/exchange/TextFile.h"

#include <algorithm>

namespace emeg {

namespace {

constexpr const char* notAvailable = "n/a";
constexpr int64_t largestTable = int64_t{1} << 28;

std::vector<std::string> valuesIn(std::string_view line) {
  std::vector<std::string> values;
  for (size_t start = 0;;) {
    const size_t tab = line.find('\t', start);
    values.emplace_back(line.substr(start, tab == std::string_view::npos ? tab : tab - start));
    if (tab == std::string_view::npos) return values;
    start = tab + 1;
  }
}

std::string lineOf(const std::vector<std::string>& values) {
  std::string line;
  for (const std::string& value : values) {
    if (&value != &values.front()) line += '\t';
    std::string text = onOneLine(value);
    std::replace(text.begin(), text.end(), '\t', ' ');
    line += text.empty() ? notAvailable : text;
  }
  return line + "\n";
}

} // namespace

int TabSeparated::columnNamed(const std::string& name) const {
  const auto found = std::find(columns.begin(), columns.end(), name);
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

std::string TabSeparated::value(const std::vector<std::string>& row, const std::string& column) const {
  const int index = columnNamed(column);
  return index < 0 ? notAvailable : row[static_cast<size_t>(index)];
}

size_t TabSeparated::addColumn(const std::string& name) {
  const int index = columnNamed(name);
  if (index >= 0) return static_cast<size_t>(index);
  columns.push_back(name);
  for (auto& row : rows) row.emplace_back(notAvailable);
  return columns.size() - 1;
}

std::vector<std::string> TabSeparated::emptyRow() const {
  return std::vector<std::string>(columns.size(), notAvailable);
}

std::string TabSeparated::text() const {
  std::string all = lineOf(columns);
  for (const auto& row : rows) all += lineOf(row);
  return all;
}

TabSeparated readTabSeparated(const std::string& path) {
  const std::string text = readTextFile(path, largestTable, "a table of a BIDS dataset");
  TabSeparated table;
  forEachLine(text, [&table](std::string_view line) {
    if (trimmed(line).empty()) return;
    std::vector<std::string> values = valuesIn(line);
    if (table.columns.empty()) {
      table.columns = std::move(values);
      return;
    }
    values.resize(table.columns.size(), notAvailable);
    table.rows.push_back(std::move(values));
  });
  if (table.columns.empty())
    throw RecordingError("\"" + path + "\" is empty: a line with the columns' names is missing.");
  return table;
}

} // namespace emeg
