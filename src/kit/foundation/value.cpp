#include "kit/foundation/value.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace kit {

namespace {

const Value& nilValue() {
  static const Value nil;
  return nil;
}

// Leading number of a text, as the platform's intValue / doubleValue read it:
// leading white space skipped, trailing garbage ignored, no number is 0.
double leadingNumber(const std::string& s) {
  const char* begin = s.c_str();
  char* end = nullptr;
  errno = 0;
  double d = std::strtod(begin, &end);
  if (end == begin || !std::isfinite(d))
    return 0;
  return d;
}

int64_t clampToInteger(double d) {
  if (!(d == d))
    return 0;
  if (d >= 9.2e18)
    return std::numeric_limits<int64_t>::max();
  if (d <= -9.2e18)
    return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(d);
}

}  // namespace

const Value::Array* Value::ifArray() const {
  auto p = std::get_if<std::shared_ptr<const Array>>(&v_);
  return p ? p->get() : nullptr;
}

const Value::Dictionary* Value::ifDictionary() const {
  auto p = std::get_if<std::shared_ptr<const Dictionary>>(&v_);
  return p ? p->get() : nullptr;
}

int64_t Value::integerValue() const {
  if (auto b = ifBool())
    return *b ? 1 : 0;
  if (auto i = ifInteger())
    return *i;
  if (auto d = ifReal())
    return clampToInteger(*d);
  if (auto s = ifString()) {
    // Whole numbers are read exactly; anything else goes through a double.
    const char* begin = s->c_str();
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(begin, &end, 10);
    if (end != begin && errno == 0 && (*end == '\0' || *end != '.'))
      return v;
    return clampToInteger(leadingNumber(*s));
  }
  return 0;
}

double Value::doubleValue() const {
  if (auto b = ifBool())
    return *b ? 1.0 : 0.0;
  if (auto i = ifInteger())
    return static_cast<double>(*i);
  if (auto d = ifReal())
    return *d;
  if (auto s = ifString())
    return leadingNumber(*s);
  return 0.0;
}

bool Value::boolValue() const {
  if (auto b = ifBool())
    return *b;
  if (auto i = ifInteger())
    return *i != 0;
  if (auto d = ifReal())
    return *d != 0.0;
  if (auto s = ifString()) {
    size_t i = s->find_first_not_of(" \t\n\r");
    if (i == std::string::npos)
      return false;
    char c = (*s)[i];
    if (c == 'Y' || c == 'y' || c == 'T' || c == 't')
      return true;
    return integerValue() != 0;
  }
  return false;
}

std::optional<std::string> Value::stringValue() const {
  if (auto s = ifString())
    return *s;
  if (auto b = ifBool())
    return std::string(*b ? "1" : "0");
  if (auto i = ifInteger())
    return std::to_string(*i);
  if (auto d = ifReal()) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.17g", *d);
    return std::string(buf);
  }
  return std::nullopt;
}

const Value& Value::operator[](const std::string& key) const {
  if (auto d = ifDictionary()) {
    auto it = d->find(key);
    if (it != d->end())
      return it->second;
  }
  return nilValue();
}

bool operator==(const Value& a, const Value& b) {
  if (a.type() != b.type())
    return false;
  switch (a.type()) {
    case Value::Type::Nil:
      return true;
    case Value::Type::Bool:
      return *a.ifBool() == *b.ifBool();
    case Value::Type::Integer:
      return *a.ifInteger() == *b.ifInteger();
    case Value::Type::Real:
      return *a.ifReal() == *b.ifReal();
    case Value::Type::String:
      return *a.ifString() == *b.ifString();
    case Value::Type::Array:
      return *a.ifArray() == *b.ifArray();
    case Value::Type::Dictionary:
      return *a.ifDictionary() == *b.ifDictionary();
  }
  return false;
}

}  // namespace kit
