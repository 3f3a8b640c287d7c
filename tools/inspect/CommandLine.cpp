#include <CLI/CLI.hpp>

#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {

const std::vector<std::pair<std::string, std::string>>& sections() {
  static const std::vector<std::pair<std::string, std::string>> all = {
      {"EXAMPLES", R"(  modelcache-inspect /tmp/facetracking
      what is in a cache that was pulled off a device
  modelcache-inspect --budget 50MB ROOT
      what the next commit would evict
  modelcache-inspect --verify --check ROOT >/dev/null && echo in order
  modelcache-inspect --json ROOT | jq -r '.entries[] | select(.state != "present").name'
      the entries that are not both recorded and on disk
  modelcache-inspect --recover ROOT
      when metadata.json is damaged; files stay, access times are lost)"},
      {"FINDINGS",
       R"(  One of the cache's own files is damaged, missing or no file; an entry is only recorded or
  only on disk, or has another size than recorded; a download is unfinished; extra bytes
  belong to no entry; a version is not complete, or is not in both of a store's records; a
  file differs from its digest; the total is over the budget.)"},
      {"EXIT STATUS",
       R"(  0; with --check 1 if there are findings; 2 if a ROOT cannot be inspected.)"},
  };
  return all;
}

void declare(CLI::App& app, Options& options) {
  constexpr std::int64_t maxBudget = std::int64_t{1} << 60;
  app.name(kProgram);
  app.description("Shows what lies in model caches. Changes nothing without --recover.");
  app.set_version_flag("--version", MODELCACHE_VERSION, "Print the version and exit");
  app.add_option("ROOT", options.roots,
                 "A cache's folder, the one with metadata.json, or a folder of such folders")
      ->required()
      ->type_name("")
      ->expected(-1);
  app.add_option("--budget", options.budget, "Show what exceeds a budget of BYTES (or 50MB, 64MiB)")
      ->transform(CLI::AsSizeValue(true).description(""))
      ->check(CLI::Range(std::int64_t{0}, maxBudget).description(""))
      ->type_name("BYTES");
  app.add_option("--sort", options.sort, "Order of entries: largest, oldest or first name first")
      ->check(CLI::IsMember({"size", "age", "name"}).description(""))
      ->type_name("size|age|name");
  auto* const verify = app.add_flag("--verify", options.verify,
                                    "Read a store's files and compare them with their digests");
  auto* const json = app.add_flag("--json", options.json, "A line of JSON per root, for scripts");
  auto* const check =
      app.add_flag("--check", options.check, "Exit with status 1 if there are findings");
  app.add_flag("--force", options.force, "Show a folder that does not look like a cache");
  app.add_flag("--recover", options.recover,
               "Set a damaged metadata.json aside; the only option that changes anything")
      ->excludes(json)
      ->excludes(check)
      ->excludes(verify);
  std::string footer;
  for (const auto& [heading, text] : sections()) {
    footer += (footer.empty() ? "" : "\n\n") + heading + "\n" + text;
  }
  app.footer(footer);
}

}  // namespace zentrel::vistabase::ardelivery::inspect
