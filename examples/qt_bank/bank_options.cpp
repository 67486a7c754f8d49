#include "bank_options.h"

#include <QCommandLineParser>
#include <cstdio>
#include <cstdlib>

#include "journeys.h"

namespace qt_bank {
namespace {

constexpr int kWrongArguments = 2;

[[noreturn]] void refuse(const QString& reason) {
  std::fprintf(stderr, "qt_bank: %s\n", qPrintable(reason));
  std::exit(kWrongArguments);
}

QSize readSize(const QString& text) {
  const QStringList sides = text.split('x');
  const QSize size(sides.value(0).toInt(), sides.value(1).toInt());
  if (sides.size() != 2 || size.isEmpty()) refuse("--size: " + text + " is no WIDTHxHEIGHT");
  return size;
}

}  // namespace

BankOptions readOptions(const QStringList& arguments) {
  BankOptions options;
  QCommandLineParser parser;
  parser.setApplicationDescription("A small bank: what a Qt application does with the library.");
  parser.addHelpOption();
  parser.addOptions({
      {"server", "The risk server.", "URL", options.serverUrl},
      {"data-folder", "Where consent and state are kept.", "FOLDER"},
      {"size", "Of the window.", "WIDTHxHEIGHT", "480x800"},
      {"full-screen", "For a kiosk."},
      {"mouse-is-finger", "The mouse is told of as a finger."},
      {"debug", "Shows the bank's debug lines as toasts."},
      {"script", "Plays a journey by touch events: " + journeyNames().join(", ") + ".", "JOURNEY"},
      {"pictures", "Pictures of the played journey's screens.", "FOLDER"},
  });
  if (!parser.parse(arguments)) refuse(parser.errorText());
  if (parser.isSet("help")) parser.showHelp();
  options.serverUrl = parser.value("server");
  options.dataFolder = parser.value("data-folder");
  options.size = readSize(parser.value("size"));
  options.isFullScreen = parser.isSet("full-screen");
  options.mouseIsFinger = parser.isSet("mouse-is-finger");
  options.isInDebugMode = parser.isSet("debug");
  options.script = parser.value("script");
  options.pictures = parser.value("pictures");
  if (!options.script.isEmpty() && !journeyNames().contains(options.script)) {
    refuse("--script: there is no journey \"" + options.script + "\"");
  }
  return options;
}

}  // namespace qt_bank
