#include "platform/linux/facts/sha256.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvance {
namespace {

std::string hexOf(const Sha256Digest& digest) {
  std::string text;
  for (const std::uint8_t byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 0xf];
  }
  return text;
}

// The examples published with FIPS 180-4, and the borders of a block: 55 bytes are the most that
// leave room for the length in it.
TEST(Sha256Test, HashesThePublishedExamplesAndPadsAtTheBordersOfABlock) {
  const std::pair<std::string, const char*> cases[] = {
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(1'000'000, 'a'),
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"}};
  for (const auto& [text, digest] : cases) EXPECT_EQ(hexOf(sha256(text)), digest);
}

// RFC 4231, cases 2 and 6 (a key longer than a block).
TEST(Sha256Test, AuthenticatesThePublishedExamples) {
  EXPECT_EQ(hexOf(hmacSha256("Jefe", "what do ya want for nothing?")),
            "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
  EXPECT_EQ(hexOf(hmacSha256(std::string(131, '\xaa'),
                             "Test Using Larger Than Block-Size Key - Hash Key First")),
            "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
}

}  // namespace
}  // namespace quorvance
