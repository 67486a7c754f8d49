#include "platform/linux/facts/locale_names.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace quorvance {
namespace {

using Settings = std::map<std::string, std::string, std::less<>>;

LocaleNames namesFor(const Settings& settings) {
  return localeNamesFrom([&](std::string_view name) {
    const auto found = settings.find(name);
    return found == settings.end() ? std::nullopt : std::optional(found->second);
  });
}

std::string joined(const LocaleNames& names) {
  return names.locale.value_or("-") + " " + names.region.value_or("-") + " " +
         names.language.value_or("-");
}

TEST(LocaleNamesTest, FollowsTheOrderOfLibc) {
  struct Case {
    Settings settings;
    std::string_view expected;
  };
  const Case cases[] = {
      {{{"LANG", "de_DE.UTF-8"}}, "de_DE DE de"},
      {{{"LANG", "de_DE"}, {"LC_MESSAGES", "fr_FR@euro"}}, "fr_FR FR fr"},
      {{{"LC_MESSAGES", "fr_FR"}, {"LC_ALL", "pt_BR.utf8@x"}}, "pt_BR BR pt"},
      {{{"LC_ALL", ""}, {"LANG", "es_419"}}, "es_419 419 es"},
      {{{"LANG", "de_DE"}, {"LANGUAGE", "nb_NO:en"}}, "de_DE DE nb"},
      {{{"LANG", "de_DE"}, {"LANGUAGE", ":C:gsw"}}, "de_DE DE gsw"},
      {{{"LANG", "C.UTF-8"}}, "- - -"},
      {{{"LC_ALL", "POSIX"}, {"LANG", "de_DE"}}, "- - -"},
      {{{"LANG", "de_"}}, "de - de"},
      {{{"LANG", "de_Germany"}}, "- - -"},
      {{{"LANG", "DE_de"}}, "- - -"},
      {{{"LANG", "../../x"}}, "- - -"},
      {{}, "- - -"},
  };
  for (const Case& c : cases) EXPECT_EQ(joined(namesFor(c.settings)), c.expected);
}

}  // namespace
}  // namespace quorvance
