#include "kit/foundation/json.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

namespace kit {

namespace {

using nlohmann::json;

// Builds a Value straight from the parser's events, so no intermediate tree
// exists and nothing recurses: containers wait on an explicit stack, and an
// event that would open one level too many stops the parse.
class ValueBuilder final : public nlohmann::json_sax<json> {
 public:
  explicit ValueBuilder(int maxDepth) : maxDepth_(static_cast<size_t>(maxDepth)) {}

  bool null() override { return add(Value()); }
  bool boolean(bool b) override { return add(Value(b)); }
  bool number_integer(number_integer_t i) override { return add(Value(static_cast<long long>(i))); }
  bool number_unsigned(number_unsigned_t u) override {
    if (u <= static_cast<number_unsigned_t>(std::numeric_limits<int64_t>::max())) {
      return add(Value(static_cast<long long>(u)));
    }
    return add(Value(static_cast<double>(u)));
  }
  bool number_float(number_float_t d, const string_t&) override { return add(Value(d)); }
  bool string(string_t& s) override { return add(Value(std::move(s))); }
  bool binary(binary_t&) override { return false; }

  bool start_object(std::size_t) override { return open(true); }
  bool key(string_t& k) override {
    stack_.back().key = std::move(k);
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(false); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return false;
  }

  std::optional<Value> result() {
    return done_ ? std::optional<Value>(std::move(root_)) : std::nullopt;
  }

 private:
  struct Frame {
    bool isObject;
    Value::Array array;
    Value::Dictionary dictionary;
    std::string key;
  };

  bool add(Value v) {
    if (stack_.empty()) {
      root_ = std::move(v);
      done_ = true;
      return true;
    }
    Frame& top = stack_.back();
    if (top.isObject) {
      top.dictionary.insert_or_assign(std::move(top.key), std::move(v));
      top.key.clear();
    } else {
      top.array.push_back(std::move(v));
    }
    return true;
  }

  bool open(bool isObject) {
    if (stack_.size() >= maxDepth_)
      return false;
    stack_.push_back(Frame{isObject, {}, {}, {}});
    return true;
  }

  bool close() {
    Frame top = std::move(stack_.back());
    stack_.pop_back();
    return top.isObject ? add(Value(std::move(top.dictionary))) : add(Value(std::move(top.array)));
  }

  size_t maxDepth_;
  std::vector<Frame> stack_;
  Value root_;
  bool done_ = false;
};

json toNlohmann(const Value& value, int depth) {
  switch (value.type()) {
    case Value::Type::Nil:
      return nullptr;
    case Value::Type::Bool:
      return *value.ifBool();
    case Value::Type::Integer:
      return *value.ifInteger();
    case Value::Type::Real:
      return *value.ifReal();
    case Value::Type::String:
      return *value.ifString();
    case Value::Type::Array: {
      if (depth >= kMaxJsonDepth)
        return nullptr;
      json out = json::array();
      for (const Value& item : *value.ifArray())
        out.push_back(toNlohmann(item, depth + 1));
      return out;
    }
    case Value::Type::Dictionary: {
      if (depth >= kMaxJsonDepth)
        return nullptr;
      json out = json::object();
      for (const auto& [key, item] : *value.ifDictionary())
        out[key] = toNlohmann(item, depth + 1);
      return out;
    }
  }
  return nullptr;
}

}  // namespace

std::optional<Value> parseJson(std::string_view text, int maxDepth) {
  ValueBuilder builder(std::clamp(maxDepth, 0, kMaxJsonDepth));
  try {
    if (!json::sax_parse(text.begin(), text.end(), &builder))
      return std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;
  }
  return builder.result();
}

std::string toJson(const Value& value, int indent) {
  try {
    return toNlohmann(value, 0).dump(indent, ' ', false, json::error_handler_t::replace);
  } catch (const std::exception&) {
    return "null";
  }
}

std::string toJson(const Value& value) {
  return toJson(value, -1);
}

}  // namespace kit
