#include "base/Utf8Text.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

#define FFFD "\xef\xbf\xbd"

// Each ill-formed sequence gives one U+FFFD per maximal subpart, as the
// platform's string type reads bytes.
TEST(ValidUtf8Test, ReplacesEachMaximalIllFormedSubpartOnce) {
    const struct {
        std::string bytes, text;
    } cases[] = {
        {"plain ascii", "plain ascii"},
        {"\xc3\xa9t\xc3\xa9 \xe2\x82\xac \xf0\x9f\x92\xa7", "\xc3\xa9t\xc3\xa9 \xe2\x82\xac \xf0\x9f\x92\xa7"},
        {"a\xffz", "a" FFFD "z"},
        {"\xc0\xaf", FFFD FFFD},                  // overlong lead byte, then a lone continuation
        {"\xe2\x82", FFFD},                       // cut short at the end
        {"\xe2\x82z", FFFD "z"},                  // cut short before a letter
        {"\xed\xa0\x80", FFFD FFFD FFFD},         // a surrogate is no scalar value
        {"\xf4\x90\x80\x80", FFFD FFFD FFFD FFFD},  // above U+10FFFF
        {"\xf0\x9f\x92", FFFD},
        {std::string("a\0b", 3), std::string("a\0b", 3)},
    };
    for (const auto& c : cases) EXPECT_EQ(validUtf8(c.bytes), c.text) << c.bytes;
}

}  // namespace
}  // namespace tallowen
