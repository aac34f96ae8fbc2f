#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kit {

// A property-list value: nil, boolean, integer, real, string, array or
// dictionary. Preferences, notification objects, strings tables and the
// publisher config all speak it. Arrays and dictionaries are immutable and
// shared, so copies are cheap.
class Value {
 public:
  using Array = std::vector<Value>;
  using Dictionary = std::map<std::string, Value>;
  enum class Type { Nil, Bool, Integer, Real, String, Array, Dictionary };

  Value() = default;
  Value(std::nullptr_t) {}
  Value(bool b) : v_(b) {}
  Value(int i) : v_(static_cast<int64_t>(i)) {}
  Value(long i) : v_(static_cast<int64_t>(i)) {}
  Value(long long i) : v_(static_cast<int64_t>(i)) {}
  Value(double d) : v_(d) {}
  Value(const char* s) : v_(std::string(s)) {}
  Value(std::string s) : v_(std::move(s)) {}
  Value(Array a) : v_(std::make_shared<const Array>(std::move(a))) {}
  Value(Dictionary d) : v_(std::make_shared<const Dictionary>(std::move(d))) {}

  Type type() const { return static_cast<Type>(v_.index()); }
  bool isNil() const { return type() == Type::Nil; }

  // Exact reads: nullptr unless the value has that type.
  const bool* ifBool() const { return std::get_if<bool>(&v_); }
  const int64_t* ifInteger() const { return std::get_if<int64_t>(&v_); }
  const double* ifReal() const { return std::get_if<double>(&v_); }
  const std::string* ifString() const { return std::get_if<std::string>(&v_); }
  const Array* ifArray() const;
  const Dictionary* ifDictionary() const;

  // Converting reads, as the platform's preferences do them: the text "12"
  // is 12, YES is 1, 3.7 is 3; anything else (nil, arrays, "abc") is 0 / NO.
  int64_t integerValue() const;
  double doubleValue() const;
  // YES for true, a non-zero number, or a text starting with Y, y, T, t or a
  // non-zero digit.
  bool boolValue() const;
  // The text itself, or a number written out; nil for everything else.
  std::optional<std::string> stringValue() const;

  // Dictionary member or nil.
  const Value& operator[](const std::string& key) const;

  friend bool operator==(const Value& a, const Value& b);

 private:
  std::variant<std::monostate, bool, int64_t, double, std::string, std::shared_ptr<const Array>,
               std::shared_ptr<const Dictionary>>
      v_;
};

}  // namespace kit
