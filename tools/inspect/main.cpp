#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/filesystem/exception.hpp>
#include <clocale>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "tools/inspect/Terminal.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr int kHasFindings = 1;
constexpr int kFailed = 2;

/// Of a terminal at standard output.
std::size_t terminalWidth() {
  constexpr std::size_t narrowest = 60;
  constexpr std::size_t usual = 80;
  if (::isatty(STDOUT_FILENO) != 1) {
    return kUnlimited;
  }
  winsize size{};
  const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? std::max<std::size_t>(size.ws_col, narrowest) : usual;
}

bool wantsColours() {
  const char* const noColour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return (noColour == nullptr || *noColour == '\0') &&
         (terminal == nullptr || std::string_view(terminal) != "dumb") &&
         ::isatty(STDOUT_FILENO) == 1;
}

int recover(const std::string& root) {
  if (recoverMetadata(root) == MetadataRecovery::SetAside) {
    std::cout << "set metadata.json aside as " << printable(root) << '/' << kDamagedMetadataName
              << '\n';
  } else {
    std::cout << "metadata.json is not damaged: nothing done\n";
  }
  return EXIT_SUCCESS;
}

int show(const std::string& root, const Options& options) {
  const Report report = inspect(root, options);
  std::cout << (options.json ? toJson(report) : toText(report, terminalWidth(), wantsColours()));
  return options.check && !report.findings.empty() ? kHasFindings : EXIT_SUCCESS;
}

/// All that is said of failures, which quote names and arguments.
int fail(bool isJson, const std::string& root, const std::string& message) {
  if (isJson) {
    std::cout << toJson(root, message);
  } else {
    std::cerr << kProgram << ": " << printable(message) << '\n';
  }
  return kFailed;
}

/// Runs `body`, and shows what it throws as the failure of a root.
template <class Body>
int guarded(bool isJson, const std::string& root, const Body& body) {
  try {
    return body();
  } catch (const boost::filesystem::filesystem_error& error) {
    return fail(isJson, root, "'" + error.path1().string() + "': " + error.code().message());
  } catch (const std::exception& error) {
    return fail(isJson, root, error.what());
  }
}

int run(const Options& options) {
  int status = EXIT_SUCCESS;
  bool isFirst = true;
  for (const std::string& folder : options.roots) {
    std::vector<std::string> roots;
    status = std::max(status, guarded(options.json, folder, [&] {
                        roots = rootsIn(folder, options.force);
                        return EXIT_SUCCESS;
                      }));
    for (const std::string& root : roots) {
      std::cout << (isFirst || options.json ? "" : "\n");
      isFirst = false;
      status = std::max(status, guarded(options.json, root, [&] {
                          return options.recover ? recover(root) : show(root, options);
                        }));
    }
  }
  return std::cout.flush() ? status : kFailed;
}

int parseAndRun(int count, char** arguments) {
  std::setlocale(LC_CTYPE, "C.UTF-8");  // for the widths of characters; names are UTF-8 or bytes
  const bool isJson =
      std::find(arguments, arguments + count, std::string_view("--json")) != arguments + count;
  return guarded(isJson, "", [&] {
    CLI::App app;
    Options options;
    declare(app, options);
    try {
      app.parse(count, arguments);
    } catch (const CLI::Success& help) {
      return app.exit(help);
    } catch (const CLI::ParseError& error) {
      return fail(isJson, "", std::string(error.what()) + " (see --help)");
    }
    return run(options);
  });
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery::inspect

int main(int count, char** arguments) {
  return zentrel::vistabase::ardelivery::inspect::parseAndRun(count, arguments);
}
