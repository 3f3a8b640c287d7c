#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/filesystem/exception.hpp>
#include <clocale>
#include <exception>
#include <fstream>
#include <iostream>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/FileNames.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr int kHasFindings = 1;
constexpr int kFailed = 2;

constexpr const char* kFooter = R"(Examples:
  modelcache-inspect /tmp/facetracking
      what is in a cache that was pulled off a device
  modelcache-inspect --budget 50MB ROOT
      what the next commit would evict
  modelcache-inspect --json ROOT | jq -r '.entries[] | select(.state != "present").name'
      the entries that are not both recorded and on disk
  modelcache-inspect --recover ROOT
      when metadata.json is damaged; files stay, access times are lost

Exit status: 0; with --check 1 if there are findings; 2 if a ROOT cannot be inspected.)";

/// As troff takes it for text: a hyphen that can be copied, and no request at a line's beginning.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    const bool begins = result.empty() || result.back() == '\n';
    result += begins && (character == '.' || character == '\'') ? "\\&" : "";
    result += character == '\\' ? "\\e" : character == '-' ? "\\-" : std::string(1, character);
  }
  return result;
}

/// A page for man.
void writeManual(const CLI::App& app, std::ostream& out) {
  out << ".TH MODELCACHE-INSPECT 1 \"\" \"libmodelcache " MODELCACHE_VERSION "\"\n.SH NAME\n"
      << escaped(app.get_name() + " - " + app.get_description()) << "\n.SH SYNOPSIS\n.B "
      << escaped(app.get_name()) << "\n[\\fIOPTION\\fR]... \\fIROOT\\fR...\n.SH OPTIONS\n";
  for (const CLI::Option* const option : app.get_options([](const CLI::Option* each) {
         return !each->get_group().empty();  // Others are hidden.
       })) {
    out << ".TP\n\\fB" << escaped(option->get_name()) << "\\fR \\fI"
        << escaped(option->get_type_name()) << "\\fR\n"
        << escaped(option->get_description()) << '\n';
  }
  out << ".SH NOTES\n.nf\n" << escaped(app.get_footer()) << "\n.fi\n";
}

/// Completion for bash.
void writeCompletion(const CLI::App& app, std::ostream& out) {
  std::string names;
  std::string values;
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_lnames().empty() || option->get_group().empty()) {
      continue;
    }
    const std::string name = "--" + option->get_lnames().front();
    names += name + ' ';
    if (std::string words = option->get_type_name(); !words.empty()) {
      words = words.find('|') == std::string::npos ? "" : words;
      std::replace(words.begin(), words.end(), '|', ' ');
      values.append("    ").append(name).append(") COMPREPLY=($(compgen -W '").append(words);
      values.append("' -- \"$word\")); return ;;\n");
    }
  }
  out << R"(_modelcache_inspect() {
  local word=${COMP_WORDS[COMP_CWORD]}
  case ${COMP_WORDS[COMP_CWORD - 1]} in
)" << values
      << R"(  esac
  if [[ $word == -* ]]; then
    COMPREPLY=($(compgen -W ')"
      << names << R"(' -- "$word"))
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}
complete -o filenames -F _modelcache_inspect )"
      << app.get_name() << '\n';
}

void declare(CLI::App& app, Options& options) {
  constexpr std::int64_t maxBudget = std::int64_t{1} << 60;
  app.set_version_flag("--version", MODELCACHE_VERSION, "Print the version and exit");
  app.footer(kFooter);
  app.add_option("ROOT", options.roots,
                 "A cache's folder, the one with metadata.json, or a folder of such folders")
      ->required()
      ->type_name("");
  app.add_option("--budget", options.budget, "Show what exceeds a budget of BYTES (or 50MB, 64MiB)")
      ->transform(CLI::AsSizeValue(true).description(""))
      ->check(CLI::Range(std::int64_t{0}, maxBudget).description(""))
      ->type_name("BYTES");
  app.add_option("--sort", options.sort, "Order of entries: largest, oldest or first name first")
      ->check(CLI::IsMember({"size", "age", "name"}).description(""))
      ->type_name("size|age|name");
  app.add_flag("--verify", options.verify,
               "Read a store's files and compare them with their digests");
  app.add_flag("--json", options.json, "A line of JSON per root, for scripts");
  app.add_flag("--check", options.check, "Exit with status 1 if there are findings");
  app.add_flag("--force", options.force, "Show a folder that does not look like a cache");
  app.add_flag("--recover", options.recover,
               "Set a damaged metadata.json aside; the only option that changes anything")
      ->excludes("--json")
      ->excludes("--check")
      ->excludes("--verify");
  // For the build: what it installs is made of the above.
  for (const auto& [name, write] : {std::pair("--write-manual", &writeManual),
                                    std::pair("--write-completion", &writeCompletion)}) {
    const auto toFile = [&app, write = write](const std::string& path) {
      std::ofstream file(path);
      write(app, file);
      if (!file.flush()) {
        throw CLI::FileError::Missing(path);
      }
      throw CLI::Success();
    };
    app.add_option_function<std::string>(name, toFile)->trigger_on_parse()->group("");
  }
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

int recover(const std::string& root) {
  const bool isDone = recoverMetadata(root) == MetadataRecovery::SetAside;
  std::cout << printable(root) << ": metadata.json is "
            << (isDone ? std::string("now ") + kDamagedMetadataName : "not damaged: nothing done")
            << '\n';
  return EXIT_SUCCESS;
}

int show(const std::string& root, const Options& options) {
  const Report report = inspect(root, options);
  std::cout << (options.json ? toJson(report) : toText(report, terminalWidth()));
  return options.check && !report.findings.empty() ? kHasFindings : EXIT_SUCCESS;
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
  int status = EXIT_SUCCESS;
  const char* separator = "";
  for (const std::string& folder : options.roots) {
    std::vector<std::string> roots;
    status = std::max(status, guarded(options.json, folder, [&] {
                        roots = rootsIn(folder, options.force);
                        return EXIT_SUCCESS;
                      }));
    for (const std::string& root : roots) {
      std::cout << separator;
      separator = options.json || options.recover ? "" : "\n";
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
    CLI::App app("Shows what lies in model caches. Changes nothing without --recover.",
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
