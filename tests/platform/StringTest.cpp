#include "Halvo/String.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

namespace {

using Halvo::String;

TEST(String, IsEmptyByDefault) {
  String const text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.size(), 0U);
  EXPECT_STREQ(text.c_str(), "");
}

TEST(String, KeepsTextAcrossTheInlineBorder) {
  for (std::size_t size = 0; size < 200; ++size) {
    SCOPED_TRACE(size);
    std::string const model(size, 'x');
    String const text(model);
    EXPECT_EQ(text.size(), size);
    EXPECT_EQ(text.view(), model);
    EXPECT_EQ(text.c_str()[size], '\0');
    String copy(text);
    EXPECT_EQ(copy, text);
    String const moved(std::move(copy));
    EXPECT_EQ(moved, text);
  }
}

TEST(String, HoldsNulBytesAndOrdersByUnsignedBytes) {
  String const a("a\0b", 3);
  EXPECT_EQ(a.size(), 3U);
  EXPECT_NE(a, String("a"));
  EXPECT_LT(String("a"), a);
  EXPECT_LT(String("a"), String("\x80"));
  EXPECT_LT(String("Z"), String("a"));
}

TEST(String, IsEmptyAfterClearAndTakesTextAgain) {
  for (std::size_t size : {0U, 1U, 63U, 64U, 500U}) {
    SCOPED_TRACE(size);
    String text(size, 'x');
    text.clear();
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), "");
    text += "again";
    EXPECT_EQ(text, "again");
  }
}

TEST(String, AppendsPartsOfItself) {
  String text("0123456789");
  for (int i = 0; i < 6; ++i) text += text;
  std::string model("0123456789");
  for (int i = 0; i < 6; ++i) model += std::string(model);
  EXPECT_EQ(text.view(), model);
  text.assign(text.view().substr(5, 7));
  EXPECT_EQ(text, "5678901");
}

TEST(String, CopiesOverAnyOtherText) {
  constexpr std::size_t sizes[] = {0, 1, 62, 63, 64, 65, 500};
  for (std::size_t const from : sizes) {
    for (std::size_t const to : sizes) {
      SCOPED_TRACE(std::to_string(from) + " over " + std::to_string(to));
      String const source(from, 's');
      String target(to, 't');
      EXPECT_EQ(&(target = source), &target);
      EXPECT_EQ(target.view(), std::string(from, 's'));
      EXPECT_EQ(target.c_str()[from], '\0');
      target += 't';
      EXPECT_EQ(target.view(), std::string(from, 's') + 't');
      EXPECT_EQ(source.view(), std::string(from, 's'));
    }
    String same(from, 's');
    const String& itself = same;
    same = itself;
    EXPECT_EQ(same.view(), std::string(from, 's'));
  }
}

TEST(String, AgreesWithStdStringOnRandomOperations) {
  std::mt19937 random(20);
  String text;
  std::string model;
  for (int step = 0; step < 200'000; ++step) {
    auto const n = random() % 90;
    char const c = static_cast<char>(random() & 0xFF);
    switch (random() % 10) {
      case 0:
        text += c;
        model += c;
        break;
      case 1:
        text.append(n, c);
        model.append(n, c);
        break;
      case 2:
        text.resize(n, c);
        model.resize(n, c);
        break;
      case 3:
        text.reserve(n);
        break;
      case 4:
        text.shrinkToFit();
        break;
      case 5: {
        String other(text);
        text = other;
        other += 'x';
        break;
      }
      case 6: {
        String other(std::move(text));
        text = std::move(other);
        break;
      }
      case 7:
        if (!model.empty()) {
          auto const from = random() % model.size();
          text.append(text.view().substr(from));
          model.append(std::string(model.substr(from)));
        }
        break;
      case 8:
        text.assign(std::string(n, c));
        model.assign(n, c);
        break;
      default: {
        String other(n, c);
        text.swap(other);
        model = std::string(n, c);
        break;
      }
    }
    ASSERT_EQ(text.view(), model);
    ASSERT_EQ(text.c_str()[model.size()], '\0');
    if (model.size() > 4000) {
      text.clear();
      model.clear();
    }
  }
}

TEST(String, StreamsAllItsBytesWithWidth) {
  std::ostringstream out;
  out.width(5);
  out << String("a\0b", 3);
  EXPECT_EQ(out.str(), std::string("  a\0b", 5));
}

TEST(String, HashesByValue) {
  EXPECT_EQ(std::hash<String>{}("abc"), std::hash<String>{}(String("abc")));
}

TEST(String, RefusesWhatIsTooLong) {
  String text("kept");
  EXPECT_THROW(text.reserve(String::npos), std::length_error);
  EXPECT_THROW((void)text.appendUninitialized(String::npos - 1), std::length_error);
  try {
    text.reserve(String::maxSize() + 1);
    ADD_FAILURE() << "nothing thrown";
  } catch (const std::length_error& error) {
    EXPECT_STREQ(error.what(), "Halvo::String: too long");
  }
  try {
    (void)text.appendUninitialized(String::maxSize() - 3);
    ADD_FAILURE() << "nothing thrown";
  } catch (const std::length_error& error) {
    EXPECT_STREQ(error.what(), "Halvo::String: too long");
  }
  EXPECT_THROW((void)text.substr(5), std::out_of_range);
  EXPECT_EQ(text, "kept");
}

TEST(StringDeathTest, StopsOnNullText) {
  const char* volatile text = nullptr;  // hidden from the compiler
  EXPECT_DEATH(String{text},
               "^assertion failed: text != nullptr at platform/Halvo/String:0 in "
               "Halvo::String::String\\(const char\\*\\)\n$");
}

}  // namespace
