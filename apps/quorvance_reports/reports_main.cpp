#include <exception>
#include <iostream>
#include <string_view>

#include "apps/quorvance_reports/report_listing.h"

namespace {

constexpr int kUsage = 2;
constexpr int kFailed = 1;

int usage(std::ostream& out, int status) {
  out << "usage: quorvance-reports list|show FOLDER\n"
         "       quorvance-reports --help|--version\n\n"
         "  list FOLDER   the reports that are stored and not sent yet, one line of what each "
         "tells\n"
         "  show FOLDER   the same, whole\n\n"
         "A \"temporary\" is being written, or its writer died: the next start of the application\n"
         "takes it up when it is whole and removes it when it is not.\n\n"
         "FOLDER is the data folder of an application, by default\n"
         "$XDG_DATA_HOME (or ~/.local/share) / identifier / quorvance. Nothing in it is changed.\n"
         "Exit status: 0 done, 1 the folder cannot be read, 2 wrong arguments.\n";
  return status;
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view verb = count > 1 ? arguments[1] : "";
  if (verb == "--help" || verb == "-h") return usage(std::cout, 0);
  if (verb == "--version") {
    std::cout << "quorvance-reports " QUORVANCE_VERSION "\n";
    return 0;
  }
  if (verb.starts_with("-")) {
    std::cerr << "quorvance-reports: " << verb << ": no such option, see --help\n";
    return kUsage;
  }
  if (count != 3 || (verb != "list" && verb != "show")) return usage(std::cerr, kUsage);
  try {
    const auto reports = quorvance_reports::listReports(arguments[2]);
    if (verb == "list") {
      quorvance_reports::printList(std::cout, reports);
    } else {
      quorvance_reports::printReports(std::cout, arguments[2], reports);
    }
  } catch (const std::exception& error) {
    std::cerr << "quorvance-reports: " << error.what() << "\n";
    return kFailed;
  }
  return 0;
}
