#include "apps/risk_server/verdicts/signed_verdict.h"

#include <gtest/gtest.h>

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

// RFC 7515, appendix A.1.
TEST(SignedVerdictTest, jwsIsThatOfTheStandardsExample) {
  const unsigned char key[] = {3,   35,  53,  75,  43,  15,  165, 188, 131, 126, 6,   101, 119,
                               123, 166, 143, 90,  179, 40,  230, 240, 84,  201, 40,  169, 15,
                               132, 178, 210, 80,  46,  191, 211, 251, 90,  146, 210, 6,   71,
                               239, 150, 138, 180, 195, 119, 98,  61,  34,  61,  46,  33,  114,
                               5,   46,  79,  8,   192, 205, 154, 245, 103, 208, 128, 163};
  const std::string jws = jwsCompact(
      "{\"typ\":\"JWT\",\r\n \"alg\":\"HS256\"}",
      "{\"iss\":\"joe\",\r\n \"exp\":1300819380,\r\n \"http://example.com/is_root\":true}",
      std::string(key, key + sizeof key));
  EXPECT_EQ(jws,
            "eyJ0eXAiOiJKV1QiLA0KICJhbGciOiJIUzI1NiJ9."
            "eyJpc3MiOiJqb2UiLA0KICJleHAiOjEzMDA4MTkzODAsDQogImh0dHA6Ly9leGFtcGxlLmNvbS9pc19yb290"
            "Ijp0cnVlfQ.dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk");
}

TEST(SignedVerdictTest, signsRiskRequestUserAndTime) {
  const std::string payload = R"({"risk":2,"requestID":"R","user_id":"a b","iat":1700000000})";
  EXPECT_EQ(signVerdict({2, "R", "a b", 1'700'000'000}, "key"),
            jwsCompact(R"({"alg":"HS256"})", payload, "key"));
}

TEST(SignedVerdictTest, deviceIdentifierFollowsTheDeviceAndTheKeyAlone) {
  const std::string identifier = deviceIdentifier("A", "key");
  EXPECT_EQ(identifier, deviceIdentifier("A", "key"));
  EXPECT_NE(identifier, deviceIdentifier("B", "key"));
  EXPECT_NE(identifier, deviceIdentifier("A", "other"));
  EXPECT_EQ(identifier.size(), std::string("device-").size() + 32);
}

TEST(TextCodecsTest, base64UrlHasNoPaddingAndNoUnsafeCharacters) {
  EXPECT_EQ(base64Url("f"), "Zg");
  EXPECT_EQ(base64Url("fo"), "Zm8");
  EXPECT_EQ(base64Url("\xfb\xff\xfe"), "-__-");
}

TEST(TextCodecsTest, percentDecodingLeavesBrokenEscapes) {
  EXPECT_EQ(percentDecode("a%20b%C3%a9"), "a b\xc3\xa9");
  EXPECT_EQ(percentDecode("%2525"), "%25");
  EXPECT_EQ(percentDecode("%zz%4"), "%zz%4");
}

}  // namespace
}  // namespace risk_server
