#include "base/Utf8Text.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tallowen {
namespace {

#define FFFD "\uFFFD"

// One replacement character per maximal ill-formed subpart, as the platform's string type reads bytes.
TEST(Utf8TextTest, IllFormedSequencesBecomeReplacementCharacters) {
    const struct {
        std::string bytes, valid, lossless;
    } cases[] = {
        {"plain é 😀", "plain é 😀", "plain é 😀"},
        {std::string("a\0b", 3), std::string("a\0b", 3), std::string("a\0b", 3)},
        {"caf\xe9!", "caf" FFFD "!", "caf" FFFD "E9!"},
        {"\xe2\x82x", FFFD "x", FFFD "E2" FFFD "82x"},  // truncated: one subpart, then the next byte
        {"\xc0\xaf", FFFD FFFD, FFFD "C0" FFFD "AF"},   // overlong
        {"\xed\xa0\x80", FFFD FFFD FFFD, FFFD "ED" FFFD "A0" FFFD "80"},  // surrogate
        {"\xf4\x90\x80\x80", FFFD FFFD FFFD FFFD, FFFD "F4" FFFD "90" FFFD "80" FFFD "80"},  // past U+10FFFF
        {"\xf0\x9f\x98", FFFD, FFFD "F0" FFFD "9F" FFFD "98"},  // cut short at the end
        // A replacement character that was there is doubled, so it cannot pass for an escape.
        {FFFD "FF", FFFD "FF", FFFD FFFD "FF"},
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
