// Values as bytes, one after another: checkpoints and the states of sinks.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

class ByteWriter {
 public:
  template <typename T>
  void put(const T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  // The elements of a container, without their number.
  template <typename Values>
  void put_all(const Values& values) {
    for (const auto& value : values) put(value);
  }
  // A text after its length.
  void put_text(std::string_view text) {
    put(std::uint64_t{text.size()});
    bytes_ += text;
  }
  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// The bytes are not those of what is read.
struct TooFewBytes : std::runtime_error {
  TooFewBytes() : std::runtime_error("the checkpoint does not fit this run") {}
};

// Reads the same back; throws TooFewBytes. The bytes must outlive it.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

  template <typename T>
  T take() {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, bytes(sizeof value).data(), sizeof value);
    return value;
  }
  std::string_view take_text() { return bytes(take<std::uint64_t>()); }
  // So many elements, or all that are left.
  template <typename Values>
  void take_all(Values& values, std::uint64_t count) {
    using Value = typename Values::value_type;
    if (count > rest_.size() / sizeof(Value)) throw TooFewBytes();
    values.clear();
    for (; count > 0; --count) values.push_back(take<Value>());
  }
  template <typename Values>
  void take_all(Values& values) {
    values.clear();
    while (!is_at_end()) values.push_back(take<typename Values::value_type>());
  }
  [[nodiscard]] bool is_at_end() const { return rest_.empty(); }

 private:
  std::string_view bytes(std::uint64_t count) {
    if (count > rest_.size()) throw TooFewBytes();
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }

  std::string_view rest_;
};
