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

// The examples published with FIPS 180-4.
TEST(Sha256Test, HashesThePublishedExamples) {
  EXPECT_EQ(hexOf(sha256("")), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(hexOf(sha256("abc")),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(hexOf(sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(hexOf(sha256(std::string(1'000'000, 'a'))),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

// 55 bytes are the most that leave room for the length in their block.
TEST(Sha256Test, PadsAtTheBordersOfABlock) {
  EXPECT_EQ(hexOf(sha256(std::string(55, 'a'))),
            "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318");
  EXPECT_EQ(hexOf(sha256(std::string(56, 'a'))),
            "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a");
  EXPECT_EQ(hexOf(sha256(std::string(64, 'a'))),
            "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb");
}

// RFC 4231, cases 1, 2, 3 and 6 (a key longer than a block).
TEST(Sha256Test, AuthenticatesThePublishedExamples) {
  EXPECT_EQ(hexOf(hmacSha256(std::string(20, '\x0b'), "Hi There")),
            "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
  EXPECT_EQ(hexOf(hmacSha256("Jefe", "what do ya want for nothing?")),
            "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
  EXPECT_EQ(hexOf(hmacSha256(std::string(20, '\xaa'), std::string(50, '\xdd'))),
            "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe");
  EXPECT_EQ(hexOf(hmacSha256(std::string(131, '\xaa'),
                             "Test Using Larger Than Block-Size Key - Hash Key First")),
            "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
}

}  // namespace
}  // namespace quorvance
