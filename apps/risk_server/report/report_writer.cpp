#include "apps/risk_server/report/report_writer.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

// As "script-src" and the integrity of an import map want it.
std::string sha256Source(std::string_view text) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1) {
    throw std::runtime_error("SHA-256 failed");
  }
  return "sha256-" + base64({reinterpret_cast<const char*>(digest.data()), length});
}

const std::string& consoleFile(const std::string& path) {
  const auto& files = embeddedConsole();
  const auto file = std::find_if(files.begin(), files.end(),
                                 [&](const EmbeddedFile& f) { return f.path == path; });
  if (file == files.end()) throw std::logic_error("the console has no " + path);
  return file->text;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

bool isModule(const std::string& path) {
  return path.ends_with(".js") && !path.ends_with(".min.js") && path != "main.js";
}

// Modules in data URLs have no address that "./" could be below, so they are imported by name.
std::string moduleText(std::string text) {
  replaceAll(text, "from './", "from 'console/");
  return text;
}

struct Modules {
  std::string importMap;
  std::vector<std::string> hashes;
};

Modules consoleModules() {
  Modules modules;
  Json imports = Json::object();
  Json integrity = Json::object();
  for (const EmbeddedFile& file : embeddedConsole()) {
    if (!isModule(file.path)) continue;
    const std::string text = moduleText(file.text);
    const std::string url = "data:text/javascript;base64," + base64(text);
    modules.hashes.push_back(sha256Source(text));
    imports["console/" + file.path] = url;
    integrity[url] = modules.hashes.back();
  }
  Json map = Json::object();
  map["imports"] = std::move(imports);
  map["integrity"] = std::move(integrity);
  modules.importMap = dumpServerJson(map);
  return modules;
}

// Within a script block nothing may look like the end of it.
std::string asScriptData(const Json& json) {
  std::string text = dumpServerJson(json);
  replaceAll(text, "<", "\\u003c");
  return text;
}

// The texts of the newest entries that fit, the newest first.
std::vector<std::string> newestEntries(const Capture& capture, const Masker* masker,
                                       std::size_t mostBytes) {
  std::vector<std::string> newest;
  std::size_t bytes = 0;
  for (auto captured = capture.exchanges.rbegin(); captured != capture.exchanges.rend();
       ++captured) {
    const Exchange& exchange = captured->exchange;
    newest.push_back(asScriptData(
        captureEntry(masker != nullptr ? masker->masked(exchange) : exchange, captured->outcome)));
    bytes += newest.back().size();
    if (bytes > mostBytes) {
      newest.pop_back();
      break;
    }
  }
  return newest;
}

// {"name", "masked", "notes", "entries"}
std::string captureData(const Capture& capture, const std::string& name, const Masker* masker,
                        std::size_t mostBytes) {
  const std::vector<std::string> newest = newestEntries(capture, masker, mostBytes);
  const std::size_t all = capture.exchanges.size();
  Json data = Json::object();
  data["name"] = name;
  data["masked"] = masker != nullptr;
  data["notes"] = Json::array();
  if (newest.size() < all) {
    data["notes"].push_back("The oldest " + std::to_string(all - newest.size()) + " of " +
                            std::to_string(all) +
                            " exchanges were left out: the report has a bound.");
  }
  std::string text = asScriptData(data);
  text.back() = ',';
  text += "\"entries\":[";
  for (auto entry = newest.rbegin(); entry != newest.rend(); ++entry) {
    text += (entry == newest.rbegin() ? "" : ",") + *entry;
  }
  return text + "]}";
}

std::string policyOf(const std::vector<std::string>& scripts, const std::string& style) {
  std::string policy =
      "default-src 'none'; connect-src 'none'; img-src data:; base-uri 'none'; "
      "form-action 'none'; require-trusted-types-for 'script'; trusted-types 'none'; "
      "style-src '" +
      sha256Source(style) + "'; script-src";
  for (const std::string& hash : scripts) policy += " '" + hash + "'";
  return policy;
}

}  // namespace

std::string reportOf(const Capture& capture, const std::string& name, const Masker* masker,
                     std::size_t mostBytes) {
  const std::string& plots = consoleFile("vendor/uplot/uPlot.iife.min.js");
  const std::string style = consoleFile("vendor/uplot/uPlot.min.css") + consoleFile("style.css");
  const std::string begin = "import 'console/report.js';";
  Modules modules = consoleModules();
  for (const std::string& text : {plots, modules.importMap, begin}) {
    modules.hashes.push_back(sha256Source(text));
  }
  return "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
         "<meta http-equiv=\"Content-Security-Policy\" content=\"" +
         policyOf(modules.hashes, style) +
         "\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<title>Report of the risk server</title><link rel=\"icon\" href=\"data:,\">\n"
         "<style>" +
         style +
         "</style>\n"
         "<script type=\"text/plain\">" +
         consoleFile("vendor/LICENCES.txt") +
         "</script>\n"
         "<script>" +
         plots +
         "</script>\n"
         "<script type=\"importmap\">" +
         modules.importMap +
         "</script>\n"
         "<script type=\"application/json\" id=\"capture\">" +
         captureData(capture, name, masker, mostBytes) +
         "</script>\n"
         "</head><body><div id=\"app\"></div><script type=\"module\">" +
         begin + "</script></body></html>\n";
}

}  // namespace risk_server
