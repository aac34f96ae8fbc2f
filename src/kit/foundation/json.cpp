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

  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::detail::exception& e) override {
    // 406: a number beyond the range of a double.
    if (e.id == 406 && position >= token.size())
      overflow_ = Overflow{position - token.size(), token};
    else if (!tooDeep_)
      message_ = e.what();
    return false;
  }

  // Where a number too large for a double stopped the parse, if one did.
  struct Overflow {
    size_t start;
    std::string token;
  };
  std::optional<Overflow> overflow() const { return overflow_; }
  bool tooDeep() const { return tooDeep_; }
  const std::string& message() const { return message_; }

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
    if (stack_.size() >= maxDepth_) {
      tooDeep_ = true;
      return false;
    }
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
  bool tooDeep_ = false;
  std::optional<Overflow> overflow_;
  std::string message_;
};

// Each pass past a number too large for a double re-reads the document; past
// this many such numbers it is refused instead.
constexpr int kMaxOverflowsMended = 16;

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

Result<Value> readJson(std::string_view text, int maxDepth) {
  const int depth = std::clamp(maxDepth, 0, kMaxJsonDepth);
  // A number out of range is written over with null (padded to its length,
  // so later positions hold) and the text read again.
  std::string mended;
  for (int pass = 0;; ++pass) {
    ValueBuilder builder(depth);
    try {
      if (json::sax_parse(text.begin(), text.end(), &builder)) {
        if (std::optional<Value> value = builder.result())
          return std::move(*value);
      }
    } catch (const std::exception& e) {
      return Error{std::string("is not valid JSON (") + e.what() + ")"};
    }
    if (builder.tooDeep())
      return Error{"is nested deeper than " + std::to_string(depth) + " levels"};
    const auto overflow = builder.overflow();
    if (!overflow || pass >= kMaxOverflowsMended || overflow->token.size() < 4 ||
        overflow->start + overflow->token.size() > text.size() ||
        text.substr(overflow->start, overflow->token.size()) != overflow->token) {
      return Error{"is not valid JSON" +
                   (builder.message().empty() ? std::string() : " (" + builder.message() + ")")};
    }
    if (mended.empty())
      mended = std::string(text);
    mended.replace(overflow->start, overflow->token.size(),
                   "null" + std::string(overflow->token.size() - 4, ' '));
    text = mended;
  }
}

std::optional<Value> parseJson(std::string_view text, int maxDepth) {
  Result<Value> value = readJson(text, maxDepth);
  if (!value)
    return std::nullopt;
  return std::move(*value);
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
