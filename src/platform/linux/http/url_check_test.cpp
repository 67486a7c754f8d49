#include "platform/linux/http/url_check.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvance {
namespace {

TEST(UrlCheckTest, TellsWhatIsWrongFirst) {
  struct Case {
    std::string_view url;
    UrlFault fault;
  };
  const Case cases[] = {
      {"http://a?x@y:z", UrlFault::none},
      {"HTTPS://bank.example:443/x//y/?q#f", UrlFault::none},
      {"http://a:65535", UrlFault::none},
      {"http://a:/", UrlFault::none},
      {"http://[::1]:8080/", UrlFault::none},
      {"http://[fe80::1%25eth0]/", UrlFault::none},
      {"", UrlFault::noScheme},
      {"bank.example/x", UrlFault::noScheme},
      {"://bank.example", UrlFault::noScheme},
      {"1http://a", UrlFault::noScheme},
      {"bank.example:8080/x", UrlFault::foreignScheme},
      {"httpss://a", UrlFault::foreignScheme},
      {"http:", UrlFault::noHost},
      {"http:///a", UrlFault::noHost},
      {"http://:80/", UrlFault::noHost},
      {"http://[]/", UrlFault::noHost},
      {"http://[::1", UrlFault::badHost},
      {"http://[::1]x/", UrlFault::badHost},
      {"http://a\\b/", UrlFault::badHost},
      {"http://user:secret@a:80/", UrlFault::userInformation},
      {"http://a:0/", UrlFault::badPort},
      {"http://a:65536/", UrlFault::badPort},
      {"http://a:8o/", UrlFault::badPort},
      {"http://[::1]:x/", UrlFault::badPort},
      {"http://a/\xc3\xa4", UrlFault::illegalCharacter},
      {std::string_view("http://a/\0b", 11), UrlFault::illegalCharacter},
      {"http://a/\r\nX: y", UrlFault::illegalCharacter},
  };
  for (const Case& c : cases) EXPECT_EQ(faultOfUrl(c.url), c.fault) << c.url;
}

}  // namespace
}  // namespace quorvance
