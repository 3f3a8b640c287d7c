#include <unistd.h>

#include <CLI/CLI.hpp>
#include <boost/filesystem/exception.hpp>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "tools/inspect/JsonReport.h"
#include "tools/inspect/TextReport.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr std::int64_t kMaxBudget = std::int64_t{1} << 60;
constexpr int kHasFindings = 1;
constexpr int kFailed = 2;

constexpr const char* kFooter = R"(Examples:
  modelcache-inspect /tmp/facetracking
      what is in a cache that was pulled off a device
  modelcache-inspect --budget 50MB ROOT
      what the next commit would evict
  modelcache-inspect --json ROOT | jq -r '.entries[] | select(.state != "present").name'
      the entries that are not both recorded and on disk
  modelcache-inspect --check ROOT >/dev/null && echo in order
  modelcache-inspect --recover ROOT
      when metadata.json is damaged; files stay, access times are lost

Findings: a damaged or missing metadata.json, entries that are only recorded or only on disk,
sizes other than recorded, extra bytes of no entry, a damaged index, versions that are not complete,
a total over the budget.

Exit status: 0, with --check 1 if there are findings, 2 if ROOT cannot be inspected.)";

struct Options {
  std::string root;
  std::optional<std::int64_t> budget;
  bool json = false;
  bool check = false;
  bool recover = false;
  bool force = false;
  bool bytes = false;
  std::string colour = "auto";
};

void declare(CLI::App& app, Options& options) {
  app.set_version_flag("--version", MODELCACHE_VERSION);
  app.footer(kFooter);
  app.add_option("ROOT", options.root, "The cache's folder, the one with metadata.json")
      ->required();
  app.add_option("--budget", options.budget, "Show what exceeds a budget of BYTES (or 50MB, 64MiB)")
      ->transform(CLI::AsSizeValue(true).description(""))
      ->check(CLI::Range(std::int64_t{0}, kMaxBudget).description(""))
      ->type_name("BYTES");
  auto* const json = app.add_flag("--json", options.json, "One line of JSON, for scripts");
  app.add_flag("--bytes", options.bytes, "Sizes in bytes, not KiB and so on")->excludes(json);
  app.add_option("--color", options.colour, "When to use colours: auto, always, never")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->type_name("WHEN");
  auto* const check =
      app.add_flag("--check", options.check, "Exit with status 1 if there are findings");
  app.add_flag("--force", options.force, "Show a folder that does not look like a cache");
  app.add_flag("--recover", options.recover,
               "Set a damaged metadata.json aside; the only option that changes anything")
      ->excludes(json)
      ->excludes(check);
}

bool wantsColours(const std::string& when) {
  const char* const noColour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  const bool isPlain = (noColour != nullptr && *noColour != '\0') ||
                       (terminal != nullptr && std::string_view(terminal) == "dumb");
  return when == "always" || (when == "auto" && !isPlain && ::isatty(STDOUT_FILENO) == 1);
}

int recoverRoot(const Options& options) {
  const std::string aside = recover(options.root, options.force);
  if (aside.empty()) {
    std::cout << "metadata.json is not damaged: nothing done\n";
  } else {
    std::cout << "set metadata.json aside as " << aside << '\n';
  }
  return EXIT_SUCCESS;
}

int report(const Options& options) {
  const Report report = inspect(options.root, options.budget, options.force);
  std::cout << (options.json ? toJson(report)
                             : toText(report, {wantsColours(options.colour), options.bytes}));
  return options.check && !report.findings.empty() ? kHasFindings : EXIT_SUCCESS;
}

int parseAndRun(int count, char** arguments) {
  CLI::App app("Shows what lies in a model cache. Changes nothing without --recover.",
               "modelcache-inspect");
  Options options;
  declare(app, options);
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {  // Or a request for help.
    return app.exit(error) == 0 ? EXIT_SUCCESS : kFailed;
  }
  const int status = options.recover ? recoverRoot(options) : report(options);
  return std::cout.flush() ? status : kFailed;
}

int run(int count, char** arguments) noexcept {
  try {
    return parseAndRun(count, arguments);
  } catch (const boost::filesystem::filesystem_error& error) {
    std::cerr << "modelcache-inspect: '" << error.path1().string()
              << "': " << error.code().message() << '\n';
  } catch (const std::exception& error) {
    std::cerr << "modelcache-inspect: " << error.what() << '\n';
  }
  return kFailed;
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery::inspect

int main(int count, char** arguments) {
  return zentrel::vistabase::ardelivery::inspect::run(count, arguments);
}
