#include "platform/linux/desktop/linux_font_facts.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "platform/testing/lowered_limit_test_support.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

/// A configuration of fontconfig with a folder of fonts and a cache of its own, in force until its
/// end.
class PrivateFonts {
 public:
  /// Without content, one that names the folder alone.
  explicit PrivateFonts(std::optional<std::string> content = std::nullopt) {
    if (!content) content = "<dir>" + folder_.at("fonts") + "</dir>";
    folder_.put("fonts.conf", "<fontconfig>" + *content + "<cachedir>" + folder_.at("cache") +
                                  "</cachedir></fontconfig>");
    std::filesystem::create_directories(folder_.at("fonts"));
    setenv("FONTCONFIG_FILE", folder_.at("fonts.conf").c_str(), 1);
    setenv("FONTCONFIG_PATH", folder_.path().c_str(), 1);
  }
  ~PrivateFonts() {
    unsetenv("FONTCONFIG_FILE");
    unsetenv("FONTCONFIG_PATH");
  }
  PrivateFonts(const PrivateFonts&) = delete;
  PrivateFonts& operator=(const PrivateFonts&) = delete;

  void add(const std::string& file) const {
    std::filesystem::copy_file("/usr/share/fonts/truetype/dejavu/" + file,
                               folder_.at("fonts/" + file));
  }
  void addBytes(std::string_view name, std::string_view bytes) const {
    folder_.put("fonts/" + std::string(name), bytes);
  }

 private:
  TemporaryFolder folder_;
};

TEST(LinuxFontFactsTest, ListTheFamiliesWithTheirFaces) {
  const PrivateFonts fonts;
  for (const char* const file : {"DejaVuSans.ttf", "DejaVuSans-Bold.ttf", "DejaVuSerif.ttf"}) {
    fonts.add(file);
  }
  const FontFacts facts = LinuxFontFacts().read();
  using Fonts = std::map<std::string, std::vector<std::string>>;
  EXPECT_EQ(facts.familyNames, (std::vector<std::string>{"DejaVu Sans", "DejaVu Serif"}));
  EXPECT_EQ(facts.fontsByFamily, (Fonts{{"DejaVu Sans", {"DejaVuSans", "DejaVuSans-Bold"}},
                                        {"DejaVu Serif", {"DejaVuSerif"}}}));
}

TEST(LinuxFontFactsTest, AreEmptyWithoutFontsConfigurationOrLibrary) {
  {
    const PrivateFonts fonts;
    fonts.addBytes("rubbish.ttf", std::string(1 << 16, '\x7f'));
    EXPECT_TRUE(LinuxFontFacts().read().familyNames.empty());
  }
  {
    const PrivateFonts fonts("");
    EXPECT_TRUE(LinuxFontFacts().read().fontsByFamily.empty());
  }
  const char* const names[] = {"libquorvance-missing.so.1"};
  EXPECT_TRUE(LinuxFontFacts(names).read().fontsByFamily.empty());
  const char* const others[] = {"libquorvance-missing.so.1", "libm.so.6"};
  EXPECT_TRUE(LinuxFontFacts(others).read().fontsByFamily.empty()) << "a library without them";
}

rlim_t addressSpaceWith(std::size_t moreMegabytes) {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::size_t>(getpagesize()) + (moreMegabytes << 20);
}

// fontconfig does not survive it.
TEST(LinuxFontFactsTest, AreNotReadWhereTheAddressSpaceHasNoRoomForThem) {
  const PrivateFonts fonts;
  fonts.add("DejaVuSans.ttf");
  ASSERT_FALSE(LinuxFontFacts().read().familyNames.empty());
  for (const auto& [megabytes, isRead] : {std::pair{16U, false}, {48U, false}, {512U, true}}) {
    const LoweredLimit limited(RLIMIT_AS, addressSpaceWith(megabytes));
    EXPECT_EQ(!LinuxFontFacts().read().familyNames.empty(), isRead) << megabytes;
  }
}

}  // namespace
}  // namespace quorvance
