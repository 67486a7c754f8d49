#include "platform/linux/desktop/linux_font_facts.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <memory>

#include "platform/linux/facts/dynamic_library.h"

namespace quorvance {
namespace {

// What no system has is no list of fonts.
constexpr int kMaxFaces = 20'000;

// The part of fontconfig's documented interface that is used here.
struct Configuration;
struct Pattern;
struct Properties;
struct FontSet {
  int count;
  int capacity;
  Pattern** fonts;
};
constexpr int kFound = 0;  // FcResultMatch

struct Fontconfig {
  Configuration* (*loadConfigAndFonts)() = nullptr;
  void (*destroyConfig)(Configuration*) = nullptr;
  Pattern* (*createPattern)() = nullptr;
  void (*destroyPattern)(Pattern*) = nullptr;
  Properties* (*createProperties)() = nullptr;
  int (*addProperty)(Properties*, const char*) = nullptr;
  void (*destroyProperties)(Properties*) = nullptr;
  FontSet* (*list)(Configuration*, Pattern*, Properties*) = nullptr;
  void (*destroyFontSet)(FontSet*) = nullptr;
  int (*getText)(const Pattern*, const char*, int, unsigned char**) = nullptr;

  bool bindTo(const DynamicLibrary& library) {
    return library.bind(loadConfigAndFonts, "FcInitLoadConfigAndFonts") &&
           library.bind(destroyConfig, "FcConfigDestroy") &&
           library.bind(createPattern, "FcPatternCreate") &&
           library.bind(destroyPattern, "FcPatternDestroy") &&
           library.bind(createProperties, "FcObjectSetCreate") &&
           library.bind(addProperty, "FcObjectSetAdd") &&
           library.bind(destroyProperties, "FcObjectSetDestroy") &&
           library.bind(list, "FcFontList") && library.bind(destroyFontSet, "FcFontSetDestroy") &&
           library.bind(getText, "FcPatternGetString");
  }

  /// The first value; further ones of a family are its names in other languages.
  std::string text(const Pattern* font, const char* property) const {
    unsigned char* value = nullptr;
    if (getText(font, property, 0, &value) != kFound || value == nullptr) return {};
    return reinterpret_cast<const char*>(value);
  }
};

constexpr const char* kFamily = "family";
constexpr const char* kPostScriptName = "postscriptname";

template <class Object>
using Owned = std::unique_ptr<Object, void (*)(Object*)>;

/// Each pair of family and face once; null without memory.
Owned<FontSet> allFaces(const Fontconfig& fontconfig, Configuration* configuration) {
  const Owned<Pattern> all(fontconfig.createPattern(), fontconfig.destroyPattern);
  const Owned<Properties> wanted(fontconfig.createProperties(), fontconfig.destroyProperties);
  Owned<FontSet> faces(nullptr, fontconfig.destroyFontSet);
  if (all && wanted && fontconfig.addProperty(wanted.get(), kFamily) != 0 &&
      fontconfig.addProperty(wanted.get(), kPostScriptName) != 0) {
    faces.reset(fontconfig.list(configuration, all.get(), wanted.get()));
  }
  return faces;
}

/// Whether fontconfig has room: what it cannot map or allocate makes it crash, so where the host's
/// address space is limited, this much must be left of it.
bool hasRoomForFonts() {
  constexpr std::size_t kNeededBytes = std::size_t{64} << 20;
  rlimit limit = {};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return true;
  void* const room =
      mmap(nullptr, kNeededBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (room == MAP_FAILED) return false;
  munmap(room, kNeededBytes);
  return true;
}

}  // namespace

FontFacts LinuxFontFacts::read() {
  FontFacts facts;
  if (!hasRoomForFonts()) return facts;
  Fontconfig fontconfig;
  if (!fontconfig.bindTo(DynamicLibrary::open(libraryNames_))) return facts;
  const Owned<Configuration> configuration(fontconfig.loadConfigAndFonts(),
                                           fontconfig.destroyConfig);
  if (!configuration) return facts;
  const Owned<FontSet> faces = allFaces(fontconfig, configuration.get());
  const int count = faces ? std::min(faces->count, kMaxFaces) : 0;
  for (int i = 0; i < count; ++i) {
    const std::string family = fontconfig.text(faces->fonts[i], kFamily);
    std::string name = fontconfig.text(faces->fonts[i], kPostScriptName);
    if (!family.empty() && !name.empty()) facts.fontsByFamily[family].push_back(std::move(name));
  }
  for (auto& [family, names] : facts.fontsByFamily) {
    std::sort(names.begin(), names.end());
    facts.familyNames.push_back(family);
  }
  return facts;
}

std::string LinuxFontFacts::origin(std::string_view /*field*/) const { return "fontconfig"; }

}  // namespace quorvance
