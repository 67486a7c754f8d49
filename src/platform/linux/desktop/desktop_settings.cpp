#include "platform/linux/desktop/desktop_settings.h"

#include <charconv>
#include <cmath>
#include <memory>
#include <string>

#include "platform/linux/facts/dynamic_library.h"

namespace quorvance {
namespace {

constexpr const char* kInterface = "org.gnome.desktop.interface";
constexpr const char* kApplications = "org.gnome.desktop.a11y.applications";
constexpr const char* kMagnifier = "org.gnome.desktop.a11y.magnifier";
constexpr float kMaxPoints = 1000;

// The part of GIO's documented interface that is used here.
struct SchemaSource;
struct Schema;
struct Settings;
struct Value;

struct Gio {
  SchemaSource* (*defaultSource)() = nullptr;
  Schema* (*lookUp)(SchemaSource*, const char*, int) = nullptr;
  int (*hasKey)(Schema*, const char*) = nullptr;
  const char* (*pathOf)(Schema*) = nullptr;
  void (*unrefSchema)(Schema*) = nullptr;
  Settings* (*newSettings)(const char*) = nullptr;
  Value* (*getValue)(Settings*, const char*) = nullptr;
  const char* (*typeOf)(Value*) = nullptr;
  const char* (*textOf)(Value*, std::size_t*) = nullptr;
  double (*realOf)(Value*) = nullptr;
  int (*truthOf)(Value*) = nullptr;
  void (*unrefValue)(Value*) = nullptr;
  void (*unrefObject)(void*) = nullptr;

  bool bindToLoaded() {
    const DynamicLibrary gio = DynamicLibrary::loaded("libgio-2.0.so.0");
    const DynamicLibrary object = DynamicLibrary::loaded("libgobject-2.0.so.0");
    const DynamicLibrary glib = DynamicLibrary::loaded("libglib-2.0.so.0");
    return gio.bind(defaultSource, "g_settings_schema_source_get_default") &&
           gio.bind(lookUp, "g_settings_schema_source_lookup") &&
           gio.bind(hasKey, "g_settings_schema_has_key") &&
           gio.bind(pathOf, "g_settings_schema_get_path") &&
           gio.bind(unrefSchema, "g_settings_schema_unref") &&
           gio.bind(newSettings, "g_settings_new") && gio.bind(getValue, "g_settings_get_value") &&
           object.bind(unrefObject, "g_object_unref") &&
           glib.bind(typeOf, "g_variant_get_type_string") &&
           glib.bind(textOf, "g_variant_get_string") && glib.bind(realOf, "g_variant_get_double") &&
           glib.bind(truthOf, "g_variant_get_boolean") && glib.bind(unrefValue, "g_variant_unref");
  }
};

using OwnedValue = std::unique_ptr<Value, void (*)(Value*)>;

/// The value under a key; null unless it is there and of the type. Without these questions, a
/// missing schema or key would end the process.
OwnedValue valueOf(const Gio& gio, const char* schemaName, const char* key, std::string_view type) {
  OwnedValue value(nullptr, gio.unrefValue);
  SchemaSource* const source = gio.defaultSource();
  if (source == nullptr) return value;
  const std::unique_ptr<Schema, void (*)(Schema*)> schema(gio.lookUp(source, schemaName, 1),
                                                          gio.unrefSchema);
  if (!schema || gio.hasKey(schema.get(), key) == 0 || gio.pathOf(schema.get()) == nullptr) {
    return value;
  }
  const std::unique_ptr<Settings, void (*)(void*)> settings(gio.newSettings(schemaName),
                                                            gio.unrefObject);
  value.reset(gio.getValue(settings.get(), key));
  if (value && gio.typeOf(value.get()) != type) value.reset();
  return value;
}

std::optional<bool> truth(const Gio& gio, const char* schema, const char* key) {
  const OwnedValue value = valueOf(gio, schema, key, "b");
  return value ? std::optional(gio.truthOf(value.get()) != 0) : std::nullopt;
}

std::optional<float> scaledFontSize(const Gio& gio) {
  const OwnedValue font = valueOf(gio, kInterface, "font-name", "s");
  std::optional<float> size = font ? fontSizeIn(gio.textOf(font.get(), nullptr)) : std::nullopt;
  if (!size) return std::nullopt;
  const OwnedValue scale = valueOf(gio, kInterface, "text-scaling-factor", "d");
  if (scale) size = *size * static_cast<float>(gio.realOf(scale.get()));
  return size;
}

}  // namespace

std::optional<float> fontSizeIn(std::string_view description) {
  const std::size_t space = description.rfind(' ');
  if (space == std::string_view::npos) return std::nullopt;
  float size = 0;
  const char* const end = description.data() + description.size();
  const auto [rest, error] = std::from_chars(description.data() + space + 1, end, size);
  const bool isSize = error == std::errc() && rest == end && size > 0 && size <= kMaxPoints;
  return isSize ? std::optional(size) : std::nullopt;
}

DesktopSettings readDesktopSettings() {
  DesktopSettings settings;
  Gio gio;
  if (!gio.bindToLoaded()) return settings;
  settings.fontSize = scaledFontSize(gio);
  settings.isScreenReaderOn = truth(gio, kApplications, "screen-reader-enabled");
  // The desktop inverts what its magnifier shows, and nothing else.
  const auto isMagnified = truth(gio, kApplications, "screen-magnifier-enabled");
  const auto isInverted = truth(gio, kMagnifier, "invert-lightness");
  if (isMagnified && isInverted) settings.isInverted = *isMagnified && *isInverted;
  return settings;
}

}  // namespace quorvance
