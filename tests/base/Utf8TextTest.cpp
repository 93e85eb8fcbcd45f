#include "base/Utf8Text.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tallowen {
namespace {

TEST(Utf8TextTest, IllFormedSequencesBecomeReplacementCharacters) {
    const struct {
        std::string bytes, valid, lossless;
    } cases[] = {
        {"plain é 😀", "plain é 😀", "plain é 😀"},
        {"", "", ""},
        {std::string("a\0b", 3), std::string("a\0b", 3), std::string("a\0b", 3)},
        {"\xff", "\uFFFD", "\uFFFD" "FF"},
        {"caf\xe9!", "caf\uFFFD!", "caf\uFFFD" "E9!"},
        // A truncated three-byte sequence is one maximal subpart, then the next byte.
        {"\xe2\x82x", "\uFFFDx", "\uFFFD" "E2\uFFFD" "82x"},
        // Overlong forms, surrogates and code points past U+10FFFF are ill-formed.
        {"\xc0\xaf", "\uFFFD\uFFFD", "\uFFFD" "C0\uFFFD" "AF"},
        {"\xed\xa0\x80", "\uFFFD\uFFFD\uFFFD", "\uFFFD" "ED\uFFFD" "A0\uFFFD" "80"},
        {"\xf4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD", "\uFFFD" "F4\uFFFD" "90\uFFFD" "80\uFFFD" "80"},
        {"\xf0\x9f\x98", "\uFFFD", "\uFFFD" "F0\uFFFD" "9F\uFFFD" "98"},
        // A replacement character that was there is doubled, so it cannot pass for an escape.
        {"\uFFFD" "FF", "\uFFFD" "FF", "\uFFFD\uFFFD" "FF"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(validUtf8(c.bytes), c.valid) << c.bytes;
        EXPECT_EQ(losslessUtf8(c.bytes), c.lossless) << c.bytes;
        EXPECT_EQ(validUtf8(losslessUtf8(c.bytes)), losslessUtf8(c.bytes)) << c.bytes;
    }
}

// Every string of up to four bytes from an alphabet of troublemakers keeps a text of its own.
TEST(Utf8TextTest, LosslessTextsOfDistinctBytesAreDistinct) {
    const std::string alphabet = std::string("\xef\xbf\xbd\xff\xe9\xc3" "F", 7);
    std::set<std::string> texts;
    size_t strings = 0;
    std::string bytes;
    const auto grow = [&](auto& self, size_t length) -> void {
        ++strings;
        texts.insert(losslessUtf8(bytes));
        if (length == 4) return;
        for (const char c : alphabet) {
            bytes.push_back(c);
            self(self, length + 1);
            bytes.pop_back();
        }
    };
    grow(grow, 0);
    EXPECT_EQ(texts.size(), strings);
}

}  // namespace
}  // namespace tallowen
