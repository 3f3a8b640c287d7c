#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/filesystem/exception.hpp>
#include <clocale>
#include <exception>
#include <iostream>

#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr int kHasFindings = 1;
constexpr int kFailed = 2;

constexpr const char* kFooter = R"(Examples:
  modelcache-inspect /tmp/facetracking
      what is in a cache pulled off a device
  modelcache-inspect --budget 50MB --begin 6MB ROOT
      what an update of 6 MB would delete; without --begin, what exceeds the budget
  modelcache-inspect --recover ROOT
      when a raw cache's metadata.json is damaged; files stay, access times are lost
  modelcache-inspect ROOT --trim-except 6 7
      deletes the other versions, but for the active one, while no store is open

Exit status: 0; 1 if --verify finds damage, or --check anything; 2 for a ROOT that cannot be
inspected or changed.)";

void declare(CLI::App& app, Options& options) {
  constexpr std::int64_t maxBudget = std::int64_t{1} << 60;
  app.set_version_flag("--version", MODELCACHE_VERSION, "Print the version and exit");
  app.footer(kFooter);
  app.add_option("ROOT", options.roots,
                 "The folder of a cache or a store, or a folder of such folders")
      ->required()
      ->type_name("");
  const auto addBytes = [&app](const char* name, auto& bytes, const char* text) {
    app.add_option(name, bytes, text)
        ->transform(CLI::AsSizeValue(true).description(""))
        ->check(CLI::Range(std::int64_t{0}, maxBudget).description(""))
        ->type_name("BYTES");
  };
  addBytes("--budget", options.budget, "Show what exceeds a budget of BYTES (or 50MB, 64MiB)");
  addBytes("--begin", options.begin, "And what an update that adds BYTES to a store would delete");
  app.add_option("--sort", options.sort, "Order of entries: largest, oldest or first name first")
      ->check(CLI::IsMember({"size", "age", "name"}).description(""))
      ->type_name("size|age|name");
  app.add_flag("--verify", options.verify,
               "Read a store's files and compare them with their digests");
  app.add_flag("--json", options.json, "A line of JSON per root, for scripts");
  app.add_flag("--check", options.check, "Exit with status 1 if there are findings");
  app.add_flag("--force", options.force, "Show a folder that does not look like a cache");
  app.add_flag("--recover", options.recover, "Set a damaged metadata.json aside");
  app.add_option("--activate", options.activate, "Make a version of a store the active one")
      ->type_name("N");
  app.add_option("--trim-except", options.trimExcept,
                 "Delete a store's versions but for these and the active one")
      ->type_name("N");
  app.add_option("--export", options.exported, "Copy a version's files to DIR, which is made")
      ->type_name("VERSION DIR");
}

/// Columns of the terminal at standard output; no limit if it is none.
std::size_t terminalWidth() {
  winsize size{};
  if (::isatty(STDOUT_FILENO) != 1) {
    return SIZE_MAX;
  }
  (void)::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
  return size.ws_col == 0 ? 80 : std::max<std::size_t>(size.ws_col, 60);
}

/// Whether something is to be done instead of showing. Throws if the options make no sense.
bool isAction(const Options& options) {
  const bool actions[] = {options.recover, options.activate.has_value(),
                          !options.trimExcept.empty(), !options.exported.second.empty()};
  const auto count = std::count(std::begin(actions), std::end(actions), true);
  const bool isShowing = options.json || options.check || options.verify || options.budget;
  if (count > 1 || (count > 0 && isShowing) || (options.begin > 0 && !options.budget)) {
    throw std::invalid_argument("these options do not go together (see --help)");
  }
  return count > 0;
}

int actOn(const std::string& root, const Options& options) {
  std::cout << printable(root + ": " + act(root, options)) << '\n';
  return EXIT_SUCCESS;
}

int show(const std::string& root, const Options& options) {
  const Report report = inspect(root, options);
  std::cout << (options.json ? toJson(report) : toText(report, terminalWidth()));
  const bool isFound = options.check && !report.findings.empty();
  return isFound || (options.verify && report.damaged) ? kHasFindings : EXIT_SUCCESS;
}

/// All that is said of failures, which quote names and arguments.
int fail(bool isJson, const std::string& root, const std::string& message) {
  (isJson ? std::cout : std::cerr)
      << (isJson ? toJson(root, message) : "modelcache-inspect: " + printable(message) + '\n');
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
  const bool isActing = isAction(options);
  int status = EXIT_SUCCESS;
  const char* separator = "";
  for (const std::string& folder : options.roots) {
    const int failure = guarded(options.json, folder, [&] {
      const std::vector<std::string> roots = rootsIn(folder, options.force);
      if (isActing && !options.recover && options.roots.size() * roots.size() > 1) {
        throw std::invalid_argument("more than one ROOT to act on");
      }
      for (const std::string& root : roots) {
        std::cout << separator;
        separator = options.json || isActing ? "" : "\n";
        status = std::max(status, guarded(options.json, root, [&] {
                            return isActing ? actOn(root, options) : show(root, options);
                          }));
      }
      return EXIT_SUCCESS;
    });
    status = std::max(status, failure);
  }
  return std::cout.flush() ? status : kFailed;
}

int parseAndRun(int count, char** arguments) {
  std::setlocale(LC_CTYPE, "C.UTF-8");  // for the widths of characters; names are UTF-8 or bytes
  const bool isJson =
      std::find(arguments, arguments + count, std::string_view("--json")) != arguments + count;
  return guarded(isJson, "", [&] {
    CLI::App app(
        "Shows what lies in model caches. Without --activate, --recover and --trim-except, changes "
        "nothing.",
        "modelcache-inspect");
    Options options;
    declare(app, options);
    try {
      app.parse(count, arguments);
    } catch (const CLI::Success& done) {
      return app.exit(done);
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
