#include "platform/linux/desktop/linux_accessibility_facts.h"

#include <dlfcn.h>
#include <glob.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "platform/linux/desktop/desktop_settings.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

constexpr const char* kGio = "libgio-2.0.so.0";

std::string schema(const std::string& name, const std::string& keys) {
  return "<schema id='org.gnome.desktop." + name + "' path='/test/" + name + "/'>" + keys +
         "</schema>";
}
std::string key(const std::string& name, const std::string& type, const std::string& value) {
  return "<key name='" + name + "' type='" + type + "'><default>" + value + "</default></key>";
}

/// "label button inverted reader", "-" for what is absent.
std::string settingsText() {
  const AccessibilityFacts facts =
      LinuxAccessibilityFacts(nullptr, BusPlace{}, RootFiles("/no/such/root")).read();
  const auto size = [](const std::optional<float>& points) {
    return points ? std::to_string(static_cast<int>(*points * 10)) : "-";
  };
  const auto truth = [](const std::optional<bool>& value) {
    return !value ? "-" : *value ? "true" : "false";
  };
  return size(facts.labelFontSize) + " " + size(facts.buttonFontSize) + " " +
         truth(facts.isInvertColorsEnabled) + " " + truth(facts.isScreenReaderRunning);
}

/// What is read in a process that has the settings' library loaded and these schemas installed; the
/// defaults of the schemas are what is set. "died" when the process did.
std::string settingsWith(const std::string& schemas) {
  const TemporaryFolder folder;
  folder.put("test.gschema.xml", "<schemalist>" + schemas + "</schemalist>");
  glob_t compilers = {};
  EXPECT_EQ(glob("/usr/lib/*/glib-2.0/glib-compile-schemas", 0, nullptr, &compilers), 0);
  const std::string compile = std::string(compilers.gl_pathv[0]) + " --strict " + folder.path();
  globfree(&compilers);
  EXPECT_EQ(std::system(compile.c_str()), 0) << schemas;
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("GSETTINGS_SCHEMA_DIR", folder.path().c_str(), 1);
    setenv("XDG_DATA_DIRS", "/no/such/folder", 1);
    const bool isLoaded = dlopen(kGio, RTLD_NOW | RTLD_GLOBAL) != nullptr;
    const std::string text = isLoaded ? settingsText() : "no library";
    _exit(write(ends[1], text.data(), text.size()) > 0 ? 0 : 1);
  }
  close(ends[1]);
  std::array<char, 128> buffer{};
  const ssize_t length = read(ends[0], buffer.data(), buffer.size());
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  const bool isWell = WIFEXITED(status) && WEXITSTATUS(status) == 0 && length > 0;
  return isWell ? std::string(buffer.data(), static_cast<std::size_t>(length)) : "died";
}

TEST(DesktopSettingsTest, AreReadWhereTheHostHasTheirLibrary) {
  const std::string applications =
      key("screen-reader-enabled", "b", "true") + key("screen-magnifier-enabled", "b", "true");
  const std::string font = key("font-name", "s", "'Sans Bold 13'");
  EXPECT_EQ(settingsWith(schema("interface", font + key("text-scaling-factor", "d", "1.5")) +
                         schema("a11y.applications", applications) +
                         schema("a11y.magnifier", key("invert-lightness", "b", "true"))),
            "195 195 true true");
  EXPECT_EQ(settingsWith(schema("interface", font)), "130 130 - -");
  EXPECT_EQ(
      settingsWith(schema("a11y.applications", key("screen-magnifier-enabled", "b", "false")) +
                   schema("a11y.magnifier", key("invert-lightness", "b", "true"))),
      "- - false -")
      << "only the magnifier inverts";
}

// Each of these ends a process that asks without looking first.
TEST(DesktopSettingsTest, MissingOrOddSchemasAndKeysTellNothing) {
  const std::string relocatable = "<schema id='org.gnome.desktop.interface'>" +
                                  key("font-name", "s", "'Sans 13'") + "</schema>";
  for (const std::string& schemas :
       {schema("other", key("font-name", "s", "'Sans 13'")),
        schema("interface", key("other", "s", "'Sans 13'")),
        schema("interface", key("font-name", "i", "13")), relocatable}) {
    EXPECT_EQ(settingsWith(schemas), "- - - -") << schemas;
  }
}

TEST(DesktopSettingsTest, TheirLibraryIsNeverLoadedForThem) {
  EXPECT_EQ(settingsText(), "- - - -");
  EXPECT_EQ(dlopen(kGio, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(DesktopSettingsTest, AFontsSizeIsTheNumberAtItsEnd) {
  const std::pair<const char*, std::optional<float>> cases[] = {{"Cantarell 11", 11.0F},
                                                                {"DejaVu Sans Bold 10.5", 10.5F},
                                                                {"11", {}},
                                                                {"Sans", {}},
                                                                {"Sans 11pt", {}},
                                                                {"Sans 0", {}},
                                                                {"", {}},
                                                                {"Sans -3", {}},
                                                                {"Sans 1e9", {}},
                                                                {"Sans nan", {}},
                                                                {"Sans ", {}}};
  for (const auto& [text, size] : cases) EXPECT_EQ(fontSizeIn(text), size) << text;
}

TEST(LinuxAccessibilityFactsTest, TheHostAnswersFieldByField) {
  class HostFacts : public FactSource<AccessibilityFacts> {
   public:
    AccessibilityFacts read() override {
      AccessibilityFacts facts;
      facts.labelFontSize = 9.5F;
      facts.isScreenReaderRunning = true;
      return facts;
    }
  };
  const TemporaryFolder root;
  root.put("etc/default/keyboard", "XKBMODEL=pc105\nXKBLAYOUT=\"de,,us\"\n");
  const AccessibilityFacts facts =
      LinuxAccessibilityFacts(std::make_shared<HostFacts>(), BusPlace{}, RootFiles(root.path()))
          .read();
  EXPECT_EQ(facts.labelFontSize, 9.5F);
  EXPECT_EQ(facts.buttonFontSize, std::nullopt);
  EXPECT_EQ(facts.isScreenReaderRunning, true);
  EXPECT_EQ(facts.installedKeyboards, (std::vector<std::string>{"de", "us"}));
}

}  // namespace
}  // namespace quorvance
