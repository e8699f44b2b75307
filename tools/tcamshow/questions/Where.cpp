#include "questions/Where.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "io/Nearest.h"
#include "io/SafeText.h"
#include "match/FieldValues.h"
#include "match/Match.h"

namespace tcamshow {

namespace {

/// An entry as the terms of one condition look at it: its match is made when the first asks.
class Subject {
 public:
  explicit Subject(const EntryFacts& facts) noexcept : facts_(facts) {}

  const EntryFacts& facts() const noexcept { return facts_; }
  const Match& match() {
    if (!match_) match_.emplace(matchOf(facts_.entry));
    return *match_;
  }

 private:
  const EntryFacts& facts_;
  std::optional<Match> match_;
};

char lowered(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool holdsText(std::string_view text, std::string_view part) noexcept {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return lowered(a) == lowered(b); }) != text.end();
}

}  // namespace

class Where::Condition {
 public:
  Condition() = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;
  virtual ~Condition() = default;

  virtual bool holds(Subject& subject) const = 0;
  virtual bool asksName() const noexcept = 0;
};

namespace {

using Condition = Where::Condition;
using Conditions = std::vector<std::unique_ptr<Condition>>;

/// All of its conditions hold, or one of them does.
class Joined final : public Condition {
 public:
  Joined(bool isAnd, Conditions conditions) : isAnd_(isAnd), conditions_(std::move(conditions)) {}

  bool holds(Subject& subject) const override {
    for (auto const& condition : conditions_) {
      if (condition->holds(subject) != isAnd_) return !isAnd_;
    }
    return isAnd_;
  }
  bool asksName() const noexcept override {
    return std::any_of(conditions_.begin(), conditions_.end(),
                       [](auto const& condition) { return condition->asksName(); });
  }

 private:
  bool isAnd_;
  Conditions conditions_;
};

class Not final : public Condition {
 public:
  explicit Not(std::unique_ptr<Condition> condition) : condition_(std::move(condition)) {}

  bool holds(Subject& subject) const override { return !condition_->holds(subject); }
  bool asksName() const noexcept override { return condition_->asksName(); }

 private:
  std::unique_ptr<Condition> condition_;
};

enum class Relation : std::uint8_t {
  equal,
  unequal,
  less,
  lessOrEqual,
  greater,
  greaterOrEqual,
  holds,
  within,
  covers,
  overlaps,
};

class NumberTerm final : public Condition {
 public:
  NumberTerm(const Attribute& attribute, Relation relation, Number number) noexcept
      : attribute_(attribute), relation_(relation), number_(number) {}

  bool holds(Subject& subject) const override {
    auto const number = attribute_.number(subject.facts());
    if (!number) return false;
    switch (relation_) {
      case Relation::equal:
        return *number == number_;
      case Relation::unequal:
        return *number != number_;
      case Relation::less:
        return *number < number_;
      case Relation::lessOrEqual:
        return *number <= number_;
      case Relation::greater:
        return *number > number_;
      default:
        return *number >= number_;
    }
  }
  bool asksName() const noexcept override { return false; }

 private:
  const Attribute& attribute_;
  Relation relation_;
  Number number_;
};

class TextTerm final : public Condition {
 public:
  TextTerm(const Attribute& attribute, Relation relation, std::string text)
      : attribute_(attribute), relation_(relation), text_(std::move(text)) {}

  bool holds(Subject& subject) const override {
    std::string_view const text = attribute_.text(subject.facts());
    if (relation_ == Relation::holds) return holdsText(text, text_);
    return (text == text_) == (relation_ == Relation::equal);
  }
  bool asksName() const noexcept override { return attribute_.name == "name"; }

 private:
  const Attribute& attribute_;
  Relation relation_;
  std::string text_;
};

class FieldTerm final : public Condition {
 public:
  FieldTerm(const FieldName& name, Relation relation, FieldSets values)
      : name_(name), relation_(relation), values_(std::move(values)) {}

  bool holds(Subject& subject) const override {
    const Match& match = subject.match();
    if (!hasField(match, subject.facts().entry.table, name_)) return false;
    FieldValues const values(match, name_);
    std::span<const FieldSet> const held = values.sets();
    switch (relation_) {
      case Relation::within:
        return isWithin(held, values_);
      case Relation::covers:
        return isWithin(values_, held);
      case Relation::overlaps:
        return overlap(held, values_);
      default:
        return (isWithin(held, values_) && isWithin(values_, held)) ==
               (relation_ == Relation::equal);
    }
  }
  bool asksName() const noexcept override { return false; }

 private:
  const FieldName& name_;
  Relation relation_;
  FieldSets values_;
};

struct RelationName {
  std::string_view name;
  Relation relation;
};
constexpr std::array relationNames = std::to_array<RelationName>({
    {"=", Relation::equal},
    {"!=", Relation::unequal},
    {"<=", Relation::lessOrEqual},
    {"<", Relation::less},
    {">=", Relation::greaterOrEqual},
    {">", Relation::greater},
    {"~", Relation::holds},
    {"within", Relation::within},
    {"covers", Relation::covers},
    {"overlaps", Relation::overlaps},
});

/// Which relations an operand takes, and how a message names them.
struct Operators {
  std::string_view text;
  bool (*takes)(Relation relation);
};
constexpr Operators numberOperators{"=, !=, <, <=, > or >=", [](Relation relation) {
                                      return relation <= Relation::greaterOrEqual;
                                    }};
constexpr Operators textOperators{
    "=, != or ~",
    [](Relation relation) { return relation <= Relation::unequal || relation == Relation::holds; }};
constexpr Operators fieldOperators{"=, !=, within, covers or overlaps", [](Relation relation) {
                                     return relation <= Relation::unequal ||
                                            relation >= Relation::within;
                                   }};

/// Reads a condition.
class Reader {
 public:
  explicit Reader(std::string_view text) noexcept : text_(text) {}

  std::unique_ptr<Condition> read() {
    auto condition = joined(false, 0);
    if (skipBlanks() != text_.size()) fail(at_, R"(expected "and", "or" or the end)");
    return condition;
  }
  /// Where the first term stands that is about more than the place.
  const std::optional<std::size_t>& beyondPlaceAt() const noexcept { return beyondPlaceAt_; }

 private:
  // A text cannot nest deeper: each level is a call.
  static constexpr unsigned deepest = 200;

  [[noreturn]] static void fail(std::size_t at, const std::string& message) {
    throw TextFault(at, message);
  }

  std::size_t skipBlanks() noexcept {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
    return at_;
  }
  /// The word at the front, which stays there; empty where none stands.
  std::string_view peekWord() noexcept {
    skipBlanks();
    std::size_t end = at_;
    while (end < text_.size() && isWordCharacter(text_[end])) ++end;
    return text_.substr(at_, end - at_);
  }
  static bool isWordCharacter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
  }
  bool skipWord(std::string_view word) noexcept {
    if (peekWord() != word) return false;
    at_ += word.size();
    return true;
  }
  bool skip(char c) noexcept {
    if (skipBlanks() == text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  std::unique_ptr<Condition> joined(bool isAnd, unsigned depth) {
    Conditions conditions;
    do {
      conditions.push_back(isAnd ? notOr(depth) : joined(true, depth));
    } while (skipWord(isAnd ? "and" : "or"));
    if (conditions.size() == 1) return std::move(conditions.front());
    return std::make_unique<Joined>(isAnd, std::move(conditions));
  }

  std::unique_ptr<Condition> notOr(unsigned depth) {
    if (depth == deepest) fail(at_, "the condition nests too deep");
    if (skipWord("not")) return std::make_unique<Not>(notOr(depth + 1));
    if (!skip('(')) return term();
    auto condition = joined(false, depth + 1);
    if (!skip(')')) fail(at_, R"x(expected "and", "or" or ")")x");
    return condition;
  }

  std::unique_ptr<Condition> term() {
    std::string_view const name = peekWord();
    std::size_t const nameAt = at_;
    if (name.empty()) {
      fail(at_, R"x(expected a term such as "src within 10.0.0.0/8", "not" or "(")x");
    }
    at_ += name.size();
    const Attribute* const attribute = attributeByName(name);
    if (!beyondPlaceAt_ && (attribute == nullptr || !attribute->isOfPlace)) beyondPlaceAt_ = nameAt;
    if (attribute != nullptr) {
      if (attribute->number != nullptr) return numberTerm(*attribute);
      return textTerm(*attribute);
    }
    const FieldName* const field = fieldByName(name);
    if (field == nullptr) unknownName(nameAt, name);
    Relation const relation = operation(fieldOperators);
    std::size_t const at = skipBlanks();
    std::string const values = value();
    try {
      return std::make_unique<FieldTerm>(*field, relation, valuesFromText(*field, values));
    } catch (const TextFault& fault) {
      fail(placeInValue(at, fault.at()), fault.what());
    }
  }

  [[noreturn]] static void unknownName(std::size_t at, std::string_view name) {
    std::vector<std::string_view> names;
    for (const FieldName& field : fieldNames()) names.push_back(field.name);
    for (const Attribute& attribute : attributes()) names.push_back(attribute.name);
    std::string message = inQuotes(name) + " is no field and no attribute";
    std::string const near = suggestion(name, names);
    if (near.empty()) {
      message += ": expected one of";
      for (std::string_view const one : names) message += " " + std::string(one);
    }
    fail(at, message + near);
  }

  Relation operation(const Operators& operators) {
    skipBlanks();
    for (const RelationName& known : relationNames) {
      bool const stands = isWordCharacter(known.name.front())
                              ? peekWord() == known.name
                              : text_.substr(at_).starts_with(known.name);
      if (!stands) continue;
      if (!operators.takes(known.relation)) break;
      at_ += known.name.size();
      return known.relation;
    }
    fail(at_, "expected " + std::string(operators.text));
  }

  /// The value at the front: a text in quotes, or all up to a blank or a parenthesis.
  std::string value() {
    std::size_t const begin = skipBlanks();
    if (skip('"')) {
      std::string text;
      for (; at_ < text_.size() && text_[at_] != '"'; ++at_) {
        if (text_[at_] == '\\' && at_ + 1 < text_.size()) ++at_;
        text += text_[at_];
      }
      if (!skip('"')) fail(begin, "the quotes are not closed");
      return text;
    }
    std::size_t const end = std::min(text_.find_first_of(" \t()", at_), text_.size());
    if (end == at_) fail(at_, "expected a value");
    at_ = end;
    return std::string(text_.substr(begin, end - begin));
  }

  /// The place in the whole text of a character of the value that begins at `begin`.
  std::size_t placeInValue(std::size_t begin, std::size_t offset) const noexcept {
    if (text_[begin] != '"') return begin + offset;
    std::size_t at = begin + 1;
    for (;; ++at) {
      // A backslash is no part of the value, as value() reads it.
      if (text_[at] == '\\' && at + 1 < text_.size()) ++at;
      if (offset-- == 0) return at;
    }
  }

  std::unique_ptr<Condition> numberTerm(const Attribute& attribute) {
    Relation const relation = operation(numberOperators);
    std::size_t const at = skipBlanks();
    std::string const text = value();
    std::string_view digits = text;
    bool const isNegative = digits.starts_with('-');
    if (isNegative) digits.remove_prefix(1);
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
      base = 16;
      digits.remove_prefix(2);
    }
    std::uint64_t number = 0;
    auto const [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    if (error != std::errc() || end != digits.data() + digits.size()) {
      fail(at, "expected a number in place of " + inQuotes(text));
    }
    return std::make_unique<NumberTerm>(attribute, relation,
                                        isNegative ? -Number{number} : Number{number});
  }

  std::unique_ptr<Condition> textTerm(const Attribute& attribute) {
    Relation const relation = operation(textOperators);
    std::size_t const at = skipBlanks();
    std::string text = value();
    bool const isKnown =
        attribute.texts.empty() || relation == Relation::holds ||
        std::find(attribute.texts.begin(), attribute.texts.end(), text) != attribute.texts.end();
    if (!isKnown) {
      std::string message = inQuotes(text) + " is no " + std::string(attribute.name) + ": expected";
      for (std::string_view const one : attribute.texts) {
        message += one == attribute.texts.front()  ? " "
                   : one == attribute.texts.back() ? " or "
                                                   : ", ";
        message += one;
      }
      fail(at, message);
    }
    return std::make_unique<TextTerm>(attribute, relation, std::move(text));
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::optional<std::size_t> beyondPlaceAt_;
};

}  // namespace

Where::Where(std::string_view text) {
  Reader reader(text);
  condition_ = reader.read();
  beyondPlaceAt_ = reader.beyondPlaceAt();
}
Where::Where(Where&&) noexcept = default;
Where& Where::operator=(Where&&) noexcept = default;
Where::~Where() = default;

bool Where::holds(const EntryFacts& facts) const {
  Subject subject(facts);
  return condition_->holds(subject);
}
bool Where::asksName() const noexcept { return condition_->asksName(); }

}  // namespace tcamshow
