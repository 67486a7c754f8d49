#include "platform/linux/bus/modem_facts.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/bus/bus_query.h"
#include "platform/linux/bus/mobile_country.h"

namespace quorvance {
namespace {

constexpr const char* kModemService = "org.freedesktop.ModemManager1";
constexpr std::string_view kModem = "org.freedesktop.ModemManager1.Modem";
constexpr std::string_view kModem3gpp = "org.freedesktop.ModemManager1.Modem.Modem3gpp";
constexpr std::string_view kVoice = "org.freedesktop.ModemManager1.Modem.Voice";
constexpr const char* kSim = "org.freedesktop.ModemManager1.Sim";

constexpr std::size_t kCountryDigits = 3;

struct Carrier {
  std::string code;
  std::string name;

  bool isKnown() const { return !code.empty() || !name.empty(); }
};

struct Modem {
  bool isModem = false;
  bool hasVoice = false;
  std::int32_t state = std::numeric_limits<std::int32_t>::min();
  std::uint32_t technologies = 0;
  std::string sim;
  Carrier serving;
};

struct ManagedObjects {
  std::vector<Modem> modems;
  std::map<std::string, Carrier> sims;
};

// Known properties by name; all others are passed over unread.
void readProperty(BusReader& reader, std::string_view interface, std::string_view name,
                  Modem& modem, Carrier& sim) {
  if (interface == kModem && name == "State") {
    modem.state = reader.signedVariant().value_or(modem.state);
  } else if (interface == kModem && name == "AccessTechnologies") {
    modem.technologies = reader.numberVariant().value_or(0);
  } else if (interface == kModem && name == "Sim") {
    modem.sim = reader.pathVariant().value_or("");
  } else if (interface == kModem3gpp && name == "OperatorCode") {
    modem.serving.code = reader.textVariant().value_or("");
  } else if (interface == kModem3gpp && name == "OperatorName") {
    modem.serving.name = reader.textVariant().value_or("");
  } else if (interface == kSim && name == "OperatorIdentifier") {
    sim.code = reader.textVariant().value_or("");
  } else if (interface == kSim && name == "OperatorName") {
    sim.name = reader.textVariant().value_or("");
  } else {
    reader.skip("v");
  }
}

void readObject(BusReader& reader, ManagedObjects& objects) {
  const std::string path = reader.path().value_or("");
  Modem modem;
  Carrier sim;
  reader.eachEntry("{sa{sv}}", "sa{sv}", [&] {
    const std::string interface = reader.text().value_or("");
    modem.isModem = modem.isModem || interface == kModem;
    modem.hasVoice = modem.hasVoice || interface == kVoice;
    reader.eachEntry("{sv}", "sv", [&] {
      const std::string name = reader.text().value_or("");
      readProperty(reader, interface, name, modem, sim);
    });
  });
  if (modem.isModem) objects.modems.push_back(std::move(modem));
  if (sim.isKnown()) objects.sims.emplace(path, std::move(sim));
}

ManagedObjects managedObjects(BusQuery& query) {
  ManagedObjects objects;
  const BusMessage reply = query.ask({.service = kModemService,
                                      .path = "/org/freedesktop/ModemManager1",
                                      .interface = "org.freedesktop.DBus.ObjectManager",
                                      .member = "GetManagedObjects"});
  if (!reply) return objects;
  BusReader reader = reply.reader();
  reader.eachEntry("{oa{sa{sv}}}", "oa{sa{sv}}", [&] { readObject(reader, objects); });
  return objects;
}

std::string simProperty(BusQuery& query, const std::string& path, const char* name) {
  const BusMessage reply = query.ask({.service = kModemService,
                                      .path = path,
                                      .interface = "org.freedesktop.DBus.Properties",
                                      .member = "Get",
                                      .texts = {kSim, name}});
  return reply ? reply.reader().textVariant().value_or("") : "";
}

/// SIMs may be objects of their own, which are asked for these two properties alone.
Carrier carrierOf(BusQuery& query, const Modem& modem, const ManagedObjects& objects) {
  const auto known = objects.sims.find(modem.sim);
  Carrier carrier;
  if (known != objects.sims.end()) {
    carrier = known->second;
  } else if (modem.sim.size() > 1) {  // "/" stands for no SIM
    carrier = {simProperty(query, modem.sim, "OperatorIdentifier"),
               simProperty(query, modem.sim, "OperatorName")};
  }
  return carrier.isKnown() ? carrier : modem.serving;
}

bool isOperatorCode(std::string_view code) {
  return (code.size() == kCountryDigits + 2 || code.size() == kCountryDigits + 3) &&
         std::all_of(code.begin(), code.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void tellCarrier(NetworkFacts& facts, Carrier carrier) {
  if (!carrier.name.empty()) facts.carrierName = std::move(carrier.name);
  if (!isOperatorCode(carrier.code)) return;
  facts.mobileCountryCode = carrier.code.substr(0, kCountryDigits);
  facts.mobileNetworkCode = carrier.code.substr(kCountryDigits);
  facts.carrierCountry = countryOf(*facts.mobileCountryCode);
}

}  // namespace

std::optional<std::string> radioTechnologyOf(std::uint32_t accessTechnologies) {
  // MMModemAccessTechnology; there is no bit for eHRPD.
  constexpr std::pair<int, const char*> kBits[] = {
      {3, "GPRS"},          {4, "Edge"},          {10, "CDMA1x"},       {5, "WCDMA"}, {7, "HSUPA"},
      {11, "CDMAEVDORev0"}, {12, "CDMAEVDORevA"}, {13, "CDMAEVDORevB"}, {14, "LTE"},  {6, "HSDPA"},
  };
  for (const auto& [bit, name] : kBits) {
    if ((accessTechnologies >> bit & 1U) != 0) return name;
  }
  return std::nullopt;
}

NetworkFacts readModem(const BusPlace& systemBus) {
  NetworkFacts facts;
  BusQuery query(systemBus);
  const ManagedObjects objects = managedObjects(query);
  const auto modem =
      std::max_element(objects.modems.begin(), objects.modems.end(),
                       [](const Modem& a, const Modem& b) { return a.state < b.state; });
  if (modem == objects.modems.end()) return facts;
  facts.isVoiceCapable = modem->hasVoice;
  facts.radioTechnology = radioTechnologyOf(modem->technologies);
  tellCarrier(facts, carrierOf(query, *modem, objects));
  return facts;
}

}  // namespace quorvance
