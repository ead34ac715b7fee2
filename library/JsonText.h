#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace emeg {

/// Writes one JSON value (RFC 8259) from front to back. Numbers that are not finite become null, bytes that
/// are no UTF-8 the replacement character. Whoever calls opens and closes in pairs and gives every member of
/// an object its key.
class JsonText {
public:
  void openObject() { open('{'); }
  void closeObject() { close('}'); }
  void openArray() { open('['); }
  void closeArray() { close(']'); }
  void key(std::string_view name);

  void value(double number);
  void value(int64_t number);
  void value(bool truth);
  void value(std::string_view text);
  void value(const char* text) { value(std::string_view(text)); }
  void null();

  template <class T>
  void member(std::string_view name, const T& content) {
    key(name);
    value(content);
  }

  const std::string& text() const { return text_; }

private:
  void open(char bracket);
  void close(char bracket);
  void separate();
  void quote(std::string_view text);

  std::string text_;
  bool needsComma_ = false;
};

} // namespace emeg
