#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>

#include "platform/linux/bus/bus_connection.h"
#include "platform/linux/bus/bus_place.h"
#include "platform/linux/bus/mobile_country.h"
#include "platform/linux/bus/modem_facts.h"
#include "platform/linux/bus/private_bus_test_support.h"
#include "platform/linux/bus/screen_reader.h"
#include "platform/linux/facts/dynamic_library.h"
#include "platform/linux/facts/linux_environment.h"

namespace quorvance {
namespace {

using Clock = std::chrono::steady_clock;

std::string orNone(const std::optional<std::string>& text) { return text.value_or("-"); }

/// "technology voice code name country"
std::string modemOn(const BusPlace& bus) {
  const NetworkFacts facts = readModem(bus);
  const char* const voice = !facts.isVoiceCapable ? "-" : *facts.isVoiceCapable ? "voice" : "mute";
  return orNone(facts.radioTechnology) + " " + voice + " " + orNone(facts.mobileCountryCode) + "+" +
         orNone(facts.mobileNetworkCode) + " " + orNone(facts.carrierName) + " " +
         orNone(facts.carrierCountry);
}

constexpr int kAttempts = 5;
constexpr const char* kNothing = "- - -+- - -";

TEST(ModemFactsTest, TellTheFurthestModemAndItsCarrier) {
  PrivateBus bus;
  EXPECT_EQ(modemOn(bus.place()), kNothing) << "no service";
  bus.play("modem_manager()");
  EXPECT_EQ(modemOn(bus.place()), kNothing) << "no modem";
  bus.play("modem(0, -1, 0)");
  EXPECT_EQ(modemOn(bus.place()), "- mute -+- - -");
  // Registered; its SIM is among the managed objects.
  bus.play(
      "modem(1, 8, 0x4000, sim='/org/freedesktop/ModemManager1/SIM/1', voice=True, "
      "serving=('23201', 'Elsewhere'))");
  bus.play("sim('/org/freedesktop/ModemManager1/SIM/1', '26201', 'Home Net')");
  EXPECT_EQ(modemOn(bus.place()), "LTE voice 262+01 Home Net DE") << "not the network abroad";
  // Connected; its SIM is an object of its own.
  bus.play("modem(2, 11, 0x60, sim='/sims/2', serving=('23201', 'Elsewhere'))");
  EXPECT_EQ(modemOn(bus.place()), "WCDMA mute 232+01 Elsewhere AT") << "the SIM does not answer";
  bus.play("sim('/sims/2', '310260', 'Other Net')");
  EXPECT_EQ(modemOn(bus.place()), "WCDMA mute 310+260 Other Net US");
  // What is no operator's code names no country.
  bus.play("modem(3, 12, 0x40, serving=('26x01', 'Odd Net'))");
  EXPECT_EQ(modemOn(bus.place()), "HSDPA mute -+- Odd Net -");
}

TEST(ModemFactsTest, ComparesTheTechnologiesInTheirOrder) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {1U << 3, "GPRS"},
      {1U << 4 | 1U << 14, "Edge"},
      {1U << 10 | 1U << 5, "CDMA1x"},
      {1U << 5, "WCDMA"},
      {1U << 6 | 1U << 7, "HSUPA"},
      {1U << 11, "CDMAEVDORev0"},
      {1U << 12, "CDMAEVDORevA"},
      {1U << 13, "CDMAEVDORevB"},
      {1U << 14 | 1U << 15, "LTE"},
      {1U << 6, "HSDPA"},
      {1U << 8, "-"},
      {1U << 15, "-"},
      {1U << 1, "-"},
      {0, "-"},
  };
  for (const auto& [bits, name] : cases) EXPECT_EQ(orNone(radioTechnologyOf(bits)), name) << bits;
}

TEST(MobileCountryTest, KnowsTheEndsOfItsListAndNothingElse) {
  const std::pair<const char*, const char*> cases[] = {
      {"202", "GR"}, {"262", "DE"}, {"316", "US"}, {"750", "FK"}, {"201", "-"},
      {"751", "-"},  {"", "-"},     {"26", "-"},   {"2626", "-"}, {"DE2", "-"}};
  for (const auto& [code, country] : cases) EXPECT_EQ(orNone(countryOf(code)), country) << code;
}

TEST(ScreenReaderTest, IsToldByTheAccessibilityBus) {
  PrivateBus bus;
  EXPECT_EQ(readScreenReader(bus.place()), std::nullopt);
  bus.play("accessibility(True)");
  EXPECT_EQ(readScreenReader(bus.place()), true);
  const auto set = [&](const std::string& value) {
    bus.play(
        "services['org.a11y.Bus'].UpdateProperties('org.a11y.Status', {'ScreenReaderEnabled': " +
        value + "})");
  };
  set("dbus.Boolean(False)");
  EXPECT_EQ(readScreenReader(bus.place()), false);
  set("dbus.String('yes')");
  EXPECT_EQ(readScreenReader(bus.place()), std::nullopt) << "a value of another type";
}

// A service that owns its name and answers nothing, and a bus that does not even greet.
TEST(BusQueryTest, WhatHangsCostsItsTimeoutAndNoMore) {
  PrivateBus bus;
  bus.play("modem_manager()");
  bus.play("modem(0, 8, 0x4000, sim='/sims/0')");
  for (const bool isDaemon : {false, true}) {
    const TalkingProcess& hung = isDaemon ? bus.daemon() : bus.mock();
    hung.signalWith(SIGSTOP);
    auto cost = Clock::duration::max();
    // Again where the machine stood still: a second timeout would cost as much every time.
    for (int i = 0; i < kAttempts && cost >= 2 * kBusTimeout; ++i) {
      const auto start = Clock::now();
      EXPECT_EQ(modemOn(bus.place(kBusTimeout)), kNothing);
      cost = Clock::now() - start;
      EXPECT_GE(cost, kBusTimeout);
    }
    EXPECT_LT(cost, 2 * kBusTimeout);
    hung.signalWith(SIGCONT);
  }
}

TEST(BusQueryTest, NothingIsToldWithoutALibraryOrABusAndNoServiceIsStarted) {
  PrivateBus bus;
  bus.play("modem_manager()");
  bus.play("modem(0, 8, 0x4000)");
  bus.makeStartable("org.a11y.Bus", "/bin/touch " + bus.folder().at("started"));
  EXPECT_EQ(readScreenReader(bus.place()), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(bus.folder().at("started")));
  const char* const names[] = {"libquorvance-missing.so.0"};
  const BusPlace places[] = {{bus.place().address, names},
                             {bus.place().address, {}},
                             {"", kSdBusNames},
                             {"unix:path=/no/such/socket", kSdBusNames},
                             {"rubbish;;=", kSdBusNames}};
  for (const BusPlace& place : places) EXPECT_EQ(modemOn(place), kNothing) << place.address;
}

TEST(BusPlaceTest, NoLibraryIsLoadedForABusThatIsNotThere) {
  const TemporaryFolder folder;
  const std::string socket = folder.at("a bus, really");
  const std::string address = "unix:path=" + folder.at("a%20bus%2c%20really") + ",guid=0";
  const char* const names[] = {"libBrokenLocale.so.1"};  // any library that nobody uses
  for (const std::string& absent : {address, address + ";unix:path=/no", std::string()}) {
    EXPECT_EQ(openSdBusFor({absent, names}), nullptr);
    EXPECT_FALSE(DynamicLibrary::loaded(names[0]).isOpen()) << absent;
  }
  std::ofstream(socket).put(' ');
  EXPECT_EQ(openSdBusFor({"unix:path=/no;" + address, names}), nullptr);  // speaks to no bus
  EXPECT_TRUE(DynamicLibrary::loaded(names[0]).isOpen());
}

TEST(BusPlaceTest, FollowsTheEnvironmentAndKeepsToThisMachine) {
  using Variables = LinuxEnvironment::Variables;
  const auto session = [](Variables variables) {
    LinuxEnvironment environment(std::move(variables));
    return sessionBusOf(environment).address;
  };
  EXPECT_EQ(session({}), "");
  EXPECT_EQ(session({{"XDG_RUNTIME_DIR", "/run/user/7"}}), "unix:path=/run/user/7/bus");
  EXPECT_EQ(session({{"XDG_RUNTIME_DIR", "/r,;%\xC3"}}), "unix:path=/r%2c%3b%25%c3/bus");
  EXPECT_EQ(session({{"XDG_RUNTIME_DIR", "run"}}), "");
  EXPECT_EQ(session({{"DBUS_SESSION_BUS_ADDRESS",
                      "tcp:host=h,port=1;unix:path=/a;unixexec:path=b;"
                      "unix:abstract=/c"}}),
            "unix:path=/a;unix:abstract=/c");
  EXPECT_EQ(session({{"DBUS_SESSION_BUS_ADDRESS", "autolaunch:"}}), "");
  LinuxEnvironment empty({});
  EXPECT_EQ(systemBusOf(empty, RootFiles("/")).address, "unix:path=/run/dbus/system_bus_socket");
  LinuxEnvironment named(Variables{{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/s"}});
  EXPECT_EQ(systemBusOf(named, RootFiles("/")).address, "unix:path=/s");
}

}  // namespace
}  // namespace quorvance
